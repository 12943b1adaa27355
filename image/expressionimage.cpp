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

QList<QBitArray> tableWords(QString const& expression, int base, Sites const& sites, int width)
{
    QList<QBitArray> words;
    QString const table = logicTruthTable(expression);
    QVector<int> const places = tablePlaces(siteMask(expression, sites), sites.count);
    TableWord const output0(base, width);
    TableWord const output1(base + 1, width);
    for (int k = 0; k < places.size(); ++k) {
        bool const fires =
            places.at(k) < table.size() && table.at(places.at(k)) == QLatin1Char('1');
        words.append((fires ? output1 : output0).forCombination(k));
    }
    return words;
}

} // namespace

void forEachExpressionTable(SxCore const* core,
                            std::function<void(QList<QBitArray> const&)> const& take)
{
    if (core->expressionType == ExpressionStatic)
        return;
    Sites const sites = usedSites(*core);
    int const width = core->dataOutShiftWidth();
    QStringList const expressions = chosenExpressions(*core);
    bool const flagsMatch = core->expressions.size() == core->expressionEnabled.size();
    if (expressions.isEmpty() && flagsMatch) {
        TableWord const always(Register::ExpressionTable + 1, width);
        QList<QBitArray> words;
        for (int k = 0; k < 1 << sites.count; ++k)
            words.append(always.forCombination(k));
        take(words);
        return;
    }
    for (int e = 0; e < expressions.size(); ++e)
        take(tableWords(expressions.at(e),
                        Register::ExpressionTable + e * Register::ExpressionTableStep, sites,
                        width));
}

QList<QBitArray> generateExpressionBit(SxCore const* core)
{
    QList<QBitArray> words;
    forEachExpressionTable(core, [&](QList<QBitArray> const& table) { words += table; });
    return words;
}

} // namespace VEK
