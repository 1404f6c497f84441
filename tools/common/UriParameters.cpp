#include "UriParameters.h"

#include "Failure.h"

#include <algorithm>
#include <charconv>
#include <strings.h>

namespace vxtools {

namespace {

constexpr Message NO_PARAMETER {u"tools.no-parameter", "\"{0}\" has an unknown parameter {1}; there are {2}"};
constexpr Message NO_PARAMETER_NUMBER {
    u"tools.no-parameter-number", "\"{0}\": {1} is a whole number from {2} to {3}, not \"{4}\""};
constexpr Message NO_PARAMETER_VALUE {u"tools.no-parameter-value", "\"{0}\": {1} is one of {2}, not \"{3}\""};

bool isSame(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && ::strncasecmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace

UriParameters::UriParameters(
    const std::string& text, const vx::net::UriReference& uri, const std::vector<std::string_view>& names)
    : m_text(text)
    , m_parameters(uri.getParameters())
{
    for (const vx::net::UriReference::Parameter& each : m_parameters) {
        if (std::ranges::any_of(names, [&](std::string_view name) { return isSame(name, each.name); }))
            continue;
        std::string known;
        for (const std::string_view name : names)
            known.append(known.empty() ? "" : ", ").append(name);
        throw UsageError(NO_PARAMETER(text, each.name, known));
    }
}

std::optional<std::string> UriParameters::find(std::string_view name) const
{
    std::optional<std::string> value;
    for (const vx::net::UriReference::Parameter& each : m_parameters) {
        if (isSame(each.name, name))
            value = each.value;
    }
    return value;
}

std::optional<int> UriParameters::findNumber(std::string_view name, int least, int most) const
{
    const std::optional<std::string> value = find(name);
    if (!value)
        return std::nullopt;
    int number = 0;
    const char* const end = value->data() + value->size();
    const auto [stop, error] = std::from_chars(value->data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw UsageError(NO_PARAMETER_NUMBER(m_text, std::string(name), least, most, *value));
    return number;
}

void UriParameters::requireOneOf(std::string_view name, std::string_view values) const
{
    const std::optional<std::string> value = find(name);
    for (std::size_t begin = 0; value && begin < values.size();) {
        const std::size_t end = std::min(values.find(',', begin), values.size());
        if (values.substr(begin, end - begin) == *value)
            return;
        begin = std::min(end + 2, values.size());
    }
    if (value)
        throw UsageError(NO_PARAMETER_VALUE(m_text, std::string(name), std::string(values), *value));
}

} // namespace vxtools
