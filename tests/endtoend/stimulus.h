#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// What the nets of a design did: for every net one '0' or '1' per sample of one clock.
using Waves = QMap<QString, QByteArray>;

namespace Stimulus {

/// The values just before each rising edge of `clock` in a VCD as Icarus writes it, one declaration
/// or change a line. Names are relative to the scope two levels down (testbench, design), joined
/// with '.'; a vector gives one wave for each bit, name[bit]. x and z are 0.
Waves readVcd(QByteArray const& text, QString const& clock);

/// A VCD, in scope bench.dut, whose clock "clk" rises once for each sample of the waves.
QByteArray toVcd(Waves const& waves);

/// `count` samples of a bus of `width` nets, name[bit], that counts up from 0.
Waves counter(QString const& name, int width, int count);

} // namespace Stimulus
