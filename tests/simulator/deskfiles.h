#pragma once

#include <QDir>
#include <QtTest>

#include "jtag/protocol.h"
#include "simulator/bridge.h"
#include "tests/support/bittext.h"
#include "tests/support/tempfolder.h"

/// Files of a desk in a folder of their own, and requests to what serves it.
class DeskFiles : public TempFolder
{
public:
    /// A static core of index 0 with the data signals d[1] and d[0], unit M0 over both, depth 16.
    static QByteArray vek(QByteArray const& attributes = R"(sample_clock="clk" storage_depth="16")",
                          QByteArray const& expression = "M0")
    {
        QByteArray const list = "<SignalList><Signal>d[1]</Signal><Signal>d[0]</Signal>"
                                "</SignalList>";
        return "<?xml version=\"1\"?><VEK_CONFIG><Version>3.0</Version><Mode>Standard</Mode>"
               "<SxCore index=\"0\" " +
               attributes + ">" + list + "<Triggers><Trigger index=\"3\">" + list +
               "</Trigger></Triggers><MatchUnits>"
               "<MatchUnit index=\"0\" enabled=\"1\" trigger=\"3\"/></MatchUnits>"
               "<Expressions type=\"Static\"><Expression>" +
               expression + "</Expression></Expressions></SxCore></VEK_CONFIG>";
    }

    /// At the edges of tb.clk d counts up from 1, other counts down from 3.
    static QByteArray vcd(int samples)
    {
        QByteArray text = "$scope module tb $end $var wire 1 c clk $end $var wire 2 d d [1:0] $end "
                          "$var wire 2 o other [1:0] $end $upscope $end $enddefinitions $end ";
        for (int k = 0; k < samples; ++k)
            text += "#" + QByteArray::number(10 * k) + " 0c b" +
                    QByteArray::number((k + 1) % 4, 2) + " d b" + QByteArray::number(3 - k % 4, 2) +
                    " o #" + QByteArray::number(10 * k + 5) + " 1c ";
        return text;
    }

    static CmdPack request(QString const& command, QString const& operation = QString(),
                           QByteArray const& data = QByteArray(), int size = -1)
    {
        CmdPack pack{{"CMD", command}};
        if (!operation.isEmpty())
            pack.insert("OPRATE", operation);
        if (!data.isEmpty())
            pack.insert("DATA", bits(data));
        if (size >= 0)
            pack.insert("SIZE", size);
        return pack;
    }

    /// What arms core 0 for eight samples from the first one with d = 11 on and reads them; the
    /// last request is the only one with a reply.
    static QList<CmdPack> capture()
    {
        int const registers[][2] = {{32, 0},  {33, 7},  {34, 5},  {35, 0}, {256, 3},
                                    {257, 3}, {258, 0}, {259, 0}, {0, 1}};
        QList<CmdPack> requests{request("WRITE", "WRITE_REGISTOR", "10000")};
        for (auto const& row : registers)
            requests.append(
                request("WRITE", "WRITE_REGISTOR",
                        "01001" + number(unsigned(row[0]), 16) + number(unsigned(row[1]), 16)));
        requests.append(request("WRITE", "BRUST_READ", "00111" + QByteArray(28, '0') + "1000"));
        CmdPack read = request("READ", "READ_RAM", QByteArray(), 33 + 8 * 16);
        read.insert("SECTION_COUNT", 1);
        read.insert("WINDOW", 0);
        read.insert("data_request_id", 5u);
        requests.append(read);
        return requests;
    }

    /// The values of d in a reply to `capture`, from the marked one on, one digit each.
    static QByteArray values(CmdPack const& reply)
    {
        QBitArray const bits = reply.value("DATA").toBitArray();
        QByteArray digits;
        int marked = 0;
        for (int end = bits.size() - 1; end >= 32 + 16; end -= 16) {
            marked = bits.testBit(end - 3) ? digits.size() : marked;
            digits += char('0' + 2 * bits.testBit(end - 2) + bits.testBit(end - 1));
        }
        return digits.mid(marked) + digits.left(marked);
    }
};

/// A bridge over a bench with these members, beside the design d.vek and the dump s.vcd.
class Desk
{
public:
    explicit Desk(QByteArray const& members, QByteArray const& vek = DeskFiles::vek(),
                  int samples = 40)
    {
        files.write("d.vek", vek);
        files.write("s.vcd", DeskFiles::vcd(samples));
        VEK::Simulator::Bench bench;
        if (!parseBench('{' + members + '}', files.path(""), bench, error))
            qFatal("%s", qPrintable(error));
        bridge.reset(new VEK::Simulator::Bridge(bench, QStringList{"FT2CH", "TR7QZ", "WINUSB"}));
        isSound = bridge->load(error);
    }
    bool serve(CmdPack const& request) { return bridge->serve(request, reply); }

    DeskFiles files;
    QScopedPointer<VEK::Simulator::Bridge> bridge;
    bool isSound = false;
    QString error;
    CmdPack reply;
};
