#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxview {

/// Milliseconds since 1970-01-01T00:00:00Z.
using Moment = std::int64_t;

/// The time of an entry: RFC 3339, or date and time as the locale of the environment writes them. Without an offset it is
/// local time.
std::optional<Moment> momentOf(std::string_view text);

/// A time as a person writes it: "10:00", "10:00:30" (today), "today", "yesterday", "2026-11-19", "2026-11-19 10:00", RFC
/// 3339, or as long before `now` as "90s", "30m", "2h", "7d" say.
std::optional<Moment> momentFrom(const std::string& text, Moment now);
/// "90s", "30m", "2h", "7d" in milliseconds.
std::optional<std::int64_t> durationFrom(std::string_view text);

Moment now();

/// RFC 3339 in local time with `length` characters: 10 for the date, 13 up to the hour, 16 up to the minute, 19 up to the
/// second.
std::string localText(Moment moment, std::size_t length);

} // namespace vxview
