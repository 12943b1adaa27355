// Stands in for the server executables: as `scanbridge` with "-local" it listens on their socket,
// under any other name it only runs. It leaves its arguments behind in the temporary folder.

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QSaveFile>

#include <unistd.h>

int main(int argc, char** argv)
{
    alarm(60); // whatever becomes of the test
    QCoreApplication app(argc, argv);
    QString const name = QFileInfo(QString::fromLocal8Bit(argv[0])).fileName();
    QStringList const arguments = app.arguments().mid(1);
    QLocalServer server;
    if (name == QLatin1String("scanbridge") && arguments.contains(QLatin1String("-local"))) {
        QLocalServer::removeServer(QStringLiteral("vek1")); // of one that was killed
        server.listen(QStringLiteral("vek1"));
    }
    QSaveFile note(QDir::tempPath() + QStringLiteral("/args-") + name); // appears whole
    if (note.open(QIODevice::WriteOnly)) {
        note.write(arguments.join(QLatin1Char(' ')).toUtf8());
        note.commit();
    }
    return app.exec();
}
