#pragma once

#include "dump/vcdreader.h"

#include <QRegularExpression>

#include <vector>

namespace VEK::Dump {

/// A variable of a dump, and what it does.
struct Net
{
    VcdVariable variable;
    qint64 changes = 0;          ///< Of its bits, the first value not counted; 0 of a real.
    bool looksLikeClock = false; ///< One bit that rises again and again after the same time.
};

/// The nets of a dump in the order of their declarations, in one pass; memory depends on the
/// declarations only. A dump that was cut gives what is in it, with a `warning`. False with an
/// `error` that names the line.
bool listNets(QIODevice& device, std::vector<Net>& nets, QString& warning, QString& error);

/// A pattern of net names: "*" stands for any letters, "?" for one, all else for itself. It fits
/// a path that it describes as a whole, or the end of one from a scope on.
class NetPattern
{
public:
    explicit NetPattern(QString const& pattern);

    /// `path` as in `VcdVariable::path`.
    bool fits(QByteArray const& path) const;

private:
    QRegularExpression m_form;
};

} // namespace VEK::Dump
