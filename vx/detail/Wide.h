#pragma once

namespace vx::detail {

// `typedef` and not `using`: both compilers accept the extension here without a warning.
__extension__ typedef unsigned __int128 Wide;

} // namespace vx::detail
