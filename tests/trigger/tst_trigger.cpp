#include "image/matchencoding.h"
#include "image/truthtable.h"
#include "tests/support/randomcore.h"
#include "trigger/trigger.h"

#include <QTest>

#include <memory>

using namespace VEK;

namespace {

SignalItem signal(QString const& name, QString const& text = QString())
{
    SignalItem item;
    item.name = name;
    item.text = text;
    return item;
}

SignalItem bus(QString const& name, int width, QString const& text = QString())
{
    SignalItem item = signal(name, text);
    for (int i = width; i-- > 0;)
        item.signalList.append(signal(QString("%1[%2]").arg(name).arg(i)));
    return item;
}

/// Ports: 0 valid, ready; 1 addr as "address"; 2 u_tx/state, top.write; 3 the bits of cnt one by
/// one; 4 wide, of 80 bits. Units are lines of "number port type [counter width]".
std::unique_ptr<SxCore> coreWith(QStringList const& units, QStringList const& expressions,
                                 ExpressionType type = ExpressionDynamic)
{
    auto core = std::make_unique<SxCore>(0);
    core->triggers[0]->signalList = {signal("valid"), signal("ready", "go ahead")};
    core->triggers[1]->signalList = {bus("addr", 8, "address")};
    core->triggers[2]->signalList = {bus("u_tx/state", 3), signal("top.write")};
    core->triggers[3]->signalList = bus("cnt", 4).signalList;
    core->triggers[4]->signalList = {bus("wide", 80)};
    core->dataSignalList = {signal("busy"), signal("u_rx/state"), bus("data", 4)};
    for (QString const& line : units) {
        QStringList const words = line.split(' ');
        MatchUnit* unit = core->matchUnit(words.at(0).toInt());
        unit->enabled = true;
        unit->trigger = core->getTrigger(words.at(1).toInt());
        unit->matchType = MatchType(words.at(2).toInt());
        unit->counterEnable = words.size() > 3;
        unit->counterWidth = words.value(3).toInt();
    }
    core->expressionType = type;
    core->expressions = expressions;
    return core;
}

QStringList const Usual{"0 0 1 4", "1 1 4", "2 2 1", "3 3 2", "4 0 0", "5 1 0 3", "6 4 2"};

/// "M1=in 01010000..01010111 M5===11110000*8" and the expressions behind a colon; errors as
/// "place: message".
QString outcome(QString const& text, SxCore& core)
{
    CompiledTrigger const trigger = compileTrigger(text, core);
    if (!trigger.isOk()) {
        TriggerError const error = trigger.errors.first();
        return text.mid(error.position, error.length) + ": " + error.message;
    }
    QStringList words;
    for (UnitSetting const& unit : trigger.units) {
        QString word = QString("M%1 %2 %3").arg(unit.unit).arg(func2string(unit.func), unit.value0);
        if (!unit.value1.isEmpty())
            word += ".." + unit.value1;
        if (unit.counter > 1)
            word += QString(" *%1%2").arg(unit.counter).arg(unit.continuous ? "+" : "");
        words.append(word);
    }
    applyTrigger(trigger, core);
    return words.join("; ") + ": " + trigger.expressions.join(" then ");
}

struct Case
{
    char const* text;
    char const* outcome;
};

} // namespace

class TriggerTextTest : public QObject
{
    Q_OBJECT

private slots:
    void compilesForDynamicCores();
    void fitsStaticCores();
    void findsUnitsIfThereAreAny();
    void choosesAFormThatTheCoreEvaluates();
    void pointsAtErrors_data();
    void pointsAtErrors();
    void textComesBack();
    void printsAnyCore();
    void setsFlagsAndNotes();
};

void TriggerTextTest::compilesForDynamicCores()
{
    Case const cases[] = {
        {"valid", "M4 == 1X: M4"},
        {"!valid & ready", "M4 == 01: M4"}, // one value
        {"!(valid | !\"go ahead\")", "M4 == 01: M4"},
        {"valid | ready", "M4 != 00: M4"},
        {"valid ^ ready", "M0 == 1X; M4 == X1: M0^M4"},
        {"valid rises & ready", "M0 == R1: M0"},
        {"valid rises & valid", "M0 == RX: M0"},
        {"!(valid changes)", "M0 == NX: M0"},
        {"!(valid rises)", "M0 != RX: M0"},
        {"valid & !valid", "M4 == 1X: M4&!M4"},
        {"address == 0x5A", "M5 == 01011010: M5"},
        {"addr != 0b1x0x", "M5 != 00001X0X: M5"},
        {"addr[3] & addr[7:6] == 2", "M5 == 10XX1XXX: M5"},
        {"addr[0:1] == 0b01", "M5 == XXXXXX10: M5"},
        {"addr == 'A'", "M5 == 01000001: M5"},
        {"addr in 0x50..0x57 & valid", "M1 in range 01010000..01010111; M4 == 1X: M1&M4"},
        {"addr not in 1..2", "M1 not in range 00000001..00000010: M1"},
        {"!(addr >= 3)", "M1 < 00000011: M1"},
        {"addr == 1 & valid | addr != 1 & ready", // the opposite of one unit is none of its own
         "M0 == 1X; M4 == X1; M5 == 00000001: M5&M0|!M5&M4"},
        {"{u_tx/state, write} == 0b1x11", "M2 == 1X11: M2"},
        {"u_tx.state[2] falls & write", "M2 == FXX1: M2"},
        {"{cnt[3], cnt[2], cnt[1], cnt[0]} > 9", "M3 > 1001: M3"},
        {"cnt <= 9", "M3 <= 1001: M3"}, // bits that stand alone
        {"cnt == 9", "M3 == 1001: M3"},
        {"wide == 1208925819614629174706175", nullptr},
        {"wide > 0x80000000000000000000", nullptr},
        {"(valid & ready) 8 times", "M0 == 11 *8: M0"},
        {"(valid | ready) 8 times in a row", "M0 != 00 *8+: M0"},
        {"!((addr == 3) 8 times)", "M5 == 00000011 *8: !M5"},
        {"(addr == 3) 1 times", "M5 == 00000011: M5"},
        {"(valid == 0bx) 3 times", "M0 == XX *3: M0"},
        {"addr == 0bxxxxxxxx & valid", "M4 == 1X: M4"},
        {"valid & never | cnt > 2", "M3 > 0010: M3"},
        {"always", ": M0|!M0"},
        {"never", ": M0&!M0"},
        {"addr>3|valid&cnt>2^ready", "M0 == 1X; M1 > 00000011; M3 > 0010; M4 == X1: M1|M0&M3^M4"},
        {"(addr > 3 | valid) & cnt > 2", "M1 > 00000011; M3 > 0010; M4 == 1X: (M1|M4)&M3"},
        {"addr > 3 then valid", "M1 > 00000011; M4 == 1X: M1 then M4"},
    };
    for (auto const& [text, expected] : cases) {
        auto const core = coreWith(Usual, {"M0", "M1"});
        QString const wide = QString("M6 ") + (QString(text).contains('>') ? ">" : "==") + " 1" +
                             QString(79, QString(text).contains('>') ? '0' : '1') + ": M6";
        QString wanted = expected ? QString(expected) : wide;
        if (!QString(text).contains("then"))
            wanted += " then M1"; // as in the file, and not flagged
        QCOMPARE(QString(text) + " -> " + outcome(text, *core), QString(text) + " -> " + wanted);
    }
}

void TriggerTextTest::fitsStaticCores()
{
    struct
    {
        char const* built;
        char const* text;
        char const* outcome; ///< Null: it can't be.
    } const cases[] = {
        {"M0&M1", "valid & addr in 1..2", "M0 == 1X; M1 in range 00000001..00000010"},
        {"M0&M1", "addr in 1..2", "M0 == XX; M1 in range 00000001..00000010"},
        {"M0|M1", "addr in 1..2", "M0 != XX; M1 in range 00000001..00000010"},
        {"M0&!M1", "addr in 1..2", "M0 == XX; M1 not in range 00000001..00000010"},
        {"!(M0|M1)", "valid & addr == 3", "M0 == 0X; M1 != 00000011"},
        {"M0^M1", "valid ^ !(addr < 3)", "M0 == 1X; M1 >= 00000011"},
        {"M0&M1", "always", "M0 == XX; M1 == XXXXXXXX"},
        {"M0&M4", "valid | ready", "M0 != 00; M4 == XX"},
        {"M0&!M0", "never", "M0 == XX"},
        {"M0", "(valid) 3 times in a row", "M0 == 1X *3+"},
        {"!M0", "!((valid) 3 times)", "M0 == 1X *3"},
        {"!M0", "(valid) 3 times", nullptr},
        {"M0&M1", "valid | addr in 1..2", nullptr},
        {"M0|M1", "valid then addr in 1..2", nullptr},
        {"M0 then M1", "valid then addr in 1..2", "M0 == 1X; M1 in range 00000001..00000010"},
        {"M0 then M0&M1", "valid then valid & addr == 4", "M0 == 1X; M1 == 00000100"},
        {"M0 then M0&M1", "valid then addr == 4", nullptr},
    };
    for (auto const& [built, text, expected] : cases) {
        auto const core = coreWith(Usual, QString(built).split(" then "), ExpressionStatic);
        QString const name = QString("%1 as %2: ").arg(built, text);
        QString const got = outcome(text, *core);
        if (expected)
            QCOMPARE(name + got, name + expected + ": " + built);
        else
            QVERIFY2(got.contains("the core is static: "), qPrintable(name + got));
        QVERIFY(core->expressionEnabled.isEmpty());
    }
}

/// Six pairs of four bits need six values when joined, and four when not; and the reverse.
void TriggerTextTest::findsUnitsIfThereAreAny()
{
    QString const pairs = "cnt[0]&cnt[1]&valid | cnt[0]&cnt[2]&ready | cnt[0]&cnt[3] | "
                          "cnt[1]&cnt[2] | cnt[1]&cnt[3] | cnt[2]&cnt[3]";
    QStringList four{"0 3 0", "1 3 0", "2 3 0", "3 3 0", "10 0 0", "11 0 0"};
    auto const few = coreWith(four, {"M0"});
    QVERIFY2(!outcome(pairs, *few).contains("units"), qPrintable(outcome(pairs, *few)));
    four.removeFirst();
    auto const fewer = coreWith(four, {"M0"});
    QVERIFY(outcome(pairs, *fewer).contains("every unit that could do it"));
    // the able unit is left to who needs it, whatever comes first
    auto const able = coreWith({"0 1 5 4", "1 1 4", "2 1 1", "3 1 0"}, {"M0"});
    QCOMPARE(outcome("addr==1 & (addr[0] changes ^ addr in 1..2) ^ (addr==3) 4 times", *able),
             QString("M0 == 00000011 *4; M1 in range 00000001..00000010; M2 == XXXXXXXB; "
                     "M3 == 00000001: M3&(M2^M1)^M0"));
}

/// The core stops at a ! from position 33 of its postfix form on.
void TriggerTextTest::choosesAFormThatTheCoreEvaluates()
{
    QStringList units;
    QStringList tests;
    for (int i = 0; i < 16; ++i) {
        units.append(QString("%1 0 0 8").arg(i));
        tests.append(QString("!((valid) %1 times)").arg(i + 2));
    }
    auto core = coreWith(units, {"M0"});
    QString const text = tests.join(" & ");
    CompiledTrigger const trigger = compileTrigger(text, *core);
    QVERIFY(trigger.isOk());
    QString const table = logicTruthTable(trigger.expressions.first());
    QCOMPARE(table.count('1'), 1);
    QCOMPARE(table.at(0), QChar('1'));
    applyTrigger(trigger, *core);
    QCOMPARE(triggerText(*core), text); // as it was meant
    // noise over 10 units has no short form at all
    QStringList products;
    for (unsigned i = 1; i < 25; ++i) {
        QStringList factors;
        for (int j = 0; j < 10; ++j)
            factors.append(QString((i * 2654435761u) >> (j + 9) & 1 ? "!" : "") +
                           QString("((valid) %1 times)").arg(j + 2));
        products.append(factors.join('&'));
    }
    QString const got = outcome(products.join('|'), *core);
    QVERIFY2(got.contains("the core stops short"), qPrintable(got));
}

void TriggerTextTest::pointsAtErrors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("message");
    struct
    {
        char const* text;
        char const* place;
        char const* message;
    } const cases[] = {
        // signs and words
        {"", "", "the trigger is empty"},
        {"valid = 1", "=", "\"=\" is written == here"},
        {"valid && ready", "&&", "\"&&\" is written & here"},
        {"valid || ready", "||", "\"||\" is written | here"},
        {"~valid", "~", "\"~\" is written ! here"},
        {"addr => 3", "=>", "\"=>\" is written >= here"},
        {"valid # ready", "#", "\"#\" means nothing here"},
        {"valid and ready", "and", "no word of the language; its operators are ! & ^ |"},
        {"valid ready", "ready", "an operator (& ^ |) or then is missing"},
        {"valid &", "", "the end of the text stands where a name should be"},
        {"& valid", "&", "an operator stands between two tests"},
        {"5 == addr", "5", "a test begins with its name"},
        {"then", "then", "a signal of that name stands in double quotes"},
        {"valid then", "", "the end of the text stands where a name should be"},
        {"(valid then ready)", "then", "then stands between whole steps"},
        {"(valid & ready", "(", "this bracket is not closed"},
        {"valid)", ")", "closes no bracket"},
        {"{valid, ready", "{", "names in {} end with }"},
        {"\"valid", "\"", "this quote is not closed"},
        // values and indexes
        {"addr == 0x5G", "0x5G", "is no number"},
        {"addr == ", "", "stands where a value should be"},
        {"addr == cnt", "cnt", "units compare with numbers only"},
        {"addr == 'AB'", "'", "a letter stands between two"},
        {"addr == 256", "256", "the value has 9 bits, and what it is compared with 8"},
        {"addr > 0b1x", "0b1x", "x stands for any bit behind == and != only"},
        {"addr in 5..3", "3", "the range is empty"},
        {"addr in 5", "", "a range has two bounds"},
        {"addr not 5", "5", "write not in 1..5"},
        {"addr[x]", "[x]", "picks no bits"},
        {"addr[3", "[", "has no \"]\""},
        {"addr[8]", "addr[8]", "\"addr\" has the bits [7:0]"},
        {"valid[0]", "valid[0]", "\"valid\" is one bit"},
        {"{valid, valid} == 1", "1", "stands there twice"},
        // counts
        {"valid 8 times", "8", "counts what stands in brackets: (valid) 8 times"},
        {"(valid) 0 times", "0", "is no count"},
        {"(valid) 8", "8", "write 8 times"},
        {"(valid) 8 times in row", "row", "write 8 times in a row"},
        {"(valid & addr > 3) 8 times", "(valid & addr > 3) 8 times", "one unit"},
        {"(valid & addr == 3) 8 times", "(valid & addr == 3) 8 times",
         "one unit watches one port, and these signals lie on the trigger ports 0 and 1"},
        {"(valid) 17 times", "(valid) 17 times",
         "a counter to 17 on trigger port 0; M0 there is "
         "Basic w/edges, which counts to 16"},
        // names
        {"adr == 5", "adr", "there is no signal \"adr\"; the nearest is addr"},
        {"valid & state == 1", "state", "the end of several names: u_tx/state, u_rx/state"},
        {"busy", "busy", "no trigger port watches busy"},
        {"addr", "addr", "this has 8 bits: compare it"},
        {"addr rises", "addr rises", "rises is for one bit, and this has 8"},
        // what the core has
        {"addr[0] rises", "addr[0] rises",
         "needs a unit with edges on trigger port 1; M1 there is "
         "Range and M5 there is Basic"},
        {"cnt in 1..2", "cnt in 1..2",
         "needs a range unit on trigger port 3; M3 there is Extended"},
        {"{valid, addr} == 3", "{valid, addr} == 3", "lie on the trigger ports 0 and 1"},
        {"addr[3:0] > 3", "addr[3:0] > 3", "exactly these signals in this order"},
        {"cnt > 3 & cnt < 9", "cnt < 9", "other tests of this text take every unit"},
        {"valid then ready then addr > 3", "addr > 3", "the core has room for 2 steps"},
    };
    for (auto const& [text, place, message] : cases)
        QTest::newRow(*text ? text : "(empty)") << text << place << message;
}

void TriggerTextTest::pointsAtErrors()
{
    QFETCH(QString, text);
    QFETCH(QString, place);
    QFETCH(QString, message);
    auto const core = coreWith(Usual, {"M0", "M1"});
    QString const got = outcome(text, *core);
    QVERIFY2(got.startsWith(place + ": ") && got.contains(message), qPrintable(got));
}

/// Random settings as a file may hold them: the text that they print compiles, and prints itself.
void TriggerTextTest::textComesBack()
{
    randomcore::Draw draw(17);
    int compiled = 0;
    int same = 0;
    for (int run = 0; run < 500; ++run) {
        QStringList units;
        QStringList names;
        for (int i = 0; i < 6; ++i) {
            int const number = 2 * i + draw.below(2);
            units.append(QString("%1 %2 %3").arg(number).arg(draw.below(4)).arg(5));
            if (draw.chance(30))
                units.last() += " 4";
            names.append((draw.chance(30) ? "!M" : "M") + QString::number(number));
        }
        QString const expression =
            QString("%1%7(%2%8%3)%7!(%4%9%5)%8%6")
                .arg(names[0], names[1], names[2], names[3], names[4], names[5], draw.oneOf("&|^"),
                     draw.oneOf("&|^"), draw.oneOf("&|^"));
        auto const type = draw.chance(50) ? ExpressionDynamic : ExpressionStatic;
        auto core = coreWith(units, {expression}, type);
        for (MatchUnit* unit : core->enabledMatchUnits()) {
            unit->func = MatchFunc(draw.below(8));
            unit->counter = 1 + draw.below(16);
            unit->continuous = draw.chance(50);
            for (int i = unit->trigger->singleSignals().size(); i > 0; --i) {
                unit->value0 += draw.oneOf("01XXRFBN01X");
                unit->value1 += draw.oneOf("01");
            }
        }
        QString const first = triggerText(*core);
        CompiledTrigger const trigger = compileTrigger(first, *core);
        QVERIFY2(trigger.isOk(), qPrintable(first + trigger.errors.value(0).message));
        applyTrigger(trigger, *core);
        QString const second = triggerText(*core);
        applyTrigger(compileTrigger(second, *core), *core);
        QCOMPARE(triggerText(*core), second);
        same += second == first; // not so where one value says what two units did
        ++compiled;
    }
    QVERIFY2(same > 0.9 * compiled, qPrintable(QString("%1 of %2").arg(same).arg(compiled)));
}

void TriggerTextTest::printsAnyCore()
{
    auto core = coreWith(Usual, {"M0&(M1^M2)|!M5"});
    auto const set = [&](int unit, MatchFunc func, QString const& value0, QString const& value1) {
        core->matchUnit(unit)->func = func;
        core->matchUnit(unit)->value0 = value0;
        core->matchUnit(unit)->value1 = value1;
        core->matchUnit(unit)->counter = 1;
    };
    set(0, FuncEqual, "1R", "");
    set(1, FuncInRange, "01010000", "01010111");
    set(2, FuncNotEqual, "1010", "");
    set(5, FuncEqual, "1x0", ""); // short, and in lower case: as the core gets it
    QCOMPARE(triggerText(*core),
             QString("valid & \"go ahead\" rises & (address in 0x50..0x57 ^ (u_tx/state != 5 | "
                     "top.write)) | address != 0b000001x0"));
    core->expressions = QStringList{"M0|!M0"};
    QCOMPARE(triggerText(*core), QString("always"));
    core->expressions.clear();
    QCOMPARE(triggerText(*core), QString("always"));
    core->expressions = QStringList{"M0&", "M9"};
    QCOMPARE(triggerText(*core), QString("never"));
    QCOMPARE(triggerNotes(*core).size(), 2); // not valid; the second one is not looked at
    core->expressionType = ExpressionStatic;
    QCOMPARE(triggerText(*core), QString("never then M9"));
}

void TriggerTextTest::setsFlagsAndNotes()
{
    auto core = coreWith(Usual, {"M0", "M1", "M2"});
    CompiledTrigger const trigger = compileTrigger("valid then addr > 3", *core);
    QCOMPARE(trigger.expressionEnabled, (QList<bool>{true, true, false}));
    QCOMPARE(trigger.expressions, (QStringList{"M4", "M1", "M2"}));
    QCOMPARE(trigger.notes.size(), 2);
    applyTrigger(trigger, *core);
    QCOMPARE(triggerText(*core), QString("valid then address > 0x03"));
    core->expressionEnabled.clear(); // as from a file
    QCOMPARE(triggerText(*core), QString("valid"));
    QVERIFY(triggerNotes(*core).first().contains("of 3 the first alone"));
    TriggerError const error{8, 4, QString()};
    QCOMPARE(triggerExcerpt("valid &\tadr > 3", error, "  "),
             QString("  valid & adr > 3\n          ^~~~"));
}

QTEST_GUILESS_MAIN(TriggerTextTest)
#include "tst_trigger.moc"
