#pragma once

#include "vxsys/File.h"
#include "vxsys/Named.h"

#include <cstdint>

namespace vx::io::detail {

/// Writes into `note` by what the bytes of an entry can be known again, once its start and length stand there. A short entry
/// is kept as it is. Of a longer one each block has a checksum of 64 bits; blocks end where pages of the file end, because a
/// killed process stops writing there.
void writeProof(VXNamedSemNote& note, const signed char* bytes) noexcept;

/// Whether `count` bytes of `file` (a handle for reading) from the note's start on are proved to be the first ones of its entry.
/// False also where the file cannot be read, or where `count` ends inside a block.
bool isProved(const VXNamedSemNote& note, std::uint32_t file, std::int64_t count) noexcept;

} // namespace vx::io::detail
