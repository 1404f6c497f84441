#pragma once

#include "vxsys/Named.h"

#include <cstdint>

namespace vx::io::detail {

/// Stores in `note` what identifies the bytes of an entry later; the note must have its start and length. A short entry
/// is stored itself. A longer one gets a 64-bit checksum for each block. Blocks end at page boundaries of the file,
/// because that is where the write of a killed process stops.
void writeProof(VXNamedSemNote& note, const signed char* bytes) noexcept;

/// Whether `count` bytes of `file` (a handle for reading) from the note's start on are proved to be the first bytes of
/// its entry. Also false if the file cannot be read, or if `count` ends inside a block.
bool isProved(const VXNamedSemNote& note, std::uint32_t file, std::int64_t count) noexcept;

} // namespace vx::io::detail
