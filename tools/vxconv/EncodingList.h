#pragma once

namespace vxconv {

/// Prints the encodings to standard output, with their code pages and aliases. Throws vx::Exception.
void listEncodings();

} // namespace vxconv
