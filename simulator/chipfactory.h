#pragma once

#include "simulator/chip.h"

#include <QString>

#include <memory>
#include <vector>

namespace VEK::Simulator {

struct Bench;

/// Loads the design and the stimulus of a bench and makes the chip that they stand for, powered
/// off. Null with an `error` for a design or a stimulus that can't be used; `warning` is empty, or
/// tells what of the stimulus is missing. The bench must name a design.
std::unique_ptr<Chip> buildChip(Bench const& bench, QString& warning, QString& error);

/// The samples that the stimulus of a bench has for each core of its design, in file order; the
/// same errors and warnings.
bool countSamples(Bench const& bench, std::vector<qint64>& samples, QString& warning,
                  QString& error);

} // namespace VEK::Simulator
