#include "results/wholefile.h"

#include <QFileInfo>
#include <QSaveFile>

bool writeWholeFile(QString const& path, std::function<bool(QIODevice&)> const& write,
                    QString& error)
{
    QFileInfo const target(path);
    bool const isSpecial = target.exists() && !target.isFile() && !target.isDir();
    if (isSpecial || path.startsWith(QLatin1String("/dev/"))) { // must not be replaced by a file
        QFile device(path);
        if (device.open(QIODevice::WriteOnly) && write(device) && device.flush())
            return true;
        error = device.errorString();
        return false;
    }
    QSaveFile file(path);
    file.setDirectWriteFallback(true); // for a folder that takes no new files
    // flushed first: commit() takes no notice of what the disk refuses then
    if (file.open(QIODevice::WriteOnly) && write(file) && file.flush() && file.commit())
        return true;
    error = file.errorString();
    return false;
}

bool writeWholeFile(QString const& path, QByteArray const& bytes, QString& error)
{
    return writeWholeFile(
        path, [&](QIODevice& device) { return device.write(bytes) == bytes.size(); }, error);
}
