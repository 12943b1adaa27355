#include "programmerdesk.h"

#include "programmer/devicecatalogue.h"

#include <QJsonArray>
#include <QJsonDocument>

ProgrammerDesk::ProgrammerDesk()
{
    VEK::DeviceConfigurations::setFile(VEK_SOURCE_ROOT "/programmer/data/programmer.json");
    qputenv("VEK_BENCH", path("bench.json").toUtf8());
    lay();
}

ProgrammerDesk::~ProgrammerDesk()
{
    VEK::DeviceConfigurations::setFile(QString());
}

void ProgrammerDesk::lay(QByteArray const& more) const
{
    layAll(R"({"device": "TK-104",
        "cables": [{"kind": "FT2CH", "location": 7, "serial": "A1"},
                   {"kind": "WINUSB", "location": 3, "serial": "B2"}],
        "programmer": {"log": "log", "chain": [
            {"family": "TK-100", "name": "TK-104", "id": "10068001"},
            {"family": "TK-100", "name": "TK-107", "id": "1006A001"}])" +
           (more.isEmpty() ? QByteArray() : ", " + more) + "}}");
}

void ProgrammerDesk::layAll(QByteArray bench) const
{
    write("bench.json", bench.replace('\'', '"'));
}

QString ProgrammerDesk::writeFs(QByteArray const& device, QByteArray const& checksum) const
{
    return write("design.fs", "//Title: a design\n//CheckSum: " + checksum +
                                  "\n//UserCode: \n//Device-package: " + device +
                                  "\n//VEKCRC: 77\n1010\n");
}

QStringList ProgrammerDesk::log() const
{
    QStringList runs;
    for (QByteArray const& line : content(path("log")).split('\n'))
        if (line.startsWith('['))
            runs << QJsonDocument::fromJson(line).toVariant().toStringList().join(' ');
    return runs;
}
