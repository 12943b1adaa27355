#pragma once

#include <QString>

/// What device models change about a core. Lists of the simulator's own, so that a wrong one of the
/// host's shows in a capture.
namespace VEK::Simulator {

/// A standard core takes one record more behind the trigger than its register says.
bool takesOneMore(QString const& device);

/// A lite core of implementation 0 stores a sample one address further.
bool rotatesSamples(QString const& device);

} // namespace VEK::Simulator
