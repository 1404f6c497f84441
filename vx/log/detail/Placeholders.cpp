#include "vx/log/detail/Placeholders.h"

#include <map>

namespace vx::log::detail {

namespace {

String placeholder(int number)
{
    String text = String::valueOf(number);
    text.prepend(u'{');
    text.append(u'}');
    return text;
}

} // namespace

String expandPlaceholders(const String& pattern, const collections::List<Object>& arguments)
{
    String text(pattern);
    std::map<int, int> numbersByPosition;
    for (int number = 0;; ++number) {
        const String wanted = placeholder(number);
        int position = text.indexOf(wanted);
        if (position < 0)
            break;
        if (number >= arguments.getSize())
            return text;
        for (; position >= 0; position = text.indexOf(wanted, position + wanted.getLength()))
            numbersByPosition[position] = number;
    }

    int from = 0;
    for (const auto& [position, number] : numbersByPosition) {
        const String wanted = placeholder(number);
        const Reference<Object> argument = arguments.get(number);
        const String value = argument != nullptr ? argument->toString() : String();
        const int place = text.indexOf(wanted, from);
        text.replace(place, wanted.getLength(), value);
        from = place + value.getLength();
    }
    return text;
}

} // namespace vx::log::detail
