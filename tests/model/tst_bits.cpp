#include "model/bits.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

using namespace VEK;

namespace {

/// The model of every cut: one character a bit, zeros wherever the source has none.
QString cut(QString const& text, int start, int length)
{
    QString result;
    for (int i = start; i < start + length; ++i)
        result += i >= 0 && i < text.size() ? text.at(i) : QChar('0');
    return result;
}

QString randomText(QRandomGenerator& random, int size)
{
    QString text;
    while (text.size() < size)
        text += random.bounded(2) ? '1' : '0';
    return text;
}

} // namespace

class tst_Bits : public QObject
{
    Q_OBJECT

private slots:
    void bytes_data() { likeTheModel_data(); }
    void likeTheModel_data()
    {
        QTest::addColumn<int>("size");
        for (int size : {0, 1, 8, 9, 23, 31, 47, 63, 64, 65, 129, 4097})
            QTest::addRow("%d", size) << size;
    }

    void likeTheModel()
    {
        QFETCH(int, size);
        QRandomGenerator random(20240 + quint32(size));
        QString const text = randomText(random, size);
        QBitArray const bits = str2bit(text);
        QCOMPARE(bits.size(), size);
        for (int i = 0; i < size; ++i)
            QCOMPARE(bits.testBit(i), text.at(i) == '1');
        QCOMPARE(bit2str(bits), text);
        QString mirrored = text;
        std::reverse(mirrored.begin(), mirrored.end());
        QCOMPARE(bit2str(reverse(bits)), mirrored);
        QCOMPARE(is0(bits), !text.contains('1'));
        for (int n : {-65, -64, -63, -8, -1, 0, 1, 3, 8, 63, 64, 65, 127, 129, size - 65, size - 1,
                      size, size + 1, size + 64}) {
            for (int i = 0; i < 64; ++i)
                QCOMPARE(int(packedBits(bits, n) >> i & 1), cut(text, n + i, 1).toInt());
            QCOMPARE(packedBits(bits, n, 5), packedBits(bits, n) & 31);
            for (int length : {0, 1, 9, 64, 65, 130, size})
                QCOMPARE(bit2str(sub(bits, n, length)), cut(text, n, length));
            QCOMPARE(bit2str(sub(bits, n, -1)), cut(text, n, size - n));
            QCOMPARE(bit2str(rightJustified(bits, n)), cut(text, size - n, n));
            QCOMPARE(bit2str(leftJustified(bits, n)), cut(text, 0, n));
            QCOMPARE(bit2str(cutHead(bits, n)), cut(text, n, size - n));
            QCOMPARE(bit2str(cutTail(bits, n)), cut(text, 0, size - n));
            QBitArray const head = leftJustified(bits, n);
            QCOMPARE(bit2str(combine(head, bits)), bit2str(head) + text);
            QCOMPARE(bit2str(combine({bits, head, QBitArray(), bits})),
                     text + bit2str(head) + text);
        }
        for (int i = 0; i < size; i += 1 + size / 7) { // a single 1, wherever it stands
            QBitArray single(size);
            single.setBit(i);
            QVERIFY(!is0(single) && is1(single) == (i == 0));
        }
    }

    void bytes()
    {
        QFETCH(int, size);
        QRandomGenerator random(555 + quint32(size));
        QString const text = randomText(random, (size + 7) / 8 * 8);
        QByteArray bytes;
        for (int i = 0; i < text.size(); i += 8)
            bytes.append(char(text.mid(i, 8).toInt(nullptr, 2)));
        for (int start : {0, 1, 3, 7, 8, 9, 64, 71, text.size(), text.size() + 9}) {
            QCOMPARE(bit2str(byte2bit(bytes, start, -1)), cut(text, start, text.size() - start));
            for (int count : {0, 1, 5, 8, 65, text.size() + 20})
                QCOMPARE(bit2str(byte2bit(bytes, start, count)),
                         size ? cut(text, start, count) : QString());
        }
        QVERIFY(byte2bit(bytes, -1, 4).isEmpty() && byte2bit(bytes, 0, -2).isEmpty());
    }

    void edges()
    {
        QCOMPARE(bit2str(int32ToBit(0x80000005)), "1" + QString(28, '0') + "101");
        QCOMPARE(bit2str(int16ToBit(0x8001)), "1" + QString(14, '0') + "1");
        QVERIFY(byte2bit(QByteArray(), 3, 12).isNull() && byte2bit(QByteArray(), 0, -1).isNull());
        QCOMPARE(bit2str(byte2bit(QByteArray(1, char(0xb0)), 3, -1)), QString("10000"));
        QCOMPARE(bit2str(str2bit("01x1 2")), QString("011111")); // whatever is not `0`
        QVERIFY(is0(QBitArray()) && is1(QBitArray()));
        QVERIFY(!is1(QBitArray(1)) && !is1(QBitArray(70)));
        // the lowest bit first here, and nowhere else
        QVERIFY(is1(str2bit("100")) && !is1(str2bit("001")) && !is1(str2bit("11")));
        QCOMPARE(sub(str2bit("1"), INT_MAX, 9), QBitArray(9));
        QVERIFY(cutHead(str2bit("101"), INT_MAX).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_Bits)
#include "tst_bits.moc"
