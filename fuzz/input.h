#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

/// One input of a fuzz target, as bytes and as a file.
class FuzzInput
{
public:
    FuzzInput(std::uint8_t const* data, std::size_t size)
        : bytes(reinterpret_cast<char const*>(data), int(size))
    {}

    /// The path of a file with the bytes, the same for the whole process.
    QString path() const;

    QByteArray const bytes;
};

/// A path in a private folder that ends with the process, for what a target writes.
QString scratchPath(QString const& name);
