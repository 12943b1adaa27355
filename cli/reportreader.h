#pragma once

#include "cli/report.h"
#include "cli/reportfacts.h"

#include <QStringList>

#include <functional>

namespace VEK::Cli {

/// Reads the manifests below folders a few at a time, and keeps a small record of each.
///
/// A manifest is a file that ends in ".json" and is one; other documents in JSON are counted, what
/// is no document is broken. Symbolic links are not followed.
class ReportReader
{
public:
    /// `each` is called with every run while it is read; may be empty.
    ReportReader(QString const& labelKey, std::function<void(ManifestRun const&)> each);

    /// Folders, or single manifests. What lies below another one is read once. Throws a Failure
    /// when one of them can't be opened.
    void read(QStringList const& paths);

    /// Reads the labels that are expected, one a line. Throws a Failure.
    void expect(QString const& path);

    /// What was read, with attempts and missing labels found out. The reader is empty after it.
    Report take();

private:
    void readFolder(QByteArray const& folder);
    void addFile(QByteArray const& path);
    void readBatch();
    void keep(ManifestRun& facts, QByteArray const& path);
    void putInOrder();
    void findMissing();

    QString m_labelKey;
    std::function<void(ManifestRun const&)> m_each;
    Report m_report;
    QVector<QByteArray> m_batch; ///< Paths of files that are to be read next.
    QVector<QByteArray> m_expected;
};

} // namespace VEK::Cli
