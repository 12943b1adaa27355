#pragma once

#include <QString>

#include <functional>

class QIODevice;

/// Writes a file whole or not at all: `write` fills it and says whether all of it was taken. False,
/// with an error in words, when it could not be written; what stood there before is untouched then.
/// A pipe, and what is below "/dev" such as "/dev/stdout", is written to directly.
bool writeWholeFile(QString const& path, std::function<bool(QIODevice&)> const& write,
                    QString& error);

/// The same with bytes.
bool writeWholeFile(QString const& path, QByteArray const& bytes, QString& error);
