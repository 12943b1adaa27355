#include "workbench/sampletimes.h"
#include "workbench/wavesearch.h"

#include <QtTest>

#include <functional>
#include <random>

using namespace VEK;

namespace {

constexpr int Windows = 3;
constexpr int BusWidth = 5;

/// A bus and two signals with random samples, and what they are worth at each.
struct Capture
{
    explicit Capture(std::mt19937& random, int windowLength)
    {
        searched.windowLength = windowLength;
        searched.length = Windows * windowLength;
        SignalItem bus;
        bus.name = "bus";
        for (int i = 0; i < BusWidth; ++i) {
            bus.signalList << SignalItem();
            bus.signalList.last().name = QString("bus[%1]").arg(BusWidth - 1 - i);
        }
        searched.items << bus;
        for (char const* const name : {"a", "b"}) {
            searched.items << SignalItem();
            searched.items.last().name = name;
        }
        for (SignalItem const& item : flatSignals(searched.items)) {
            QBitArray bits(searched.length);
            for (int t = 0; t < bits.size(); ++t)
                bits.setBit(t, t > 0 && random() % 4 ? bits.at(t - 1) : random() % 2);
            searched.samples.insert(item.name, bits);
        }
    }

    bool bit(QString const& name, int t) const { return searched.samples.value(name).at(t); }
    int bus(int t) const
    {
        int value = 0;
        for (int i = 0; i < BusWidth; ++i)
            value |= bit(QString("bus[%1]").arg(i), t) << i;
        return value;
    }
    bool isFirst(int t) const { return t % searched.windowLength == 0; }

    SearchedSamples searched;
};

using Truth = std::function<bool(Capture const&, int)>;

struct Condition
{
    QString text;
    Truth holds;
};

Condition test(std::mt19937& random)
{
    int const low = random() % 32;
    int const high = low + random() % (32 - low);
    QString const name = random() % 2 ? "a" : "b";
    QString const number = QString::number(low);
    switch (random() % 9) {
    case 0:
        return {name, [=](Capture const& c, int t) { return c.bit(name, t); }};
    case 1:
        return {name + " rises", [=](Capture const& c, int t) {
                    return !c.isFirst(t) && c.bit(name, t) && !c.bit(name, t - 1);
                }};
    case 2:
        return {name + " falls", [=](Capture const& c, int t) {
                    return !c.isFirst(t) && !c.bit(name, t) && c.bit(name, t - 1);
                }};
    case 3:
        return {"bus[2] changes", [](Capture const& c, int t) {
                    return !c.isFirst(t) && ((c.bus(t) ^ c.bus(t - 1)) & 4);
                }};
    case 4:
        return {"bus == " + number, [=](Capture const& c, int t) { return c.bus(t) == low; }};
    case 5:
        return {"bus >= " + number, [=](Capture const& c, int t) { return c.bus(t) >= low; }};
    case 6:
        return {"bus < " + number, [=](Capture const& c, int t) { return c.bus(t) < low; }};
    case 7:
        return {QString("bus not in %1..%2").arg(low).arg(high),
                [=](Capture const& c, int t) { return c.bus(t) < low || c.bus(t) > high; }};
    default:
        return {"bus != 0b1x0x1", [](Capture const& c, int t) { return (c.bus(t) & 21) != 17; }};
    }
}

Condition condition(std::mt19937& random, int depth)
{
    if (depth == 0 || random() % 4 == 0)
        return test(random);
    Condition const left = condition(random, depth - 1);
    Condition const right = condition(random, depth - 1);
    switch (random() % 4) {
    case 0:
        return {"!(" + left.text + ")", [=](Capture const& c, int t) { return !left.holds(c, t); }};
    case 1:
        return {"(" + left.text + ") & (" + right.text + ")",
                [=](Capture const& c, int t) { return left.holds(c, t) && right.holds(c, t); }};
    case 2:
        return {"(" + left.text + ") ^ (" + right.text + ")",
                [=](Capture const& c, int t) { return left.holds(c, t) != right.holds(c, t); }};
    default:
        return {"(" + left.text + ") | (" + right.text + ")",
                [=](Capture const& c, int t) { return left.holds(c, t) || right.holds(c, t); }};
    }
}

QVector<int> expectedHits(Capture const& capture, Truth const& holds, int longerThan)
{
    QVector<int> hits;
    int start = 0;
    for (int t = 0; t < capture.searched.length; ++t) {
        if (capture.isFirst(t) || !holds(capture, t - 1))
            start = t;
        bool const isLast =
            t + 1 == capture.searched.length || capture.isFirst(t + 1) || !holds(capture, t + 1);
        if (holds(capture, t) && isLast && t + 1 - start > longerThan)
            hits << start;
    }
    return hits;
}

} // namespace

class TestWaveSearch : public QObject
{
    Q_OBJECT

private slots:
    void findsWhatASampleBySampleLookFinds()
    {
        std::mt19937 random(20);
        int found = 0;
        for (int run = 0; run < 400; ++run) {
            Capture const capture(random, 1 + random() % 150);
            Condition const wanted = condition(random, 3);
            int const longerThan = random() % 3 ? 0 : random() % 5;
            SearchResult const result = findSamples(wanted.text, longerThan, capture.searched);
            QVERIFY2(result.errors.isEmpty(), qPrintable(wanted.text));
            QVERIFY2(result.hits == expectedHits(capture, wanted.holds, longerThan),
                     qPrintable(wanted.text));
            found += result.hits.size();
        }
        QVERIFY(found > 1000);
    }

    void tellsWhatItCant()
    {
        std::mt19937 random(1);
        Capture const capture(random, 10);
        auto const error = [&](char const* text) {
            return findSamples(text, 0, capture.searched).errors.value(0).message;
        };
        QVERIFY(error("buss == 1").contains("the nearest is bus"));
        QVERIFY(error("a then b").contains("a sequence"));
        QVERIFY(error("(a) 3 times").contains("does not count"));
        QVERIFY(error("a &").size() > 0);
        QCOMPARE(textForRows("== 5", {"bus", "a b"}), QString("bus == 5 & \"a b\" == 5"));
        QCOMPARE(textForRows("not in 1..2", {"bus"}), QString("bus not in 1..2"));
        QCOMPARE(textForRows("inner", {"bus"}), QString("inner"));
    }

    void timesAndPlaces()
    {
        SampleClock clock;
        QVERIFY(clock.parse("33MHz"));
        SampleTimes const times(300, 3, 20, clock);
        QCOMPARE(times.place(120), QString("sample 120 in window 1, the trigger"));
        QCOMPARE(times.place(250),
                 QString("sample 250 in window 2, 30 behind the trigger (909.1 ns)"));
        QCOMPARE(times.distance(99, 100), QString("1 sample across windows"));
        QCOMPARE(times.nextTrigger(220), 20);
        QCOMPARE(times.parse(" -0.6us", 110), std::optional<int>(100)); // 19.8 samples
        QCOMPARE(times.parse("+80", 250), std::nullopt);
        QCOMPARE(times.parse("1.5", 0), std::nullopt);
        QCOMPARE(durationText(0.9999999), QString("1 s"));
    }
};

QTEST_GUILESS_MAIN(TestWaveSearch)
#include "tst_wavesearch.moc"
