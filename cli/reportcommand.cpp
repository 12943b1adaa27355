#include "cli/command.h"
#include "cli/exitstatus.h"
#include "cli/reportdatabase.h"
#include "cli/reportdifferences.h"
#include "cli/reporthtml.h"
#include "cli/reportreader.h"
#include "cli/reportstatistics.h"
#include "cli/reporttext.h"
#include "results/wholefile.h"

#include <QFile>

#include <memory>

namespace VEK::Cli {
namespace {

constexpr int MostDifferences = 100; // with a picture each

struct Words
{
    std::vector<std::string> folders;
    std::string expected;
    std::string label = "name";
    std::string junit;
    std::string database;
    std::string html;
    bool json = false;
};

/// Throws a Failure.
void writeFile(std::string const& path, std::function<bool(QIODevice&)> const& write)
{
    QString error;
    if (!path.empty() && !writeWholeFile(textOf(path), write, error))
        throw Failure{Status::Output,
                      QStringLiteral("%1 can't be written: %2").arg(textOf(path), error)};
}

/// Reads everything, and writes it into the database meanwhile.
Report readAll(Words const& words, ReportDatabase* database)
{
    std::function<void(ManifestRun const&)> add;
    if (database)
        add = [database](ManifestRun const& facts) { database->add(facts); };
    ReportReader reader(textOf(words.label), add);
    if (!words.expected.empty())
        reader.expect(textOf(words.expected));
    QStringList folders;
    for (std::string const& folder : words.folders)
        folders << textOf(folder);
    reader.read(folders);
    if (database)
        database->commit();
    return reader.take();
}

void tell(Words const& words, Report const& report, Statistics const& statistics,
          ReportDatabase const* database)
{
    bool isTold = true;
    if (words.json) {
        QJsonObject extra;
        if (database)
            extra.insert(QStringLiteral("database"),
                         QJsonObject{{QStringLiteral("added"), database->added()},
                                     {QStringLiteral("updated"), database->updated()}});
        QFile out;
        isTold = out.open(stdout, QIODevice::WriteOnly) &&
                 writeJson(report, statistics, extra, out) && out.flush();
    } else {
        QStringList lines = tableOf(report, statistics);
        if (database)
            lines << QString()
                  << QStringLiteral("database: %1 runs added, %2 brought up to date")
                         .arg(database->added())
                         .arg(database->updated());
        for (QString const& line : qAsConst(lines))
            isTold = isTold && printLine(line);
    }
    if (!isTold)
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
}

int exec(Words const& words)
{
    std::unique_ptr<ReportDatabase> database;
    if (!words.database.empty())
        database = std::make_unique<ReportDatabase>(textOf(words.database));
    Report const report = readAll(words, database.get());
    Statistics const statistics(report);
    writeFile(words.junit, [&](QIODevice& out) { return writeJUnit(report, statistics, out); });
    if (!words.html.empty()) {
        QVector<Difference> differences = differencesOf(report, MostDifferences);
        takePictures(differences);
        writeFile(words.html,
                  [&](QIODevice& out) { return writeHtml(report, statistics, differences, out); });
    }
    tell(words, report, statistics, database.get());
    return int(report.isAllPassed() ? Status::Done : Status::Differs);
}

} // namespace

void addReportCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command =
        program.add_subcommand("report", "Tell how many runs came out, from their manifests");
    auto const words = std::make_shared<Words>();
    command->add_option("folders", words->folders, "Folders with manifests, at any depth")
        ->required()
        ->type_name("DIR");
    command->add_option("--expected", words->expected, "Labels that must have a run, one a line")
        ->type_name("FILE");
    command
        ->add_option("--label", words->label,
                     "The key of the label that names a capture (default name)")
        ->type_name("KEY");
    command->add_option("--junit", words->junit, "Write a report as JUnit XML")->type_name("FILE");
    command->add_option("--html", words->html, "Write a page for people, with filters and waves")
        ->type_name("FILE");
    command->add_option("--sqlite", words->database, "Add the runs that are new to a database")
        ->type_name("FILE");
    command->add_flag("--json", words->json, "Print the report as JSON");
    command->footer(statusHelp().toStdString());
    command->callback([&chosen, words] { chosen = [words] { return exec(*words); }; });
}

} // namespace VEK::Cli
