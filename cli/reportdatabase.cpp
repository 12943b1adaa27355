#include "cli/reportdatabase.h"

#include "cli/exitstatus.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSqlError>
#include <QVariant>

namespace VEK::Cli {
namespace {

QString const Connection = QStringLiteral("report");
QString const Driver = QStringLiteral("QSQLITE");
constexpr int ApplicationId = 0x56454B52; // "VEKR", in the file's head
constexpr int SchemaVersion = 1;
constexpr int CacheSize = 64 * 1024; // KiB: runs come in no order, and pages would go out and in

QString textIn(QJsonObject const& object, char const* key)
{
    return object.value(QLatin1String(key)).toString(QLatin1String("")); // never NULL
}

QVariant secondsBetween(QJsonObject const& object, char const* from, char const* to)
{
    QDateTime const begin = QDateTime::fromString(textIn(object, from), Qt::ISODateWithMs);
    QDateTime const end = QDateTime::fromString(textIn(object, to), Qt::ISODateWithMs);
    return begin.isValid() && end.isValid() ? QVariant(begin.msecsTo(end) / 1000.0) : QVariant();
}

int comparisonsIn(QJsonObject const& root)
{
    return root.value(QLatin1String("comparisons")).toArray().size();
}

} // namespace

ReportDatabase::ReportDatabase(QString const& path) : m_path(QFileInfo(path).absoluteFilePath())
{
    QFileInfo const info(path);
    if (info.exists() && !info.isFile())
        fail(QStringLiteral("it is no file"));
    if (!QSqlDatabase::isDriverAvailable(Driver))
        fail(QStringLiteral("Qt's driver for SQLite is not installed (libqt5sql5-sqlite)"));
    try {
        open();
    } catch (Failure const&) {
        close();
        throw;
    }
}

ReportDatabase::~ReportDatabase()
{
    close();
}

void ReportDatabase::open()
{
    m_database = QSqlDatabase::addDatabase(Driver, Connection);
    m_database.setDatabaseName(m_path);
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=30000"));
    if (!m_database.open())
        fail(m_database.lastError().databaseText());
    run(QStringLiteral("PRAGMA foreign_keys = ON"));
    run(QStringLiteral("PRAGMA cache_size = -%1").arg(CacheSize));
    run(QStringLiteral("BEGIN IMMEDIATE"));
    prepareTables();
}

/// What was begun is undone when the connection goes.
void ReportDatabase::close()
{
    m_queries.clear();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(Connection);
}

void ReportDatabase::fail(QString const& reason) const
{
    throw Failure{Status::Output, QStringLiteral("%1 can't be written: %2").arg(m_path, reason)};
}

int ReportDatabase::numberIn(char const* sql)
{
    QSqlQuery query(m_database);
    if (!query.exec(QLatin1String(sql)) || !query.next())
        fail(query.lastError().databaseText());
    return query.value(0).toInt();
}

void ReportDatabase::run(QString const& sql)
{
    QSqlQuery query(m_database);
    if (!query.exec(sql))
        fail(query.lastError().databaseText());
}

void ReportDatabase::prepareTables()
{
    int const application = numberIn("PRAGMA application_id");
    if (application == ApplicationId) {
        if (numberIn("PRAGMA user_version") != SchemaVersion)
            fail(QStringLiteral("it has tables that this program does not know"));
        return;
    }
    if (application != 0 || numberIn("SELECT count(*) FROM sqlite_master") > 0)
        fail(QStringLiteral("it is a database of something else"));
    QFile file(QStringLiteral(":/report.sql"));
    file.open(QIODevice::ReadOnly);
    for (QString const& sql : QString::fromUtf8(file.readAll()).split(QStringLiteral(";\n"))) {
        if (!sql.trimmed().isEmpty())
            run(sql);
    }
    run(QStringLiteral("PRAGMA application_id = %1").arg(ApplicationId));
    run(QStringLiteral("PRAGMA user_version = %1").arg(SchemaVersion));
}

QSqlQuery& ReportDatabase::query(char const* sql)
{
    std::shared_ptr<QSqlQuery>& query = m_queries[sql];
    if (!query) {
        query = std::make_shared<QSqlQuery>(m_database);
        query->setForwardOnly(true);
        if (!query->prepare(QLatin1String(sql)))
            fail(query->lastError().databaseText());
    }
    return *query;
}

void ReportDatabase::execute(QSqlQuery& query, QVariantList const& values)
{
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values.at(i));
    if (!query.exec())
        fail(query.lastError().databaseText());
}

/// Gives the new row's id.
QVariant ReportDatabase::insert(char const* sql, QVariantList const& values)
{
    QSqlQuery& statement = query(sql);
    execute(statement, values);
    return statement.lastInsertId();
}

/// The row of this report, which a report that adds nothing does not leave.
QVariant ReportDatabase::report()
{
    if (m_report.isNull())
        m_report = insert("INSERT INTO reports (made, program) VALUES (?, ?)",
                          {QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs),
                           QStringLiteral("vek " VEK_VERSION)});
    return m_report;
}

void ReportDatabase::add(ManifestRun const& facts)
{
    QSqlQuery& known =
        query("SELECT id, report, outcome, comparisons FROM runs WHERE label = ? AND "
              "started = ? AND host = ? AND board = ?");
    execute(known, {QString::fromUtf8(facts.run.label), textIn(facts.root, "started"),
                    textIn(facts.root, "host"), facts.board});
    if (!known.next()) {
        addRun(facts, QVariant(), report());
        ++m_added;
        return;
    }
    QVariant const id = known.value(0);
    QVariant const report = known.value(1);
    bool const hasEnded =
        known.value(2).toString() == QLatin1String(rowOf(Outcome::Unfinished).word) &&
        facts.run.outcome != Outcome::Unfinished;
    bool const isNewer = hasEnded || known.value(3).toInt() < comparisonsIn(facts.root);
    known.finish();
    if (!isNewer)
        return;
    execute(query("DELETE FROM runs WHERE id = ?"), {id});
    addRun(facts, id, report);
    ++m_updated;
}

void ReportDatabase::addRun(ManifestRun const& facts, QVariant const& id, QVariant const& report)
{
    QJsonObject const& root = facts.root;
    ReportRun const& run = facts.run;
    bool const hasEnded = run.outcome != Outcome::Unfinished;
    QJsonObject const outcome = root.value(QLatin1String("outcome")).toObject();
    QVariant const row = insert(
        "INSERT INTO runs VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {id,
         report,
         QString::fromUtf8(run.label),
         textIn(root, "started"),
         textIn(root, "host"),
         facts.board,
         run.attempt,
         QLatin1String(rowOf(run.outcome).word),
         hasEnded ? QVariant(run.status) : QVariant(),
         hasEnded ? QVariant(textIn(outcome, "cause")) : QVariant(),
         QString::fromUtf8(run.message.isNull() ? QByteArray("") : run.message),
         run.duration == ReportRun::Unknown ? QVariant() : QVariant(run.duration / 1000.0),
         facts.configuration,
         facts.sha256,
         textIn(root, "cable"),
         textIn(root, "location"),
         textIn(root, "server"),
         textIn(root, "device"),
         textIn(root, "program"),
         QString::fromUtf8(run.path),
         comparisonsIn(root)});
    addLabels(root, row);
    addCores(root, row);
    addDifferences(root, row);
}

void ReportDatabase::addLabels(QJsonObject const& root, QVariant const& run)
{
    QJsonObject const labels = root.value(QLatin1String("labels")).toObject();
    for (auto label = labels.begin(); label != labels.end(); ++label)
        insert("INSERT INTO labels VALUES (?, ?, ?)",
               {run, label.key(), label->toString(QLatin1String(""))});
}

void ReportDatabase::addCores(QJsonObject const& root, QVariant const& run)
{
    for (QJsonValue const& value : root.value(QLatin1String("cores")).toArray()) {
        QJsonObject const core = value.toObject();
        insert("INSERT OR IGNORE INTO cores VALUES (?, ?, ?, ?, ?, ?, ?)",
               {run, core.value(QLatin1String("index")).toInt(), textIn(core, "trigger"),
                textIn(core, "result"), int(core.value(QLatin1String("forced")).toBool()),
                core.value(QLatin1String("windows")).toArray().size(),
                secondsBetween(core, "armed", "triggered")});
    }
}

void ReportDatabase::addDifferences(QJsonObject const& root, QVariant const& run)
{
    for (QJsonObject const& comparison : lastComparisons(root)) {
        for (QJsonValue const& value : comparison.value(QLatin1String("windows")).toArray()) {
            QJsonObject const window = value.toObject();
            auto const add = [&](QString const& signal, QString const& result,
                                 QVariant const& differing, QVariant const& first) {
                insert("INSERT INTO differences VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
                       {run, textIn(comparison, "golden"), textIn(comparison, "new"),
                        textIn(window, "window"), signal, result, differing, first});
            };
            QString const lengths = textIn(window, "lengths");
            if (!lengths.isEmpty())
                add(QLatin1String(""), lengths, QVariant(), QVariant());
            for (QJsonValue const& each : window.value(QLatin1String("signals")).toArray()) {
                QJsonObject const signal = each.toObject();
                if (textIn(signal, "result") != QLatin1String("equal"))
                    add(textIn(signal, "name"), textIn(signal, "result"),
                        signal.value(QLatin1String("differing")).toVariant(),
                        signal.value(QLatin1String("first")).toVariant());
            }
        }
    }
}

void ReportDatabase::commit()
{
    for (std::shared_ptr<QSqlQuery> const& query : qAsConst(m_queries))
        query->finish();
    run(QStringLiteral("COMMIT"));
}

} // namespace VEK::Cli
