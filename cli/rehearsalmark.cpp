#include "cli/rehearsalmark.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

namespace VEK::Cli {
namespace {

QString const Mark = QStringLiteral("made for rehearsals on \"%1\": it describes no core that was "
                                    "built");
constexpr qint64 HeadSize = 16384; ///< Prolog and comment end within.

} // namespace

QByteArray markedForRehearsal(QByteArray text, QString const& file, QString const& bench)
{
    QDir const folder = QFileInfo(file).absoluteDir();
    QString const way = folder.relativeFilePath(QFileInfo(bench).absoluteFilePath());
    // a comment must not hold "--", nor the file letters beyond Latin-1
    QString const coded = QString::fromLatin1(QUrl::toPercentEncoding(way, "/", "-"));
    return text.insert(text.indexOf("?>") + 2,
                       QStringLiteral("\n<!-- %1 -->").arg(Mark.arg(coded)).toLatin1());
}

QString rehearsalBench(QString const& file)
{
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly))
        return QString();
    QString const head = QString::fromLatin1(device.read(HeadSize));
    static QRegularExpression const form(
        QStringLiteral("<!-- %1 -->").arg(Mark.arg(QStringLiteral("([^\"]*)"))));
    QRegularExpressionMatch const match = form.match(head);
    if (!match.hasMatch())
        return QString();
    QString const way = QUrl::fromPercentEncoding(match.captured(1).toLatin1());
    return QDir::cleanPath(QFileInfo(file).absoluteDir().absoluteFilePath(way));
}

} // namespace VEK::Cli
