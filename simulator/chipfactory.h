#pragma once

#include "simulator/chip.h"

#include <QString>

#include <memory>

namespace VEK::Simulator {

struct Bench;

/// Loads the design and the stimulus of a bench and makes the chip that they stand for, powered
/// off. Null with an `error` for a design or a stimulus that can't be used; `warning` is empty, or
/// tells what of the stimulus is missing. The bench must name a design.
std::unique_ptr<Chip> buildChip(Bench const& bench, QString& warning, QString& error);

} // namespace VEK::Simulator
