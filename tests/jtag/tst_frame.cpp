#include "jtag/frame.h"

#include <QBitArray>
#include <QBuffer>
#include <QDataStream>
#include <QRandomGenerator>
#include <QtTest>

using namespace VEK;

namespace {

QByteArray hex(QByteArray const& digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray framed(QByteArray const& body)
{
    return hex(QByteArray::number(body.size(), 16).rightJustified(8, '0')) + body;
}

CmdPack const Message{
    {"A", 1}, {"B", QBitArray(33, true)}, {"C", 2u}, {"D", "Z"}, {"E", QVariantList{-1}}};

/// Count, then for each entry key length, key, type, null flag, value.
QByteArray const Body = hex("00000005"
                            "00000002 0045  00000009 00  00000001 00000002 00 ffffffff"
                            "00000002 0044  0000000a 00  00000002 005a"
                            "00000002 0043  00000003 00  00000002"
                            "00000002 0042  0000000d 00  00000021 ffffffff 01"
                            "00000002 0041  00000002 00  00000001");

struct Device : QBuffer
{
    explicit Device(QByteArray const& bytes)
    {
        setData(bytes);
        open(QIODevice::ReadOnly);
    }
    FrameState take() { return takeFrame(*this, blockSize, pack); }

    quint32 blockSize = 0;
    CmdPack pack;
};

} // namespace

class FrameTest : public QObject
{
    Q_OBJECT

private slots:
    void layout()
    {
        QCOMPARE(frameFromPack({}).toHex(), QByteArray("0000000400000000"));
        QCOMPARE(frameFromPack(Message).toHex(), framed(Body).toHex());
        CmdPack pack;
        QVERIFY(packFromBody(Body, pack));
        QCOMPARE(pack, Message);
        // Another order, and bits that are no part of the value.
        QVERIFY(packFromBody(hex("00000002  00000002 0041  00000002 00  00000001"
                                 "00000002 0058  0000000d 00  00000003 ff"),
                             pack));
        QCOMPARE(pack, (CmdPack{{"A", 1}, {"X", QBitArray(3, true)}}));
        QVariantList const others{true, -5LL, 5ULL, 0.5, QString(), QByteArray("y"), QVariant()};
        CmdPack const other{{"A", others}, {"B", QStringList{"x", ""}}};
        QVERIFY(packFromBody(frameFromPack(other).mid(4), pack));
        QCOMPARE(pack, other);
    }

    /// Most messages hold plain values only and are not written by Qt; none is read by it.
    void likeQt()
    {
        QList<CmdPack> packs{{{"K", QVariant()}},  {{"K", QString()}, {"L", "x"}},
                             {{"K", QBitArray()}}, {{"K", QVariant(QVariant::Int)}},
                             {{QString(), 1}},     {{"", ""}, {"L", 1.5}}};
        QRandomGenerator random(4712);
        for (int size = 0; size < 40; ++size) {
            QBitArray bits(size + 1);
            bits.setBit(random.bounded(size + 1));
            packs += {{"A", int(random.generate())}, {"bits", bits}};
            packs += {{"C", random.generate()}, {QString(size, 'D'), QString(size, QChar(0x3b1))}};
        }
        for (CmdPack const& pack : qAsConst(packs)) {
            QByteArray body;
            QDataStream stream(&body, QIODevice::WriteOnly);
            stream.setVersion(QDataStream::Qt_4_6);
            stream << pack;
            QCOMPARE(frameFromPack(pack).toHex(), framed(body).toHex());
            CmdPack read;
            QVERIFY(packFromBody(body, read));
            QCOMPARE(read, pack);
        }
    }

    void cutAndJoinedFrames()
    {
        QByteArray const stream = framed(Body) + frameFromPack({}) + framed(Body);
        for (int chunk : {1, 3, stream.size()}) {
            Device device("");
            QList<CmdPack> found;
            for (int at = 0; at < stream.size(); at += chunk) {
                device.buffer() += stream.mid(at, chunk);
                while (device.take() == FrameState::Complete)
                    found += device.pack;
            }
            QCOMPARE(found, (QList<CmdPack>{Message, {}, Message}));
        }
    }

    void brokenBody_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("huge count") << hex("fffffff0");
        QTest::newRow("fewer entries than told") << hex("00000006") + Body.mid(4);
        auto const value = [](char const* name, QByteArray const& bytes) {
            QTest::newRow(name) << hex("00000001 00000002 0041") + bytes;
        };
        value("no value", "");
        value("huge list", hex("00000009 00 fffffff0"));
        value("huge bit array", hex("0000000d 00 fffffff0"));
        value("more bits than bytes", hex("0000000d 00 00000011 ffff"));
        value("huge string", hex("0000000a 00 fffffff0"));
        value("odd string", hex("0000000a 00 00000003 000000"));
        value("unknown type", hex("00000309 00 00000000"));
        value("deep lists", hex("00000009 00 00000001").repeated(100000));
    }

    /// As a frame it is consumed whole, and the next one is found behind it.
    void brokenBody()
    {
        QFETCH(QByteArray, body);
        CmdPack pack{{"old", 1}};
        QVERIFY(!packFromBody(body, pack) && pack.isEmpty());
        Device device(framed(body) + framed(Body));
        QCOMPARE(device.take(), FrameState::Malformed);
        QCOMPARE(device.take(), FrameState::Complete);
        QCOMPARE(device.pack, Message);
    }

    /// Nothing is kept of what can never become a frame.
    void brokenLength()
    {
        Device device(hex("ffffffff"));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(device.take(), FrameState::Incomplete);
            QVERIFY(device.atEnd());
            device.buffer() += QByteArray(100000, 'x');
        }
    }
};

QTEST_GUILESS_MAIN(FrameTest)
#include "tst_frame.moc"
