#include "image/expressionimage.h"

#include "image/matchencoding.h"
#include "image/registermap.h"
#include "image/truthtable.h"
#include "model/bits.h"
#include "model/capturecore.h"

#include <QStringList>
#include <QVector>

namespace VEK {
namespace {

constexpr int SiteBits = 16;
constexpr int NoSite = -1;

/// The used match units of a core, each with its rank among them.
struct Sites
{
    QVector<int> ofUnit; ///< By unit index; NoSite for a unit that is not used.
    int count = 0;
};

Sites usedSites(SxCore const& core)
{
    Sites sites;
    sites.ofUnit.fill(NoSite, core.matchUnits.size());
    for (int i = 0; i < sites.ofUnit.size(); ++i) {
        MatchUnit const* unit = core.matchUnit(i);
        if (unit && unit->enabled && unit->trigger && !unit->trigger->signalList.isEmpty())
            sites.ofUnit[i] = sites.count++;
    }
    return sites;
}

/// All expressions when the flags do not match them, as for a core from a file, which has none.
QStringList chosenExpressions(SxCore const& core)
{
    if (core.expressions.size() != core.expressionEnabled.size())
        return core.expressions;
    QStringList chosen;
    for (int i = 0; i < core.expressions.size(); ++i) {
        if (core.expressionEnabled.at(i))
            chosen.append(core.expressions.at(i));
    }
    return chosen;
}

/// The sites that an expression looks at, position i for site i.
QBitArray siteMask(QString text, Sites const& sites)
{
    QBitArray mask(SiteBits);
    // from high to low: M10 must be gone before M1 can match its head
    for (int m = sites.ofUnit.size(); m >= 0; --m) {
        QString const unit = QStringLiteral("M%1").arg(m);
        if (!text.contains(unit))
            continue;
        int const site = sites.ofUnit.value(m, NoSite);
        if (site != NoSite)
            mask.setBit(site);
        text.remove(unit);
    }
    return mask;
}

/// Makes table words for one register. They differ only in their last bits, which hold the
/// combination, its lowest bit last.
class TableWord
{
public:
    TableWord(int address, int width)
        : m_blank(regWriteData(static_cast<unsigned short>(address), QBitArray(width))),
          m_tail(m_blank.size() - SiteBits)
    {}

    QBitArray forCombination(int k) const
    {
        QBitArray word = QBitArray::fromBits(m_blank.bits(), m_blank.size()); // no shared copy
        char* place = storageOf(word) + m_tail / 8;
        for (quint64 bits = mirrored(quint64(k)) >> (64 - SiteBits) << (m_tail % 8); bits;
             bits >>= 8)
            *place++ |= char(bits);
        return word;
    }

private:
    QBitArray m_blank;
    int m_tail; ///< Where the combination stands.
};

/// `bitFilter` of all combinations of `siteCount` sites: their places in an expression's table.
QVector<int> tablePlaces(QBitArray const& mask, int siteCount)
{
    QVector<int> places{0};
    places.reserve(1 << siteCount);
    int bit = 1;
    for (int site = 0; site < siteCount; ++site) {
        int const added = mask.testBit(site) ? bit : 0;
        for (int k = 0, count = places.size(); k < count; ++k)
            places.append(places.at(k) | added);
        bit <<= mask.testBit(site);
    }
    return places;
}

/// The trigger tables of one core.
class Tables
{
public:
    explicit Tables(SxCore const& core)
        : m_sites(usedSites(core)), m_width(core.dataOutShiftWidth()),
          m_expressions(chosenExpressions(core)),
          m_always(m_expressions.isEmpty() &&
                   core.expressions.size() == core.expressionEnabled.size())
    {
        if (core.expressionType == ExpressionStatic)
            m_count = 0;
        else
            m_count = m_always ? 1 : m_expressions.size();
    }

    int count() const { return m_count; }

    void appendTo(QList<QBitArray>& words, int index) const
    {
        int const base = Register::ExpressionTable + index * Register::ExpressionTableStep;
        TableWord const output0(base, m_width);
        TableWord const output1(base + 1, m_width);
        if (m_always) {
            for (int k = 0; k < 1 << m_sites.count; ++k)
                words.append(output1.forCombination(k));
            return;
        }
        QString const& expression = m_expressions.at(index);
        QString const table = logicTruthTable(expression);
        QVector<int> const places = tablePlaces(siteMask(expression, m_sites), m_sites.count);
        for (int k = 0; k < places.size(); ++k) {
            bool const fires =
                places.at(k) < table.size() && table.at(places.at(k)) == QLatin1Char('1');
            words.append((fires ? output1 : output0).forCombination(k));
        }
    }

private:
    Sites m_sites;
    int m_width;
    QStringList m_expressions;
    bool m_always; ///< None is chosen: one table that is true throughout.
    int m_count;
};

} // namespace

void forEachExpressionTable(SxCore const* core,
                            std::function<void(QList<QBitArray> const&)> const& take)
{
    Tables const tables(*core);
    for (int i = 0; i < tables.count(); ++i) {
        QList<QBitArray> words;
        tables.appendTo(words, i);
        take(words);
    }
}

QList<QBitArray> generateExpressionBit(SxCore const* core)
{
    Tables const tables(*core);
    QList<QBitArray> words;
    for (int i = 0; i < tables.count(); ++i)
        tables.appendTo(words, i);
    return words;
}

} // namespace VEK
