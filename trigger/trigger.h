#pragma once

#include "trigger/syntax.h"

#include <QStringList>

/// Triggers as text: compiled to what a core has, and printed back. docs/trigger-text.md describes
/// the language.
namespace VEK {

/// What a unit is set to; port, type and counter of a unit are built and stay.
struct UnitSetting
{
    int unit = 0; ///< Its index.
    MatchFunc func = FuncEqual;
    QString value0; ///< One character a signal of its port.
    QString value1; ///< Empty but for ranges.
    int counter = 1;
    bool continuous = false;
};

/// A text for one core, or why that core can't do it.
struct CompiledTrigger
{
    QList<TriggerError> errors; ///< In the order of the text; the rest is empty then.
    QList<UnitSetting> units;
    /// The core's expressions from now on. A dynamic core's steps come first, what else the file
    /// has stays behind them; a static core keeps its own.
    QStringList expressions;
    /// Which of them a dynamic core is to load; empty for a static one. No file holds it.
    QList<bool> expressionEnabled;
    /// What the user should know although the text is right.
    QStringList notes;

    bool isOk() const { return errors.isEmpty(); }
};

/// Compiles a text for a core. Errors name the place in the text and what it would need.
CompiledTrigger compileTrigger(QString const& text, SxCore const& core);

/// Sets one unit. What counts only a unit with a counter takes.
void setUnit(UnitSetting const& setting, MatchUnit& unit);

/// Sets units and expressions. The trigger was compiled without an error, for this core.
void applyTrigger(CompiledTrigger const& trigger, SxCore& core);

/// What a core's units and expressions say, as a text that compiles to the same trigger. "always"
/// for a core without expressions. A unit that is not in use stands as M and its number, which
/// does not compile.
QString triggerText(SxCore const& core);

/// What the text of a core's trigger can't say: expressions that are not looked at, units that are
/// not in use, the order of several expressions.
QStringList triggerNotes(SxCore const& core);

/// An error under its text: the text in one line, and a second one that points at the place. Both
/// begin with `indent`.
QString triggerExcerpt(QString const& text, TriggerError const& error,
                       QString const& indent = QStringLiteral("    "));

} // namespace VEK
