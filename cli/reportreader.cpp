#include "cli/reportreader.h"

#include "cli/exitstatus.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <future>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

namespace VEK::Cli {
namespace {

constexpr int BatchSize = 512;
constexpr std::size_t Workers = 4;
constexpr qint64 LargestManifest = 16 * 1024 * 1024;
char const* const Ending = ".json";

/// By label, and the attempts of one by their start.
bool isBefore(ReportRun const& one, ReportRun const& other)
{
    return std::tie(one.label, one.started, one.attempt, one.path) <
           std::tie(other.label, other.started, other.attempt, other.path);
}

bool isCopy(ReportRun const& one, ReportRun const& other)
{
    return std::tie(one.label, one.started, one.attempt, one.configuration, one.board) ==
           std::tie(other.label, other.started, other.attempt, other.configuration, other.board);
}

struct FileFacts
{
    enum Kind { Run, Broken, Other };

    Kind kind = Other;
    ManifestRun run;
    QString reason; ///< Why it is broken.
};

/// A shell makes the file of `vek report night --json > night/report.json` before we read it.
bool isOwnOutput(QFile const& file)
{
    struct stat output = {};
    struct stat other = {};
    return ::fstat(STDOUT_FILENO, &output) == 0 && ::fstat(file.handle(), &other) == 0 &&
           output.st_dev == other.st_dev && output.st_ino == other.st_ino;
}

/// Documents take a hundred times what is kept of them: they go at once unless they are wanted.
FileFacts factsOf(QByteArray const& path, QString const& labelKey, bool isDocumentWanted)
{
    QFile file(QFile::decodeName(path));
    try {
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            throw BadManifest{file.errorString()};
        if (file.size() > LargestManifest)
            throw BadManifest{QStringLiteral("it is too large")};
        if (file.size() == 0 && isOwnOutput(file))
            return {};
        QByteArray const json = file.readAll();
        if (file.error() != QFileDevice::NoError)
            throw BadManifest{file.errorString()};
        FileFacts facts{FileFacts::Run, manifestRun(json, labelKey), QString()};
        if (!isDocumentWanted)
            facts.run.root = QJsonObject();
        return facts;
    } catch (BadManifest const& bad) {
        return {FileFacts::Broken, {}, bad.reason};
    } catch (OtherDocument const&) {
        return {};
    }
}

QString asFolder(QString const& path)
{
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

} // namespace

ReportReader::ReportReader(QString const& labelKey, std::function<void(ManifestRun const&)> each)
    : m_labelKey(labelKey), m_each(std::move(each))
{}

void ReportReader::read(QStringList const& paths)
{
    QStringList canonical;
    for (QString const& path : paths) {
        QFileInfo const info(path);
        bool const isOpen = info.isDir() ? info.isReadable() && info.isExecutable()
                                         : info.isFile() && info.isReadable();
        if (!isOpen)
            throw Failure{Status::Configuration, path + QStringLiteral(": it can't be read")};
        canonical << info.canonicalFilePath();
    }
    for (int i = 0; i < paths.size(); ++i) {
        QString const& path = canonical.at(i);
        bool const isRead =
            canonical.indexOf(path) < i ||
            std::any_of(canonical.begin(), canonical.end(), [&](QString const& one) {
                return one != path && path.startsWith(asFolder(one));
            });
        if (isRead)
            continue;
        if (QFileInfo(paths.at(i)).isDir())
            readFolder(QFile::encodeName(paths.at(i)));
        else
            addFile(QFile::encodeName(paths.at(i)));
    }
    readBatch();
}

/// Without recursion, and without looking at each file: folders tell the kind of what they hold.
void ReportReader::readFolder(QByteArray const& folder)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> waiting{fs::path(folder.toStdString())};
    while (!waiting.empty()) {
        fs::path const path = std::move(waiting.back());
        waiting.pop_back();
        std::error_code error;
        for (fs::directory_iterator entry(path, error), end; !error && entry != end;
             entry.increment(error)) {
            std::error_code unknown;
            if (entry->is_symlink(unknown))
                continue;
            if (entry->is_directory(unknown))
                waiting.push_back(entry->path());
            else if (entry->path().extension() == Ending && entry->is_regular_file(unknown))
                addFile(QByteArray::fromStdString(entry->path().native()));
        }
        if (error)
            m_report.broken << BrokenManifest{QByteArray::fromStdString(path.native()),
                                              QByteArray::fromStdString(error.message())};
    }
}

void ReportReader::addFile(QByteArray const& path)
{
    m_batch << path;
    if (m_batch.size() == BatchSize)
        readBatch();
}

/// Several at once: on a shared folder most of the time goes by until a file is open. The order of
/// what is kept does not depend on it.
void ReportReader::readBatch()
{
    std::vector<FileFacts> files(std::size_t(m_batch.size()));
    auto const readSome = [&](std::size_t first) {
        for (std::size_t i = first; i < files.size(); i += Workers)
            files[i] = factsOf(m_batch.at(int(i)), m_labelKey, bool(m_each));
    };
    std::vector<std::future<void>> others;
    for (std::size_t first = 1; first < Workers; ++first)
        others.push_back(std::async(std::launch::async, readSome, first));
    readSome(0);
    for (std::future<void>& other : others)
        other.get();
    for (std::size_t i = 0; i < files.size(); ++i) {
        FileFacts& file = files[i];
        if (file.kind == FileFacts::Run)
            keep(file.run, m_batch.at(int(i)));
        else if (file.kind == FileFacts::Broken)
            m_report.broken << BrokenManifest{m_batch.at(int(i)), file.reason.toUtf8()};
        else
            ++m_report.others;
    }
    m_batch.clear();
}

void ReportReader::keep(ManifestRun& facts, QByteArray const& path)
{
    ReportRun& run = facts.run;
    run.path = path;
    if (run.label.isEmpty()) // is its own, then
        run.label = path.left(path.size() - (path.endsWith(Ending) ? int(qstrlen(Ending)) : 0));
    run.configuration = m_report.configurations.numberOf(facts.configuration.toUtf8() + '\n' +
                                                         facts.sha256.toLatin1());
    run.board = m_report.boards.numberOf(facts.board.toUtf8());
    if (m_each)
        m_each(facts);
    m_report.runs << run;
}

void ReportReader::expect(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{Status::Configuration, path + QStringLiteral(": ") + file.errorString()};
    m_report.isExpecting = true;
    while (!file.atEnd()) {
        QByteArray const label = file.readLine().trimmed();
        if (!label.isEmpty())
            m_expected << label;
    }
    if (file.error() != QFileDevice::NoError)
        throw Failure{Status::Configuration, path + QStringLiteral(": ") + file.errorString()};
}

Report ReportReader::take()
{
    putInOrder();
    if (m_report.isExpecting)
        findMissing();
    std::sort(m_report.broken.begin(), m_report.broken.end(),
              [](BrokenManifest const& one, BrokenManifest const& other) {
                  return one.path < other.path;
              });
    m_expected.clear();
    return std::exchange(m_report, {});
}

void ReportReader::putInOrder()
{
    QVector<ReportRun>& runs = m_report.runs;
    std::sort(runs.begin(), runs.end(), isBefore);
    auto const end = std::unique(runs.begin(), runs.end(), isCopy);
    m_report.copies = int(runs.end() - end);
    runs.erase(end, runs.end());
    for (int i = 0; i < runs.size(); ++i)
        runs[i].isLast = i + 1 == runs.size() || runs.at(i).label != runs.at(i + 1).label;
}

void ReportReader::findMissing()
{
    std::sort(m_expected.begin(), m_expected.end());
    m_expected.erase(std::unique(m_expected.begin(), m_expected.end()), m_expected.end());
    auto expected = m_expected.constBegin();
    for (ReportRun const& run : qAsConst(m_report.runs)) {
        if (!run.isLast)
            continue;
        while (expected != m_expected.constEnd() && *expected < run.label)
            m_report.missing << *expected++;
        if (expected != m_expected.constEnd() && *expected == run.label)
            ++expected;
        else
            ++m_report.unexpected;
    }
    std::copy(expected, m_expected.constEnd(), std::back_inserter(m_report.missing));
}

} // namespace VEK::Cli
