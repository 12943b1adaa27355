#pragma once

#include <QBitArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <exception>

/// What is configured on the chip: one object a capture core. Plain data with public fields, used
/// from one thread; nothing here notifies anyone of changes.
namespace VEK {

class SxCore;

/// Capabilities that a match unit was built with. The values are those of the file, which may
/// hold others; they are kept as they stand, hence the fixed underlying type.
enum MatchType : int {
    MatchBasic = 0,
    MatchBasicEdges = 1,
    MatchExtended = 2,
    MatchExtendedEdges = 3,
    MatchRange = 4,
    MatchRangeEdges = 5
};

/// What a match unit compares. The values are those of the file and of the control register.
enum MatchFunc : int {
    FuncEqual = 0,
    FuncNotEqual = 1,
    FuncGreater = 2,
    FuncLess = 3,
    FuncGreaterEqual = 4,
    FuncLessEqual = 5,
    FuncInRange = 6,
    FuncNotInRange = 7
};

/// The kind of a configuration file.
enum VekMode : int { VekModeUnknown = 10086, VekModeStandard = 10087, VekModeLite = 10088 };

/// `expressionType` of a core.
enum ExpressionType : int { ExpressionStatic = 0, ExpressionDynamic = 1 };

/// Number of trigger ports and of match units of a standard core, whatever a file says.
constexpr int CoreUnitCount = 16;

/// One probed signal or, with members, one bus. A value type.
struct SignalItem
{
    QString name;                 ///< Hierarchical net name; for a bus the name to restore.
    QString text;                 ///< Display text, the user's name for it; may be empty.
    QList<SignalItem> signalList; ///< Members of a bus, most significant first; empty for a signal.
    bool captureEnable = false;

    bool isBus() const { return !signalList.isEmpty(); }
};

/// The flat list of bits behind a list of signals and buses: a bus gives its members in order.
QList<SignalItem> flatSignals(QList<SignalItem> const& items);

/// One trigger input group of a core.
class TriggerPort
{
public:
    TriggerPort(SxCore* core, int index) : core(core), index(index) {}

    /// The flat list of `signalList`, one entry a bit.
    QList<SignalItem> singleSignals() const;

    SxCore* core; ///< Owner, not owned.
    int index;    ///< 0 to 15.
    QList<SignalItem> signalList;
};

/// One comparator of a core. A match value holds one character for each single signal of the bound
/// port, first signal leftmost, of 0, 1, X (don't care), R, F, B, N (rising, falling, either,
/// none).
class MatchUnit
{
public:
    MatchUnit(SxCore* core, int index) : core(core), index(index) {}

    SxCore* core; ///< Owner, not owned.
    int index;    ///< 0 to 15.
    bool enabled = false;
    MatchType matchType = MatchBasic;
    MatchFunc func = FuncEqual;
    bool counterEnable = false;
    int counterWidth = 2; ///< Bits.
    int counter = 2;      ///< Matches to count.
    bool continuous = false;
    QString value0;
    QString value1;                 ///< Upper bound of a range.
    TriggerPort* trigger = nullptr; ///< The port that it watches, not owned; null when unbound.
};

/// One standard capture core. Owns its 16 ports and 16 units.
class SxCore
{
public:
    explicit SxCore(int index);
    ~SxCore();

    /// The port whose `index` it is, or null.
    TriggerPort* getTrigger(int index) const;
    /// The unit whose `index` it is, or null.
    MatchUnit* matchUnit(int index) const;
    /// Ports that have signals, in list order.
    QList<TriggerPort*> availableTriggers() const;
    /// Units with `enabled` set, in list order.
    QList<MatchUnit*> enabledMatchUnits() const;
    /// Appends the text; an empty one is ignored.
    void addExpression(QString const& text);
    /// Replaces expression `i`; an index out of range is ignored.
    void setExpression(QString const& text, int i);
    /// The flat list of the captured signals: signal j of a sample row is entry j.
    QList<SignalItem> dataSignals() const;
    /// Entry `i` of the flat list, or an empty item.
    SignalItem signalItemAt(int i) const;
    /// Width in bits of every register field and of a record in sample memory; at least 16. What
    /// a file claims of a counter counts up to 4096 bits.
    int dataOutShiftWidth() const;

    int index;      ///< Core number on the chip.
    int status = 0; ///< 0 not part of a run, 1 armed, 2 finished or stopped.
    QString sampleClock;
    int trigType = 0;
    int expressionType = ExpressionStatic;
    int exImplementation = 0;
    int implementation = 0;
    int storageDepth = 1024;  ///< Records that fit the sample memory.
    int captureAmount = 1024; ///< Samples in a window.
    int triggerPos = 0;       ///< Sample index of the trigger within a window.
    int windowNum = 1;
    QList<TriggerPort*> triggers;
    QList<MatchUnit*> matchUnits;
    QStringList expressions;          ///< In upper case.
    QList<bool> expressionEnabled;    ///< A flag for each expression of a dynamic core.
    QList<SignalItem> dataSignalList; ///< What is captured, in file order.
    QList<SignalItem> allSignalList;  ///< The same with what is not captured. This is saved.
    QString moduleName = QStringLiteral("dut");
    bool captureInitDataEnabled = false;
    bool forced = false; ///< A forced trigger is under way.

private:
    Q_DISABLE_COPY(SxCore)
};

/// One lite capture core: started, captured and read, with neither triggers nor match units.
class SXCore_Lite
{
public:
    /// Names of the flat list of the captured signals.
    QStringList dataSignals() const;
    /// Display texts of the same list.
    QStringList dataSignalsText() const;

    int index = 0;
    int status = 0; ///< As for SxCore.
    QString sampleClock;
    int trigType = 0;
    int implemention = 0; ///< Sic, as in the file.
    int captureAmount = 1024;
    bool inputRegisterEnabled = false;
    bool captureInitDataEnabled = false;
    QList<SignalItem> dataSignalList;
    QList<SignalItem> allSignalList;
    QString moduleName = QStringLiteral("dut");
};

/// Thrown by `compareVersion` and caught by the file readers: no other exception crosses a module.
class CompareException : public std::exception
{
public:
    explicit CompareException(QString const& message);

    char const* what() const noexcept override { return m_text.constData(); }
    QString message;

private:
    QByteArray m_text;
};

/// Texts of the enumerations; null for any other value.
QString type2string(MatchType type);
QString func2string(MatchFunc func);

/// Number of parts that the sample memory is divided into for `n` windows: `n` rounded up to a
/// power of two, 0 for 0.
unsigned int fixedWindowNum(unsigned int n);

/// The functions that a match type allows, in menu order; empty for an unknown type.
QList<MatchFunc> optionalFunctions(MatchType type);

} // namespace VEK
