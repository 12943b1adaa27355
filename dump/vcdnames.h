#pragma once

#include "dump/vcdreader.h"
#include "model/nearestnames.h"

#include <QByteArray>
#include <QMultiHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace VEK::Dump {

/// One bit of a variable of a dump.
struct VcdBit
{
    int code = -1; ///< -1: not found.
    int bit = 0;   ///< Counted from the lowest bit of a value.
};

/// Finds the variables of a dump behind the names of a design.
///
/// "." and "/" are equal, and so are an escaped name and the plain one. A name is first looked for
/// as a whole path; else it may be the end of exactly one path, cut at a separator. "name[3]" is
/// bit 3 of a vector as declared, the single bit that was declared so, or an array element of one
/// bit; a name without an index must have one bit.
class VcdNames
{
public:
    /// Asks for one more name; the answer is `bits()[i]` for the i-th name.
    void want(QString const& name);
    /// Looks at a declared variable.
    void visit(VcdVariable const& variable);

    /// One entry for each wanted name, in their order.
    std::vector<VcdBit> bits() const;
    /// What is wrong with the names that have no answer, each one named once, the first ones that
    /// are missing with the nearest that are there; empty when all have one.
    QString problems() const;

private:
    struct Match
    {
        VcdBit bit;
        QByteArray path;
        qint64 line = 0;
        bool isWhole = false;
        QByteArray rival; ///< Path of another variable that fits as well.
        qint64 rivalLine = 0;
    };
    struct Wanted
    {
        QByteArray full;
        QByteArray base; ///< Without its index; empty when there is none.
        int index = 0;
        bool unfit = false; ///< There is such a variable, but not one bit of it.
        Match match;
    };

    void offer(Wanted& wanted, VcdVariable const& variable, QByteArray const& name, bool hasIndex);
    QStringList hints() const;

    std::vector<Wanted> m_wanted;
    QMultiHash<QByteArray, int> m_byTail; ///< Places in `m_wanted` by last part of the path.
    NearestNames m_declared;
};

} // namespace VEK::Dump
