#pragma once

#include <sstream>
#include <string>
#include <utility>

/// The values as one text with blanks between them, for one comparison. In braces they are computed in this order.
struct Told : std::string {
    template <class... Values>
    explicit Told(const Values&... values)
    {
        std::ostringstream text;
        const char* separator = "";
        ((text << std::exchange(separator, " ") << values), ...);
        assign(text.str());
    }
};
