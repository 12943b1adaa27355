#include "cli/knowncores.h"

#include "cli/exitstatus.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "model/vekfile.h"

#include <QFile>
#include <QHash>

#include <algorithm>

namespace VEK::Cli {
namespace {

Failure unfit(QString const& path, QString const& what)
{
    return {Status::Configuration, path + QStringLiteral(": ") + what};
}

/// A name as far as dumps and channels keep it.
QString keyOf(QString name)
{
    for (QChar& c : name) {
        if (c == QLatin1Char('/'))
            c = QLatin1Char('.');
        else if (c.isSpace() || c == QLatin1Char(',') || c == QLatin1Char('='))
            c = QLatin1Char('_');
    }
    return name;
}

/// The name of a vector in a dump, which tells its range apart.
QString withoutRange(QString const& name)
{
    int const open = name.lastIndexOf(QLatin1Char('['));
    return open > 0 && name.endsWith(QLatin1Char(']')) ? name.left(open) : name;
}

/// The bits of a window by the names of signals and buses.
class Named
{
public:
    explicit Named(CapturedWindow const& window)
    {
        int place = 0;
        for (SignalItem const& item : window.layout) {
            int const width = std::max(1, item.signalList.size());
            add(item, window.samples.mid(place, width));
            for (int i = 0; i < item.signalList.size(); ++i)
                add(item.signalList.at(i), window.samples.mid(place + i, 1));
            place += width;
        }
    }

    /// Empty for a name that is not there.
    QList<QBitArray> bits(SignalItem const& item) const
    {
        QStringList names{labelOf(item), item.name};
        if (item.isBus())
            names << withoutRange(names.first()) << withoutRange(item.name);
        for (QString const& name : qAsConst(names)) {
            auto const found = m_bits.constFind(keyOf(name));
            if (found != m_bits.constEnd())
                return *found;
        }
        return {};
    }

private:
    void add(SignalItem const& item, QList<QBitArray> const& bits)
    {
        QString const key = keyOf(labelOf(item));
        if (!m_bits.contains(key))
            m_bits.insert(key, bits);
    }

    QHash<QString, QList<QBitArray>> m_bits;
};

bool isEmptyHead(QList<QBitArray> const& bits, int width)
{
    return std::all_of(bits.begin(), bits.begin() + std::max(0, bits.size() - width),
                       [](QBitArray const& column) { return column.count(true) == 0; });
}

/// Whether the window's nets are those of the core, one by one.
bool areSameNets(QList<SignalItem> const& nets, QList<SignalItem> const& known)
{
    return std::equal(nets.begin(), nets.end(), known.begin(), known.end(),
                      [](SignalItem const& net, SignalItem const& signal) {
                          return net.name == labelOf(signal) || labelOf(net) == labelOf(signal) ||
                                 keyOf(net.name) == keyOf(signal.name);
                      });
}

} // namespace

KnownCores KnownCores::take(QList<SxCore*> const& standard, QList<SXCore_Lite*> const& lite)
{
    KnownCores known;
    for (SxCore const* core : standard)
        known.m_cores << Core{core->index, core->moduleName, core->sampleClock,
                              core->dataSignalList};
    for (SXCore_Lite const* core : lite) // a run knows the first one, as core 0
        if (known.m_cores.isEmpty())
            known.m_cores << Core{0, core->moduleName, core->sampleClock, core->dataSignalList};
    if (!lite.isEmpty())
        known.m_text = writeVekConfigToString_Lite({lite.first()}).toUtf8();
    else if (!standard.isEmpty())
        known.m_text = writeVekConfigToString(standard).toLatin1();
    qDeleteAll(standard);
    qDeleteAll(lite);
    return known;
}

KnownCores KnownCores::fromFile(QString const& path)
{
    QString id;
    QString error;
    bool ok = true;
    KnownCores known;
    VekMode const mode = vekModeFromVekConfigFile(path);
    if (mode == VekModeUnknown)
        throw unfit(path, QStringLiteral("this is no configuration"));
    if (mode == VekModeLite)
        known = take({}, readVEKConfigFromXml_Lite(path, id, &ok, &error));
    else
        known = take(readVEKConfigFromXml(path, id, &ok, &error), {});
    if (!ok || known.m_cores.isEmpty())
        throw unfit(path, ok ? QStringLiteral("the configuration has no cores") : error);
    return known;
}

KnownCores KnownCores::fromDocument(QDomDocument const& document)
{
    QString id;
    QList<SxCore*> const standard = read_VER_2000(document, id);
    return take(standard, standard.isEmpty() ? readLiteCores(document, id) : QList<SXCore_Lite*>());
}

KnownCores KnownCores::made(QString const& module, QString const& clock,
                            QList<CapturedWindow> const& windows)
{
    CapturedWindow const& window = windows.first();
    auto* const core = new SxCore(0);
    core->moduleName = module;
    core->sampleClock = clock;
    core->captureAmount = window.length();
    core->windowNum = windows.size();
    core->triggerPos = window.trigger.value_or(0);
    while (core->storageDepth / int(fixedWindowNum(unsigned(windows.size()))) < window.length() &&
           core->storageDepth < (1 << 30))
        core->storageDepth *= 2;
    core->allSignalList = window.layout;
    core->dataSignalList = window.layout;
    return take({core}, {});
}

int KnownCores::placeOf(std::optional<int> const& index) const
{
    for (int place = 0; place < m_cores.size(); ++place) {
        if (index ? m_cores.at(place).index == *index : m_cores.size() == 1)
            return place;
    }
    throw Failure{Status::Usage,
                  index ? QStringLiteral("the configuration has no core %1").arg(*index)
                        : QStringLiteral("the configuration has %1 cores: --core says which one "
                                         "it is")
                              .arg(m_cores.size())};
}

CapturedWindow withLayout(CapturedWindow const& window, QList<SignalItem> const& layout,
                          QString const& path)
{
    CapturedWindow arranged = window;
    arranged.layout = layout;
    if (areSameNets(flatSignals(window.layout), flatSignals(layout)))
        return arranged;
    arranged.samples.clear();
    Named const named(window);
    for (SignalItem const& item : layout) {
        int const width = std::max(1, item.signalList.size());
        QList<QBitArray> bits = named.bits(item);
        if (bits.isEmpty()) {
            for (SignalItem const& member : item.signalList)
                bits << named.bits(member);
        }
        if (bits.isEmpty())
            throw unfit(path,
                        QStringLiteral("it has no \"%1\" of the configuration").arg(labelOf(item)));
        if (!isEmptyHead(bits, width))
            throw unfit(path, QStringLiteral("the values of \"%1\" are wider than in the "
                                             "configuration")
                                  .arg(labelOf(item)));
        while (bits.size() < width)
            bits.prepend(QBitArray(window.length()));
        arranged.samples << bits.mid(bits.size() - width);
    }
    return arranged;
}

} // namespace VEK::Cli
