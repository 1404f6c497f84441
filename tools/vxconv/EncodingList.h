#pragma once

namespace vxconv {

/// Prints the encodings to standard output, with their code pages and aliases. Throws Failure.
void listEncodings();

} // namespace vxconv
