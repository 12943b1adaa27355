#pragma once

#include <QByteArray>

#include <vector>

namespace VEK {

/// Finds what a misspelt name may have meant among paths.
class NearestNames
{
public:
    /// Offers a path. Beyond a bound, which ordinary dumps stay below, paths are left out.
    void add(QByteArray const& path);

    /// The paths with the smallest share of letters to change, three at most, in alphabetical
    /// order; none when there are no paths. Case does not count, and a name with fewer scopes than
    /// a path is compared with as much of its end.
    std::vector<QByteArray> nearest(QByteArray const& name) const;

private:
    std::vector<QByteArray> m_paths;
};

} // namespace VEK
