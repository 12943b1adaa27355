#include "image/expressionimage.h"
#include "image/matchencoding.h"
#include "image/registerimage.h"
#include "model/bits.h"
#include "tests/image/oracle.h"

#include <QtTest>

using namespace VEK;

namespace {

QStringList texts(QList<QBitArray> const& words)
{
    QStringList result;
    for (QBitArray const& word : words)
        result.append(bit2str(word));
    return result;
}

/// A dynamic core in which these units watch port 0, which has `width` signals.
std::unique_ptr<SxCore> coreWith(QList<int> const& units, int width)
{
    auto core = std::make_unique<SxCore>(0);
    core->expressionType = 1;
    while (core->getTrigger(0)->signalList.size() < width)
        core->getTrigger(0)->signalList.append(SignalItem());
    for (int unit : units) {
        core->matchUnit(unit)->enabled = true;
        core->matchUnit(unit)->trigger = core->getTrigger(0);
    }
    return core;
}

/// Address above the first table and data of each table word.
QString tableText(SxCore const& core)
{
    QStringList result;
    for (QString const& word : texts(generateExpressionBit(&core)))
        result.append(QStringLiteral("%1=%2")
                          .arg(word.mid(5, 16).toInt(nullptr, 2) - 43776)
                          .arg(word.mid(21).toInt(nullptr, 2)));
    return result.join(' ');
}

} // namespace

class tst_RegisterImage : public QObject
{
    Q_OBJECT

private slots:
    void smallEncoders()
    {
        QCOMPARE(bit2str(regWriteData(0x8001, str2bit("10"))), QString("01001100000000000000110"));
        QCOMPARE(bit2str(regSelectData(0x20)), QString("011010000000000100000"));
        QCOMPARE(bit2str(brustReadData(2, 3)), QString("0011100000000000000100000000000000011"));
        QCOMPARE(bit2str(bitarratReverse(str2bit("1101"))), QString("1011"));
        // position i of a mask is site i
        QCOMPARE(bitFilter(6, str2bit("0110000000000000")), 3);
        QCOMPARE(bitFilter(6, str2bit("1010000000000000")), 2);
        QCOMPARE(bitFilter(-1, QBitArray(100, true)), -1);
        QString const mask = "0010010000000000";
        QCOMPARE(bit2str(int16ShiftByUsedSite(3, str2bit(mask))), mask);
        QCOMPARE(bit2str(int16ShiftByUsedSite(2, str2bit(mask))), QString("0000010000000000"));
        auto const core = coreWith({5}, 4);
        core->matchUnit(5)->func = FuncGreater;
        core->matchUnit(5)->value0 = "N1R0";
        QBitArray a(3, true), b(99, true), c; // replaced, whatever they held
        bitForM(core->matchUnit(5), a, b, c);
        QCOMPARE(texts({a, b, c}), QStringList({"0100", "0000", "0000"}));
    }

    void devices()
    {
        SxCore core(0);
        auto const register34 = [&](QString const& device, int kind) {
            return bit2str(generateRegisterBit(&core, device, kind).at(3))
                .mid(21)
                .toInt(nullptr, 2);
        };
        QList<int> const shorter{101, 103, 104, 105, 106, 107, 111, 112, 113,
                                 114, 121, 122, 123, 124, 125, 201, 202, 203};
        for (int number = 0; number < 700; ++number) {
            QString const name = "TK-" + QString::number(number);
            core.expressionType = number % 2;
            QCOMPARE(register34(name, FileKindVek), 1021 - number % 2 - shorter.contains(number));
            QCOMPARE(register34(name, FileKindRsx), 1021 - number % 2);
        }
        for (char const* name : {"", "tk-107", "TK-107 "})
            QCOMPARE(register34(name, FileKindVek), 1020);
    }

    void tables()
    {
        auto const core = coreWith({3, 11}, 1);
        QString const always = "1=0 1=1 1=2 1=3";
        QCOMPARE(tableText(*core), always);
        core->expressions = QStringList({"M11", "M3&", "M3&M11"});
        // no flags, as from a file: all of them; a broken one never fires
        QCOMPARE(tableText(*core),
                 QString("0=0 0=1 1=2 1=3 16=0 16=1 16=2 16=3 32=0 32=1 32=2 33=3"));
        core->expressionEnabled = {false, false, true}; // counted among those that are chosen
        QCOMPARE(tableText(*core), QString("0=0 0=1 0=2 1=3"));
        core->expressionEnabled = {false, false, false};
        QCOMPARE(tableText(*core), always);
        core->expressions.clear(); // sizes that differ: all of none
        QCOMPARE(tableText(*core), QString());
        // units that are not in use, and nonsense
        core->expressions = QStringList({"M9", "M16", "ABCDEFGHIJKLMNOPQRSTUVWXYZ", ")))", ""});
        QCOMPARE(tableText(*core).count('='), 20);
        core->expressionType = 0;
        QCOMPARE(tableText(*core), QString());
    }

    /// A combination may lie across the bytes of a word in any way.
    void everyCombination()
    {
        for (int width : {16, 17, 23}) {
            auto const core =
                coreWith({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, width);
            core->expressions = QStringList{"M1&M10"};
            QStringList expected;
            for (unsigned k = 0; k < 65536; ++k)
                expected.append(
                    oracle::write(43776 + (k >> 1 & k >> 10 & 1), oracle::number(k, width)));
            QVERIFY(texts(generateExpressionBit(core.get())) == expected);
        }
    }

    void randomCores()
    {
        randomcore::Draw draw(1234);
        for (int round = 0; round < 300; ++round) {
            auto const core = randomcore::core(draw);
            for (int i = draw.below(4); i > 0; --i) {
                core->addExpression("M0");
                core->expressionEnabled.append(draw.chance(70));
            }
            int const kind = draw.below(2);
            QString const device = draw.chance(50) ? "TK-101" : "TK-102";
            QCOMPARE(texts(generateRegisterBit(core.get(), device, kind)),
                     oracle::registerWords(*core, device == "TK-101" && kind == 0));
        }
    }
};

QTEST_GUILESS_MAIN(tst_RegisterImage)
#include "tst_registerimage.moc"
