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

    /// As a frame it is consumed whole, and the next one is found behind it.
    void brokenBodies()
    {
        QByteArray const entry = hex("00000001 00000002 0041");
        QMap<char const*, QByteArray> const bodies{
            {"empty", ""},
            {"huge count", hex("fffffff0")},
            {"fewer entries than told", hex("00000006") + Body.mid(4)},
            {"no value", entry},
            {"huge list", entry + hex("00000009 00 fffffff0")},
            {"huge bit array", entry + hex("0000000d 00 fffffff0")},
            {"more bits than bytes", entry + hex("0000000d 00 00000011 ffff")},
            {"huge string", entry + hex("0000000a 00 fffffff0")},
            {"odd string", entry + hex("0000000a 00 00000003 000000")},
            {"unknown type", entry + hex("00000309 00 00000000")},
            {"deep lists", entry + hex("00000009 00 00000001").repeated(100000)}};
        for (char const* name : bodies.keys()) {
            CmdPack pack{{"old", 1}};
            QVERIFY2(!packFromBody(bodies[name], pack) && pack.isEmpty(), name);
            Device device(framed(bodies[name]) + framed(Body));
            QVERIFY2(device.take() == FrameState::Malformed, name);
            QVERIFY2(device.take() == FrameState::Complete, name);
            QCOMPARE(device.pack, Message);
        }
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
