#include "Summary.h"

#include "Filter.h"
#include "Printer.h"
#include "Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace vxview {

namespace {

constexpr char MISSING[] = "(none)";
constexpr std::size_t LONGEST_NAME = 40; // in characters

std::size_t timeLengthOf(std::string_view by)
{
    return by == "day" ? 10 : by == "hour" ? 13 : by == "minute" ? 16 : 0;
}

std::size_t lengthOf(std::string_view text)
{
    std::size_t length = 0;
    forEachCharacter(text, [&](char32_t, std::string_view) { ++length; });
    return length;
}

std::string shortened(std::string_view text)
{
    if (lengthOf(text) <= LONGEST_NAME)
        return std::string(text);
    std::string begin;
    std::size_t length = 0;
    forEachCharacter(text, [&](char32_t, std::string_view bytes) {
        if (++length <= LONGEST_NAME - 3)
            begin += bytes;
    });
    return begin + "...";
}

/// A bar whose length is `share` of `width`, in eighths of a character where there are such.
std::string barOf(double share, std::size_t width, bool isUtf8)
{
    static constexpr std::string_view EIGHTHS[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const auto eighths = static_cast<std::size_t>(std::lround(share * static_cast<double>(width) * 8));
    std::string bar;
    for (std::size_t index = 0; index < eighths / 8; ++index)
        bar += isUtf8 ? "█" : "#";
    if (isUtf8)
        bar += EIGHTHS[eighths % 8];
    if (bar.empty())
        bar = isUtf8 ? EIGHTHS[1] : "#"; // a group is never empty
    return bar;
}

} // namespace

Summary::Summary(std::string by)
    : m_by(std::move(by))
    , m_timeLength(timeLengthOf(m_by))
{
}

void Summary::add(Record& record)
{
    switch (record.getKind()) {
    case Record::Kind::TORN:
        ++m_torn;
        return;
    case Record::Kind::FOREIGN:
        ++m_foreign;
        return;
    case Record::Kind::MARKUP:
        return;
    case Record::Kind::ENTRY:
        break;
    }
    ++m_entries;
    if (const std::optional<Moment> time = timeOf(record)) {
        m_first = std::min(m_first.value_or(*time), *time);
        m_last = std::max(m_last.value_or(*time), *time);
    }
    const std::string group = groupOf(record);
    const auto found = m_groups.find(group);
    if (found != m_groups.end())
        ++found->second;
    else if (m_groups.size() < MOST_GROUPS)
        m_groups.emplace(group, 1);
    else
        ++m_others;
}

std::string Summary::groupOf(Record& record) const
{
    if (m_timeLength == 0)
        return std::string(record.find(m_by).value_or(MISSING));
    const std::optional<Moment> time = timeOf(record);
    return time ? localText(*time, m_timeLength) : MISSING;
}

std::string Summary::print(bool isUtf8, std::size_t width) const
{
    std::vector<std::pair<std::string, std::int64_t>> rows(m_groups.begin(), m_groups.end());
    // Numbers such as levels in their order, other values by how often they occur, periods as they follow each other.
    const auto isNumber = [](const auto& row) { return isInteger(row.first) || row.first == MISSING; };
    const auto numberOf = [](const auto& row) {
        double number = std::numeric_limits<double>::infinity(); // what is missing stands last
        std::from_chars(row.first.data(), row.first.data() + row.first.size(), number);
        return number;
    };
    if (std::ranges::all_of(rows, isNumber))
        std::ranges::stable_sort(rows, {}, numberOf);
    else if (m_timeLength == 0)
        std::ranges::stable_sort(rows, std::ranges::greater(), [](const auto& row) { return row.second; });
    if (m_others > 0)
        rows.emplace_back("(others)", m_others);

    std::string text = std::to_string(m_entries) + " entries";
    if (m_first)
        text += " from " + localText(*m_first, 19) + " to " + localText(*m_last, 19);
    text += '\n';
    if (m_torn > 0)
        text += std::to_string(m_torn) + " torn\n";
    if (m_foreign > 0)
        text += std::to_string(m_foreign) + " foreign lines\n";
    if (rows.empty())
        return text;

    std::size_t nameWidth = lengthOf(m_by);
    std::int64_t most = 0;
    for (auto& [name, count] : rows) {
        std::string visible;
        appendVisible(name, visible);
        name = shortened(visible);
        nameWidth = std::max(nameWidth, lengthOf(name));
        most = std::max(most, count);
    }
    const std::size_t countWidth = std::max(std::to_string(most).size(), std::size_t {7});
    const std::size_t used = nameWidth + countWidth + 12;
    const std::size_t barWidth = width > used + 10 ? width - used : 10;
    const auto pad = [&text](std::size_t count) { text.append(count, ' '); };
    text += '\n' + m_by;
    pad(nameWidth - lengthOf(m_by) + 2 + countWidth - 7);
    text += "entries   share\n";
    for (const auto& [name, count] : rows) {
        const double share = static_cast<double>(count) / static_cast<double>(m_entries);
        char percent[16];
        std::snprintf(percent, sizeof percent, "%5.1f %%", share * 100);
        const std::string number = std::to_string(count);
        text += name;
        pad(nameWidth - lengthOf(name) + 2 + countWidth - number.size());
        text += number + ' ' + percent + ' '
            + barOf(static_cast<double>(count) / static_cast<double>(most), barWidth, isUtf8) + '\n';
    }
    return text;
}

} // namespace vxview
