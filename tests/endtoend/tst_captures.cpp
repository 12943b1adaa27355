#include "desk.h"
#include "setup.h"

#include <QtTest>

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

    /// With a port of its own, numbered from the other end.
    void drawUnit()
    {
        int const index = draw(16);
        int const port = 15 - index;
        if (core.ports.contains(port))
            return;
        int const width = 1 + draw(7);
        for (int i = 0; i < width; ++i)
            core.ports[port] += Setup::entry(waves.keys()[draw(waves.size())]);
        int const type = draw(6); // with edges or without, for two, six or eight functions
        int const func = draw(QVector<int>{2, 6, 8}[type / 2]);
        // Mostly "don't care", or wide ports would never match.
        QString const alphabet = func > 1 ? "01" : type % 2 ? "01XXXXRFBN" : "01XXXX";
        QString const low = value(alphabet, width + pick({0, 0, 0, 0, -1, 1}));
        QString const more = QString::asprintf(
            "match_type='%d' func='%d' value1='%s' counter_enable='%d' counter_width='6' "
            "counter='%d' countinuous='%d'",
            type, func, qPrintable(value("01", width)), chance(35), 1 + draw(40), chance(30));
        core.units += Setup::unit(index, port, low, more);
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
            return QString("M%1").arg(15 - pick(core.ports.keys().toVector()));
        QString const inner = expression(depth - 1) + "&|^"[draw(3)] + expression(depth - 1);
        // Without parentheses the operators' own order decides.
        return chance(25) ? inner : (chance(30) ? "!(" : "(") + inner + ')';
    }

    std::mt19937 m_random;
};

/// A core that captures a count, and fires at a pattern of it.
Core counting(bool dynamic, int amount, int position, QString const& pattern, int windows = 1,
              bool initial = false, QStringList const& expressions = {"M0"})
{
    QString const count = Setup::entry("count", 12);
    QString const unit = Setup::unit(0, 0, pattern);
    return {amount, position, windows, dynamic, initial, count, {{0, count}}, unit, expressions};
}

/// The pattern of one count.
QString at(int count)
{
    return QString::number(count, 2).rightJustified(12, '0');
}

/// A core that goes by noisy nets in many short windows: each is some decisions. A unit is its
/// value and its attributes; M0 looks at n0 and on, M5 at n4 and on, M10 at n8 and on.
Core deciding(QString const& expression, QStringList const& units, bool dynamic = false)
{
    Core core{4, 0, 6, dynamic, false, Setup::entry("count", 12), {}, "", {expression}};
    for (int i = 0; i < units.size(); ++i) {
        QString const value = units[i].section(' ', 0, 0);
        for (int net = 0; net < value.size(); ++net)
            core.ports[15 - i] += Setup::entry(QString("n%1").arg(4 * i + net));
        core.units += Setup::unit(5 * i, 15 - i, value, units[i].section(' ', 1));
    }
    return core;
}

/// More than 64 signals and a wide port, names that need escapes.
Core wide()
{
    Core core = counting(true, 128, 30, at(1450));
    core.ports[15] = Setup::entry("wide", 60) + core.ports[0];
    core.entries += Setup::entry("wide", 60, "name='a&lt;b &amp; &quot;c&quot;'");
    core.units += Setup::unit(15, 15, QString(60, 'X') + "XXXXXXXXXX1X");
    core.expressions = QStringList{"M0&M15"};
    return core;
}

/// Four random cores whose windows all fire, the last one not at once.
Cores drawn(unsigned seed, Waves& waves)
{
    Cores cores;
    while (cores.size() < 4) {
        Dice const dice(seed++, QString("k%1n").arg(cores.size()));
        auto const captures = expectedCaptures(Setup::vek({dice.core}), {{"clk", dice.waves}});
        if (captures.size() < dice.core.windows ||
            captures.last().trigger < captures.last().start + 4)
            continue;
        cores += dice.core;
        for (QString const& net : dice.waves.keys())
            waves[net] = dice.waves[net];
    }
    return cores;
}

} // namespace

/// What cores capture, in the corners and at random. The cores of a row are captured in one run.
class TestCaptures : public QObject
{
    Q_OBJECT

private slots:
    void capture_data()
    {
        QTest::addColumn<Waves>("waves");
        QTest::addColumn<Cores>("cores");
        auto const row = [](char const* name, Waves const& waves, Cores const& cores) {
            QTest::newRow(name) << waves << cores;
        };

        Waves waves = Stimulus::counter("count", 12, 1500);
        std::mt19937 random(20240601);
        for (int bit = 0; bit < 60; ++bit)
            waves[QString("wide[%1]").arg(bit)] = noise(random, 3);
        for (int bit = 0; bit < 64; ++bit)
            waves[QString("quiet[%1]").arg(bit)] = QByteArray(1500, '0');
        for (int net = 0; net < 12; ++net) // every other one begins with a 1
            waves[QString("n%1").arg(net)] = ((net % 2 ? "1" : "") + noise(random, 3)).left(1500);

        row("positions", waves,
            {counting(false, 128, 0, at(300)), counting(false, 128, 124, at(300)),
             counting(true, 128, 0, at(300)), counting(true, 128, 124, at(300))});
        // Only whole sections of 128 are read of an amount above that. The mark's place in the ring
        // is the trigger's number (one more in a dynamic core) modulo the amount.
        row("sections", waves,
            {counting(false, 200, 60, at(440)), // mark at 40: among those read
             counting(false, 200, 60, at(350)), // at 150: not read
             counting(true, 200, 60, at(399)),  // at 0: one row back is the last one
             counting(true, 300, 20, at(860)),  // at 261: not read
             counting(true, 256, 200, at(700))});
        // Three windows take the room of four; with a late position the next one fires before it
        // has filled. Without an expression a core fires at once, one with initial data when it has
        // filled.
        row("windows", waves,
            {counting(false, 64, 20, "XXXXX0010000", 3),
             counting(true, 64, 60, "XXXXXXXX0000", 4, false, {"M0", "!M0"}),
             counting(false, 64, 31, at(0), 2, true, {}),
             counting(true, 64, 31, at(0), 1, true, {}),
             counting(true, 64, 31, at(0), 1, false, {})});
        Core compared = counting(false, 64, 0, "");
        compared.ports[0].prepend(Setup::entry("quiet", 64));
        compared.units = Setup::unit(0, 0, QString(64, '0') + at(700), "func='2'");
        row("wide", waves, {wide(), compared});
        Cores functions, expressions;
        QString const counter = "1X func='0' counter_enable='1' counter_width='4' counter='2'";
        QString const units = "01 func='0'|01 func='1'|01 func='2'|10 func='3'|10 func='4'|"
                              "01 func='5'|01 func='6' value1='10'|01 func='7' value1='10'|"
                              "XR func='0'|FX func='0'|XB func='0'|XN func='0'|1B func='1'|";
        for (QString const& unit :
             (units + counter + '|' + counter + " countinuous='1'").split('|'))
            functions += deciding("M0", {unit});
        functions += deciding("M0|M5", {counter, counter}); // one has begun to count
        row("functions", waves, functions);
        for (bool dynamic : {false, true})
            for (char const* text :
                 {"M0|M5&M10", "M0^M5&M10", "M0|M5^M10", "(M0|M5)&M10", "!M0&!(M5|M10)"})
                expressions += deciding(text, {"1", "1", "1"}, dynamic);
        expressions += deciding(" !(!!M0|!M5 )& M10 ", {"1", "1", "1"});
        row("expressions", waves, expressions);
        for (unsigned seed = 1; seed <= 6; ++seed) {
            Waves drawnWaves;
            Cores const cores = drawn(1000 * seed, drawnWaves);
            row(qPrintable(QString("seed %1").arg(seed)), drawnWaves, cores);
        }
    }

    void capture()
    {
        QFETCH(Waves, waves);
        QFETCH(Cores, cores);
        QByteArray const vek = Setup::vek(cores);
        Desk desk;
        desk.lay(vek, waves);
        auto const captures = expectedCaptures(vek, {{"clk", waves}});
        QCOMPARE(desk.problem({"-vek", "setup.vek"}, captured(captures, "setup")), QString());
        QCOMPARE(desk.problemOfVek(), QString());
    }
};

QTEST_GUILESS_MAIN(TestCaptures)
#include "tst_captures.moc"
