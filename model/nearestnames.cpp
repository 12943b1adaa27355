#include "model/nearestnames.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace VEK {
namespace {

/// As many as a large design declares, and the longest that anyone reads: the work stays within
/// seconds and the memory does not grow with the dump.
constexpr std::size_t MaxPaths = 1 << 17;
constexpr int MaxLength = 256;
constexpr std::size_t MaxAnswers = 3;

/// As many parts of the end of a path as `name` has.
QByteArray comparable(QByteArray const& path, QByteArray const& name)
{
    int start = path.size();
    for (int parts = name.count('.') + 1; parts > 0 && start >= 0; --parts)
        start = start == 0 ? -1 : path.lastIndexOf('.', start - 1);
    return path.mid(start + 1).toLower();
}

/// The changes of a letter from one text to the other; `limit` and more are given as `limit`.
int distance(QByteArray const& a, QByteArray const& b, int limit)
{
    if (std::abs(a.size() - b.size()) >= limit)
        return limit;
    std::vector<int> row(std::size_t(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 1; j < row.size(); ++j) {
            int const change = diagonal + (a.at(i) != b.at(int(j) - 1));
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
        }
        if (*std::min_element(row.begin(), row.end()) >= limit)
            return limit;
    }
    return std::min(row.back(), limit);
}

} // namespace

void NearestNames::add(QByteArray const& path)
{
    if (m_paths.size() < MaxPaths && path.size() <= MaxLength)
        m_paths.push_back(path);
}

std::vector<QByteArray> NearestNames::nearest(QByteArray const& name) const
{
    QByteArray const wanted = name.left(MaxLength).toLower();
    int best = 1; // changes, of so many letters: at first all may differ
    int bestOf = 1;
    std::vector<QByteArray> paths;
    for (QByteArray const& path : m_paths) {
        QByteArray const text = comparable(path, wanted);
        int const letters = std::max({text.size(), wanted.size(), 1});
        int const changes = distance(text, wanted, best * letters / bestOf + 1);
        if (changes * bestOf > best * letters)
            continue;
        if (changes * bestOf < best * letters) {
            paths.clear();
            best = changes;
            bestOf = letters;
        }
        paths.push_back(path);
    }
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    if (paths.size() > MaxAnswers)
        paths.resize(MaxAnswers);
    return paths;
}

} // namespace VEK
