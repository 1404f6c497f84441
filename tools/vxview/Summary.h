#pragma once

#include "Moment.h"
#include "Record.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vxview {

/// Counts entries by the value of a field, or by minute, hour or day of their time.
class Summary {
public:
    /// `by` is "minute", "hour", "day" or the name of a field.
    explicit Summary(std::string by);

    void add(Record& record);
    /// A table with bars, the bars in characters of ASCII unless `isUtf8`. At most `width` characters a line.
    std::string print(bool isUtf8, std::size_t width) const;

private:
    /// More groups than a person can read are not kept apart.
    static constexpr std::size_t MOST_GROUPS = 10'000;

    std::string groupOf(Record& record) const;

    const std::string m_by;
    const std::size_t m_timeLength; ///< of the text of a period; 0 for a field
    std::map<std::string, std::int64_t, std::less<>> m_groups;
    std::int64_t m_others = 0; ///< entries of groups beyond the limit
    std::int64_t m_entries = 0;
    std::int64_t m_torn = 0;
    std::int64_t m_foreign = 0;
    std::optional<Moment> m_first;
    std::optional<Moment> m_last;
};

} // namespace vxview
