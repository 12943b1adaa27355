#pragma once

#include "image/matchvalue.h"
#include "model/capturecore.h"
#include "triggerui/treelineedit.h"

#include <QDialog>

#include <memory>

class QPoint;
class QTreeWidget;

namespace VEK {

class MatchValueEditor;
class Ui_MatchUnitDialog;

/// Edits one match unit: the trigger port it watches, type and function, one or two values by
/// signal or bus in a radix, and the counter. Nothing is written before the dialog is accepted.
class MatchUnitDialog : public QDialog
{
    Q_OBJECT

public:
    /// `unit` is not owned and must outlive the dialog, with its core. With `fixedStructure` only
    /// what can change without rebuilding the design is open to change.
    MatchUnitDialog(MatchUnit* unit, bool fixedStructure, QWidget* parent = nullptr);
    ~MatchUnitDialog() override;

public Q_SLOTS:
    /// Writes the unit and closes. Without a port nothing is written; with a range whose end lies
    /// below its beginning a message is shown and the dialog stays open.
    void accept() override;

    void onTriggerChanged();
    void onTypeChanged();
    void onFuncChanged();
    void onBaseChanged();
    void onCounterWidthChanged();
    /// The number of digits that a value of `width` bits has in the present radix.
    int calculatedBitwidth(int width);
    /// Gives each value row of a tree its whole range as its tool tip.
    void toolTipValueChanged(QTreeWidget* tree);
    /// For the value row that sends the signal, as are `onBusEditChange` and `onSubEditChange`: the
    /// dialog's own rows need none of the three. The `onChange` slots fill the row that the menu
    /// was opened on last.
    void onEditMenu(QPoint position);
    void onChangeX();
    void onChange0();
    void onChange1();
    void onChangeR();
    void onChangeF();
    void onChangeB();
    void onChangeN();
    void onBusEditChange();
    void onSubEditChange();

private:
    void initialize();
    void initializeCounter();
    void connectForm();
    void fillTrees();
    void writeUnit(QString const& value0, QString const& value1);
    bool isRange() const;
    void fillFunctions();
    void showRangeRows();
    void warn(QString const& text);

    std::unique_ptr<Ui_MatchUnitDialog> ui;
    std::unique_ptr<MatchValueEditor> values; ///< Must go before the trees do.
    bool fixedStructure;
    MatchUnit* unit;
    SxCore* core;
    TriggerPort* port = nullptr;
    int matchType;
    int func;
};

} // namespace VEK
