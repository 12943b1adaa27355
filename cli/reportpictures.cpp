#include "cli/reportdifferences.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <memory>
#include <vector>

namespace VEK::Cli {
namespace {

constexpr int SamplesBefore = 24;
constexpr int SamplesAfter = 40;
constexpr int LongestCall = 30000; // ms
constexpr int MostFailures = 4;    // in a row, before it is taken to fail for all
constexpr int MostAtOnce = 4;
constexpr qint64 LargestPicture = 2 * 1024 * 1024;
char const* const Size = "960x360";

QString viewer()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/vek-view");
}

/// One call of the viewer, of which a few run at a time.
class Shot
{
public:
    Shot(Difference& difference, QString const& picture)
        : m_difference(difference), m_picture(picture)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        // where nobody has logged in the program would leave a folder of its own behind
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QFileInfo(picture).path());
        m_process.setProcessEnvironment(environment);
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(viewer(),
                        {difference.capture, QStringLiteral("--grab"), picture,
                         QStringLiteral("--from"),
                         QString::number(std::max(0, difference.sample - SamplesBefore)),
                         QStringLiteral("--to"), QString::number(difference.sample + SamplesAfter),
                         QStringLiteral("--size"), QLatin1String(Size)});
    }
    ~Shot()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Waits for its end. Whether there is a picture.
    bool take()
    {
        bool const hasEnded =
            m_process.state() == QProcess::NotRunning || m_process.waitForFinished(LongestCall);
        if (!hasEnded || m_process.error() == QProcess::FailedToStart ||
            m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0)
            return false;
        QFile file(m_picture);
        if (!file.open(QIODevice::ReadOnly) || file.size() > LargestPicture)
            return false;
        QByteArray const svg = file.readAll();
        if (!svg.contains("<svg"))
            return false;
        m_difference.picture = svg;
        return true;
    }

private:
    Difference& m_difference;
    QString m_picture;
    QProcess m_process;
};

} // namespace

void takePictures(QVector<Difference>& differences)
{
    QTemporaryDir const folder;
    if (!QFileInfo(viewer()).isExecutable() || !folder.isValid())
        return;
    std::size_t const atOnce = std::size_t(std::clamp(QThread::idealThreadCount(), 1, MostAtOnce));
    int failures = 0; // in a row
    std::vector<std::unique_ptr<Shot>> shots;
    auto const takeShots = [&] {
        for (std::unique_ptr<Shot> const& shot : shots)
            failures = shot->take() ? 0 : failures + 1;
        shots.clear();
    };
    for (int i = 0; i < differences.size(); ++i) {
        if (failures >= MostFailures)
            break;
        if (differences.at(i).capture.isEmpty())
            continue;
        shots.push_back(std::make_unique<Shot>(
            differences[i], folder.filePath(QString::number(i) + QStringLiteral(".svg"))));
        if (shots.size() == atOnce)
            takeShots();
    }
    takeShots();
}

} // namespace VEK::Cli
