#pragma once

namespace VEK {

/// Makes this library's images available under ":/vek/image/". A static library's resources are not
/// there by themselves; whatever shows an image calls this first, so that a host need not.
void initImages();

} // namespace VEK
