#include "desk.h"
#include "setup.h"

#include <QtTest>

#include <algorithm>
#include <random>

using Setup::Core;
using Cores = QVector<Core>;
Q_DECLARE_METATYPE(Core)

namespace {

/// A net that changes once in about `period` samples.
QByteArray noise(std::mt19937& random, int period)
{
    QByteArray wave("0");
    while (wave.size() < 1500)
        wave += random() % unsigned(period) ? wave.back() : char('0' + '1' - wave.back());
    return wave;
}

/// Draws a core, and the waves for it. The nets' names begin with the prefix, so that several cores
/// share one stimulus.
class Dice
{
public:
    Dice(unsigned seed, QString const& prefix) : m_random(seed)
    {
        core.dynamic = chance(50);
        core.amount = pick({4, 16, 64, 100, 128, 150, 200});
        core.position = pick({0, core.amount - 4, draw(core.amount - 3)});
        core.windows = pick({1, 1, 2, 3, 4});
        core.initial = chance(20);
        for (int nets = chance(20) ? 45 : 3 + draw(14); waves.size() < nets;)
            drawEntry(prefix + QString::number(waves.size()));
        for (int count = 1 + draw(5); count > 0; --count)
            drawUnit();
        core.expressions = QStringList{expression(2)};
        if (chance(30))
            core.expressions += expression(2);
    }

    Core core;
    Waves waves;

private:
    int draw(int below) { return int(m_random() % unsigned(below)); }
    bool chance(int percent) { return draw(100) < percent; }
    int pick(QVector<int> const& from) { return from[draw(from.size())]; }

    void drawEntry(QString const& name)
    {
        int const width = pick({0, 0, 1 + draw(9)});
        QString attributes = waves.isEmpty() || chance(80) ? "" : "capture_enable='false' ";
        if (chance(30))
            attributes += (width > 0 ? "name='shown " : "text='shown ") + name + "'";
        core.entries += Setup::entry(name, width, attributes);
        for (int bit = 0; bit < qMax(1, width); ++bit)
            waves[width > 0 ? QString("%1[%2]").arg(name).arg(bit) : name] =
                noise(m_random, 2 + draw(12));
    }

    /// With a port of the same number.
    void drawUnit()
    {
        int const index = draw(16);
        if (core.ports.contains(index))
            return;
        int const width = 1 + draw(7);
        for (int i = 0; i < width; ++i)
            core.ports[index] += Setup::entry(waves.keys()[draw(waves.size())]);
        int const type = draw(6); // with edges or without, for two, six or eight functions
        int const func = draw(QVector<int>{2, 6, 8}[type / 2]);
        // Mostly "don't care", or wide ports would never match.
        QString const alphabet = func > 1 ? "01" : type % 2 ? "01XXXXRFBN" : "01XXXX";
        auto const more = "match_type='%1' func='%2' value1='%3' counter_enable='%4' "
                          "counter_width='6' counter='%5' countinuous='%6'";
        core.units += Setup::unit(index, index, value(alphabet, width + pick({0, 0, 0, 0, -1, 1})),
                                  QString(more)
                                      .arg(type)
                                      .arg(func)
                                      .arg(value("01", width))
                                      .arg(chance(35))
                                      .arg(1 + draw(40))
                                      .arg(chance(30)));
    }

    QString value(QString const& alphabet, int width)
    {
        QString text;
        while (text.size() < width)
            text += alphabet[draw(alphabet.size())];
        return text;
    }

    QString expression(int depth)
    {
        if (depth == 0 || chance(20))
            return QString("M%1").arg(pick(core.ports.keys().toVector()));
        QString const inner = expression(depth - 1) + "&|^"[draw(3)] + expression(depth - 1);
        // Without parentheses the operators' own order decides.
        return chance(25) ? inner : (chance(30) ? "!(" : "(") + inner + ')';
    }

    std::mt19937 m_random;
};

/// A core that captures a count, and fires at a pattern of it.
Core counting(bool dynamic, int amount, int position, QString const& pattern)
{
    Core core;
    core.amount = amount;
    core.position = position;
    core.dynamic = dynamic;
    core.entries = core.ports[0] = Setup::entry("count", 12);
    core.units = Setup::unit(0, 0, pattern);
    return core;
}

Core reaching(bool dynamic, int amount, int position, int count)
{
    return counting(dynamic, amount, position, QString::number(count, 2).rightJustified(12, '0'));
}

Core with(Core core, int windows, bool initial, QStringList const& expressions)
{
    core.windows = windows;
    core.initial = initial;
    core.expressions = expressions;
    return core;
}

/// More than 64 signals and a wide port, names that need escapes.
Core wide()
{
    Core core = reaching(true, 128, 30, 1450);
    core.ports[15] = Setup::entry("wide", 60) + core.ports[0];
    core.entries += Setup::entry("wide", 60, "name='a&lt;b &amp; &quot;c&quot;'");
    core.units += Setup::unit(15, 15, QString(60, 'X') + "XXXXXXXXXX1X");
    core.expressions = QStringList{"M0&M15"};
    return core;
}

} // namespace

/// What cores capture, the corners and at random. The cores of a row are captured in one run.
class TestCaptures : public QObject
{
    Q_OBJECT

private slots:
    void corners_data();
    void corners();
    void random_data();
    void random();

private:
    static void capture(Cores const& cores, Waves const& waves);
};

void TestCaptures::corners_data()
{
    QTest::addColumn<Cores>("cores");

    QTest::newRow("positions") << Cores{reaching(false, 128, 0, 300),
                                        reaching(false, 128, 124, 300), reaching(true, 128, 0, 300),
                                        reaching(true, 128, 124, 300)};
    // Only whole sections of 128 are read of an amount above that. The mark's place in the ring is
    // the trigger's number (one more in a dynamic core) modulo the amount.
    QTest::newRow("sections") << Cores{
        reaching(false, 200, 60, 440), // mark at 40: among those read
        reaching(false, 200, 60, 350), // at 150: not read
        reaching(true, 200, 60, 399),  // at 0: one row back is the last one
        reaching(true, 300, 20, 860),  // at 261: not read
        reaching(true, 256, 200, 700)};
    // Three windows take the room of four; with a late position the next one fires before it has
    // filled. Without an expression a core fires at once, one with initial data when it has filled.
    QTest::newRow("windows") << Cores{
        with(counting(false, 64, 20, "XXXXX0010000"), 3, false, {"M0"}),
        with(counting(true, 64, 60, "XXXXXXXX0000"), 4, false, {"M0", "!M0"}),
        with(reaching(false, 64, 31, 0), 2, true, {}), with(reaching(true, 64, 31, 0), 1, true, {}),
        with(reaching(true, 64, 31, 0), 1, false, {})};
    QTest::newRow("wide") << Cores{wide()};
}

void TestCaptures::corners()
{
    QFETCH(Cores, cores);
    Waves waves = Stimulus::counter("count", 12, 1500);
    std::mt19937 random(20240601);
    for (int bit = 0; bit < 60; ++bit)
        waves[QString("wide[%1]").arg(bit)] = noise(random, 3);
    capture(cores, waves);
}

void TestCaptures::random_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 6; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestCaptures::random()
{
    QFETCH(unsigned, seed);
    Waves waves;
    Cores cores;
    for (unsigned attempt = 0; cores.size() < 4; ++attempt) {
        QVERIFY(attempt < 200);
        Dice const dice(1000 * seed + attempt, QString("k%1n").arg(cores.size()));
        auto const captures = expectedCaptures(Setup::vek({dice.core}), {{"clk", dice.waves}});
        auto const waited = [](Capture const& capture) {
            return capture.trigger > capture.start + 3;
        };
        // Worthwhile when every window fires, and not all of them at once.
        if (captures.size() < dice.core.windows ||
            std::none_of(captures.begin(), captures.end(), waited))
            continue;
        cores += dice.core;
        for (QString const& net : dice.waves.keys())
            waves[net] = dice.waves[net];
    }
    capture(cores, waves);
}

void TestCaptures::capture(Cores const& cores, Waves const& waves)
{
    QByteArray const vek = Setup::vek(cores);
    auto const captures = expectedCaptures(vek, {{"clk", waves}});
    Desk desk;
    QVERIFY(desk.lay(vek, waves));
    QCOMPARE(desk.problem({"-vek", "setup.vek"}, captured(captures, "setup")), QString());
}

QTEST_GUILESS_MAIN(TestCaptures)
#include "tst_captures.moc"
