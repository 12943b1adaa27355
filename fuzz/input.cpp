#include "fuzz/input.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

QString scratchPath(QString const& name)
{
    // in memory where that is to be had: an input a file is many files
    static QString const memory = QStringLiteral("/dev/shm");
    static QTemporaryDir const folder((QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) +
                                      QStringLiteral("/vekXXXXXX"));
    return folder.filePath(name);
}

QString FuzzInput::path() const
{
    QFile file(scratchPath(QStringLiteral("input")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s can't be written", qPrintable(file.fileName()));
    return file.fileName();
}
