#pragma once

#include <QFile>
#include <QTemporaryDir>

/// A folder that goes when the test does. Its path is short: that of a socket has some 100 bytes.
class TempFolder
{
public:
    QString path(QString const& name = QString()) const { return m_folder.filePath(name); }

    /// The path of the file that is made.
    QString write(QString const& name, QByteArray const& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s can't be written", qPrintable(name));
        return file.fileName();
    }

    /// Says which file is not there.
    static QByteArray content(QString const& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no " + path.toUtf8());
    }

private:
    QTemporaryDir m_folder{QStringLiteral("/tmp/vekXXXXXX")};
};
