#pragma once

#include <cstdint>
#include <span>

namespace vx::text::charset::detail {

/// A name of an encoding for which the library has classes.
struct CodecRow {
    const char16_t* name;
    std::uint32_t codePage; ///< 0: none
    const char16_t* canonicalName; ///< null: `name` is the canonical one
    const char16_t* encoderClass;
    const char16_t* decoderClass;
};

/// An encoding that needs a component.
struct CodePageRow {
    const char16_t* name;
    std::uint32_t codePage;
};

/// Another name of such an encoding.
struct AliasRow {
    const char16_t* alias;
    const char16_t* target;
};

std::span<const CodecRow> codecTable() noexcept;
std::span<const CodePageRow> codePageTable() noexcept;
std::span<const AliasRow> aliasTable() noexcept;

} // namespace vx::text::charset::detail
