#include "programmer/fsfile.h"

#include <QFile>
#include <QFileInfo>

namespace VEK {

namespace {

constexpr qint64 LongestLine = 64 * 1024;
constexpr qint64 LongestHeader = 4 * 1024 * 1024; // what is longer is no header

/// The value behind the key of a header line.
QString valueOf(QString const& line)
{
    return line.section(QLatin1Char(':'), 1, 1).simplified();
}

bool contains(QString const& line, char const* key)
{
    return line.contains(QLatin1String(key));
}

/// The two share one Fs format.
QString formatName(QString const& device)
{
    return device == QLatin1String("TK-501") ? QStringLiteral("TK-502") : device;
}

void refuse(DeviceItem& row)
{
    row.userCode.clear();
    row.checksum.clear();
    row.fsFile.clear();
}

/// Whether the file is for the row's device, whose ID code it then takes. A value without a package
/// says nothing.
bool fitsDevice(QString const& value, DeviceItem& row)
{
    int const dash = value.lastIndexOf(QLatin1Char('-'));
    if (dash < 0)
        return true;
    QString const device = formatName(value.left(dash));
    DeviceModes const* const entry = DeviceConfigurations::instance()->deviceModes(device);
    if (!entry || !entry->series || row.series != entry->series->name ||
        formatName(row.device) != device)
        return false;
    row.idCode = entry->idCode;
    return true;
}

/// The next line of the header as a text up to its first NUL; null behind the last. Of a line that
/// is too long the rest is passed over.
QString nextLine(QFile& file)
{
    if (file.pos() > LongestHeader)
        return QString();
    QByteArray const line = file.readLine(LongestLine);
    if (!line.startsWith("//"))
        return QString();
    for (QByteArray rest = line; !rest.isEmpty() && !rest.endsWith('\n');) {
        if (file.pos() > LongestHeader)
            break;
        rest = file.readLine(LongestLine);
    }
    return QString::fromLatin1(line.constData());
}

} // namespace

bool readFsHeader(QString const& file, QString const& crc, DeviceItem& row, QString& warning)
{
    if (file.isEmpty())
        return true;
    QFile header(file);
    // a pipe exists, but opening it would wait for its writer
    if (!QFileInfo(file).isFile() || !header.open(QIODevice::ReadOnly | QIODevice::Text)) {
        warning = QStringLiteral("Warn: %1 Invalid.").arg(file);
        return false;
    }
    row.fsFile = file;
    row.checksum.clear();
    row.userCode.clear();
    for (QString line = nextLine(header); !line.isNull(); line = nextLine(header)) {
        QString const value = valueOf(line);
        if (contains(line, "CheckSum:")) {
            row.checksum = value;
        } else if (contains(line, "UserCode:")) {
            row.userCode = value.isEmpty() ? row.checksum : value;
        } else if (contains(line, "Device-package:")) {
            if (!fitsDevice(value, row)) {
                refuse(row);
                warning =
                    QStringLiteral("Warn: %1 and current series or device do not match.").arg(file);
                return false;
            }
        } else if (contains(line, "VEKCRC:")) {
            if (!value.isEmpty() && !crc.isEmpty() && value != crc) {
                refuse(row);
                warning = QStringLiteral("Warn: %1 and vek file do not match.").arg(file);
                return true; // deliberate: the caller goes on without a file
            }
        }
    }
    return true;
}

QString strBit2Hex(QString const& bits)
{
    QString digits;
    for (int group = 0; group + 4 <= bits.size(); group += 4) {
        int value = 0;
        bool isBits = true;
        for (QChar const c : bits.mid(group, 4)) {
            isBits = isBits && (c == QLatin1Char('0') || c == QLatin1Char('1'));
            value = value * 2 + (c == QLatin1Char('1'));
        }
        if (isBits)
            digits += QString::number(value, 16).toUpper();
    }
    return digits;
}

} // namespace VEK
