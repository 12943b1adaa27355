#include "jtag/frame.h"

#include <QBitArray>
#include <QBuffer>
#include <QDataStream>
#include <QRandomGenerator>
#include <QtTest>

using namespace VEK;

namespace {

// The layout written down once more, byte by byte, so that the product's encoder and decoder are
// not only checked against each other.

QByteArray be32(quint32 n)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(char(n >> shift));
    return bytes;
}

QByteArray text(QString const& s)
{
    QByteArray bytes = be32(2 * quint32(s.size()));
    for (QChar c : s)
        bytes.append(char(c.row())).append(char(c.cell()));
    return bytes;
}

QByteArray packed(QBitArray const& bits)
{
    QByteArray bytes((bits.size() + 7) / 8, 0);
    for (int i = 0; i < bits.size(); ++i) {
        if (bits.testBit(i))
            bytes[i / 8] = char(bytes[i / 8] | 1 << i % 8);
    }
    return be32(quint32(bits.size())) + bytes;
}

QByteArray typed(quint32 id, QByteArray const& payload)
{
    return be32(id) + '\0' + payload;
}

QByteArray value(QVariant const& v)
{
    switch (int(v.type())) {
    case QVariant::Int:
        return typed(2, be32(quint32(v.toInt())));
    case QVariant::UInt:
        return typed(3, be32(v.toUInt()));
    case QVariant::String:
        return typed(10, text(v.toString()));
    case QVariant::BitArray:
        return typed(13, packed(v.toBitArray()));
    default:
        break;
    }
    QByteArray items;
    for (QVariant const& item : v.toList())
        items += value(item);
    return typed(9, be32(quint32(v.toList().size())) + items);
}

QByteArray body(CmdPack const& pack, bool greatestFirst = true)
{
    QByteArray entries;
    for (auto it = pack.begin(); it != pack.end(); ++it) {
        QByteArray const entry = text(it.key()) + value(it.value());
        entries = greatestFirst ? entry + entries : entries + entry;
    }
    return be32(quint32(pack.size())) + entries;
}

QByteArray framed(QByteArray const& body)
{
    return be32(quint32(body.size())) + body;
}

QVariant randomValue(QRandomGenerator& random, bool nested)
{
    int const size = random.bounded(40);
    switch (random.bounded(nested ? 4 : 5)) {
    case 0:
        return int(random.generate());
    case 1:
        return random.generate();
    case 2: {
        QString s;
        for (int i = 0; i < size; ++i)
            s += QChar(ushort(random.bounded(1, 0xD800)));
        return s.isNull() ? QLatin1String("") : s;
    }
    case 3: {
        QBitArray bits(size + 1);
        for (int i = 0; i < bits.size(); ++i)
            bits.setBit(i, random.bounded(2));
        return bits;
    }
    default: {
        QVariantList list;
        for (int i = 0; i < size / 8; ++i)
            list.append(randomValue(random, true));
        return list;
    }
    }
}

CmdPack randomPack(QRandomGenerator& random)
{
    CmdPack pack;
    for (int i = random.bounded(8); i > 0; --i)
        pack.insert("key" + QString::number(random.bounded(100)), randomValue(random, false));
    return pack;
}

QByteArray oneEntry(QByteArray const& value)
{
    return be32(1) + text("K") + value;
}

} // namespace

class FrameTest : public QObject
{
    Q_OBJECT

private slots:
    void layout();
    void rareValues();
    void randomPacks();
    void cutAndJoinedFrames();
    void brokenBody_data();
    void brokenBody();
    void brokenLength();
    void damagedBodies();
};

void FrameTest::layout()
{
    QCOMPARE(frameFromPack({}).toHex(), QByteArray("0000000400000000"));
    QCOMPARE(frameFromPack({{"A", 1}, {"B", QBitArray(33, true)}}).toHex(' '),
             QByteArray("00 00 00 27 00 00 00 02 "
                        "00 00 00 02 00 42 00 00 00 0d 00 00 00 00 21 ff ff ff ff 01 "
                        "00 00 00 02 00 41 00 00 00 02 00 00 00 00 01"));
    // Unused bits of the last byte are no part of the value.
    CmdPack pack;
    QVERIFY(packFromBody(oneEntry(typed(13, be32(3) + char(0xff))), pack));
    QCOMPARE(pack.value("K").toBitArray(), QBitArray(3, true));
}

void FrameTest::rareValues()
{
    QList<CmdPack> const packs{
        {{"K", QVariant()}},
        {{"K", QString()}},
        {{"K", ""}},
        {{"K", QBitArray()}},
        {{"K", QVariant(QVariant::Int)}},
        {{QString(), 1}},
        {{"", 1}},
        {{"K", -1}, {"L", 1.5}, {"M", true}, {"N", QStringList{"a"}}, {"O", QByteArray("b")}}};
    for (CmdPack const& pack : packs) { // whatever is written here is written as Qt does it
        QByteArray expected;
        QDataStream stream(&expected, QIODevice::WriteOnly);
        stream.setVersion(QDataStream::Qt_4_6);
        stream << pack;
        QCOMPARE(frameFromPack(pack).toHex(), framed(expected).toHex());
    }
}

void FrameTest::randomPacks()
{
    QRandomGenerator random(4711);
    for (int i = 0; i < 500; ++i) {
        CmdPack const pack = randomPack(random);
        QCOMPARE(frameFromPack(pack).toHex(), framed(body(pack)).toHex());
        for (bool greatestFirst : {true, false}) {
            CmdPack back;
            QVERIFY(packFromBody(body(pack, greatestFirst), back));
            QCOMPARE(back, pack);
        }
    }
}

void FrameTest::cutAndJoinedFrames()
{
    QRandomGenerator random(4712);
    CmdPack const first = randomPack(random);
    CmdPack const second = randomPack(random);
    QByteArray const stream = framed(body(first)) + framed(body({})) + framed(body(second));
    for (int chunk : {1, 3, stream.size()}) {
        QBuffer device;
        device.open(QIODevice::ReadOnly);
        quint32 blockSize = 0;
        QList<CmdPack> found;
        for (int at = 0; at < stream.size(); at += chunk) {
            device.buffer().append(stream.mid(at, chunk));
            CmdPack pack;
            while (takeFrame(device, blockSize, pack) == FrameState::Complete)
                found.append(pack);
            if (at == 0 && chunk == 3) {
                QCOMPARE(blockSize, 0u); // no whole length yet: nothing is consumed
                QCOMPARE(device.bytesAvailable(), 3);
            }
        }
        QCOMPARE(found, (QList<CmdPack>{first, {}, second}));
        QCOMPARE(device.bytesAvailable(), 0);
    }
}

void FrameTest::brokenBody_data()
{
    QTest::addColumn<QByteArray>("body");
    quint32 const huge = 0xfffffff0u;
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("huge entry count") << be32(huge);
    QTest::newRow("fewer entries than told") << be32(2) + body({{"K", 1}}).mid(4);
    QTest::newRow("huge list") << oneEntry(typed(9, be32(huge)));
    QTest::newRow("huge bit array") << oneEntry(typed(13, be32(huge)));
    QTest::newRow("more bits than bytes") << oneEntry(typed(13, be32(17) + QByteArray(2, 1)));
    QTest::newRow("huge string") << oneEntry(typed(10, be32(huge)));
    QTest::newRow("odd string") << oneEntry(typed(10, be32(3) + QByteArray(3, 'x')));
    QTest::newRow("unknown type") << oneEntry(typed(777, be32(0)));
    QTest::newRow("no value") << oneEntry(QByteArray());
    QByteArray const deep = typed(9, be32(1)).repeated(100000) + typed(2, be32(1));
    QTest::newRow("deep lists") << oneEntry(deep);
}

void FrameTest::brokenBody()
{
    QFETCH(QByteArray, body);
    CmdPack pack{{"old", 1}};
    QVERIFY(!packFromBody(body, pack));
    QVERIFY(pack.isEmpty());
    // As a frame it is consumed whole, and the next one is found behind it.
    CmdPack const next{{"next", 2}};
    QByteArray stream = framed(body) + framed(::body(next));
    QBuffer device(&stream);
    device.open(QIODevice::ReadOnly);
    quint32 blockSize = 0;
    QCOMPARE(takeFrame(device, blockSize, pack), FrameState::Malformed);
    QCOMPARE(takeFrame(device, blockSize, pack), FrameState::Complete);
    QCOMPARE(pack, next);
}

void FrameTest::brokenLength()
{
    QBuffer device;
    device.open(QIODevice::ReadWrite);
    device.buffer().append(be32(0xffffffffu));
    quint32 blockSize = 0;
    CmdPack pack;
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(takeFrame(device, blockSize, pack), FrameState::Incomplete);
        QCOMPARE(device.bytesAvailable(), 0); // nothing is kept of what can never become a frame
        device.buffer().append(QByteArray(100000, 'x'));
    }
}

void FrameTest::damagedBodies()
{
    QRandomGenerator random(4713);
    for (int i = 0; i < 5000; ++i) {
        QByteArray damaged = body(randomPack(random));
        for (int n = random.bounded(1, 4); n > 0; --n)
            damaged[random.bounded(damaged.size())] = char(random.generate());
        damaged.truncate(random.bounded(damaged.size() + 1));
        CmdPack pack;
        bool const ok = packFromBody(damaged, pack);
        QVERIFY(ok || pack.isEmpty());
    }
}

QTEST_GUILESS_MAIN(FrameTest)
#include "tst_frame.moc"
