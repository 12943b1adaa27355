#include "stimulus.h"

#include <QHash>
#include <QStringList>

namespace Stimulus {

Waves readVcd(QByteArray const& text, QString const& clock)
{
    QStringList scopes;
    QHash<QByteArray, QStringList> nets; // by their code
    QMap<QString, char> before, now;     // one instant and the next
    Waves waves;
    for (QByteArray const& line : (text + "\n#").split('\n')) {
        QList<QByteArray> const words = line.simplified().split(' ');
        QByteArray const& first = words[0];
        if (first == "$scope") {
            scopes += words[2];
        } else if (first == "$upscope") {
            scopes.removeLast();
        } else if (first == "$var") {
            QString const name = (scopes.mid(2) << words[4]).join('.');
            QStringList& members = nets[words[3]] = QStringList();
            for (int bit = words[2].toInt() - 1; bit >= 0; --bit)
                members += words[5] == "$end" ? name : QString("%1[%2]").arg(name).arg(bit);
            for (QString const& member : members)
                now[member] = '0';
        } else if (first.startsWith('#')) {
            if (before.value(clock) == '0' && now.value(clock) == '1')
                for (QString const& net : before.keys())
                    waves[net] += before[net];
            before = now;
        } else if (!first.isEmpty() && QByteArray("01xzb").contains(first[0])) {
            bool const vector = first.startsWith('b');
            QStringList const members = nets.value(vector ? words.value(1) : first.mid(1));
            QByteArray const bits =
                (vector ? first.mid(1) : first.left(1)).rightJustified(members.size(), '0');
            for (int i = 0; i < members.size(); ++i)
                now[members[i]] = bits[i] == '1' ? '1' : '0';
        }
    }
    return waves;
}

QByteArray toVcd(Waves const& waves)
{
    QString text = "$timescale 1ns $end\n$scope module bench $end\n$scope module dut $end\n"
                   "$var wire 1 c clk $end\n";
    for (QString const& net : waves.keys()) // its own code
        text += "$var wire 1 " + net + ' ' + QString(net).replace('[', " [") + " $end\n";
    text += "$upscope $end\n$upscope $end\n$enddefinitions $end\n";
    for (int i = 0; i < waves.first().size(); ++i) {
        text += QString("#%1\n0c\n").arg(10 * i);
        for (auto net = waves.begin(); net != waves.end(); ++net)
            if (i == 0 || net.value()[i] != net.value()[i - 1])
                text += net.value()[i] + net.key() + '\n';
        text += QString("#%1\n1c\n").arg(10 * i + 5);
    }
    return text.toLatin1();
}

Waves counter(QString const& name, int width, int count)
{
    Waves waves;
    for (int bit = 0; bit < width; ++bit)
        for (int i = 0; i < count; ++i)
            waves[QString("%1[%2]").arg(name).arg(bit)] += char('0' + (i >> bit & 1));
    return waves;
}

} // namespace Stimulus
