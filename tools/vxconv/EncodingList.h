#pragma once

namespace vxconv {

/// Prints the encodings to standard output, with their code pages. Throws vx::Exception.
void listEncodings();

} // namespace vxconv
