#pragma once

#include "cli/reportfacts.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <memory>

namespace VEK::Cli {

/// A database in SQLite that keeps runs, with the tables of report.sql. What is added becomes
/// visible with `commit`, all at once; without it the database stays as it was, also when the
/// program is killed.
class ReportDatabase
{
public:
    /// Opens the file, or makes it; nobody else can write to it from now on. Throws a Failure, also
    /// for a file that is something else.
    explicit ReportDatabase(QString const& path);
    ~ReportDatabase();
    ReportDatabase(ReportDatabase const&) = delete;
    ReportDatabase& operator=(ReportDatabase const&) = delete;

    /// Adds a run that is not there yet. One that is there is replaced when it has ended or was
    /// compared since. Throws a Failure.
    void add(ManifestRun const& facts);
    /// Throws a Failure.
    void commit();

    int added() const { return m_added; }
    int updated() const { return m_updated; }

private:
    void open();
    void prepareTables();
    int numberIn(char const* pragma);
    QSqlQuery& query(char const* sql);
    QVariant insert(char const* sql, QVariantList const& values);
    void execute(QSqlQuery& query, QVariantList const& values);
    void run(QString const& sql);
    QVariant report();
    void addRun(ManifestRun const& facts, QVariant const& id, QVariant const& report);
    void addLabels(QJsonObject const& root, QVariant const& run);
    void addCores(QJsonObject const& root, QVariant const& run);
    void addDifferences(QJsonObject const& root, QVariant const& run);
    void close();
    [[noreturn]] void fail(QString const& reason) const;

    QString m_path;
    QSqlDatabase m_database;
    QHash<char const*, std::shared_ptr<QSqlQuery>> m_queries; ///< Prepared.
    QVariant m_report;                                        ///< Its id, once a run was added.
    int m_added = 0;
    int m_updated = 0;
};

} // namespace VEK::Cli
