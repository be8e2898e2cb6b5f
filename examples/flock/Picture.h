// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef FLOCK_PICTURE_H
#define FLOCK_PICTURE_H

#include <gentra/gentra.h>

#include <string>

namespace Flock {

/// Writes a PNG of the box seen from above, the birds as darts along their velocity and coloured by it, the
/// leaders as discs. False when the file cannot be written.
[[nodiscard]] bool WritePicture(std::string const& file, Gentra::MemberPool& birds, Gentra::MemberPool& leaders,
                                float box);

} // namespace Flock

#endif
