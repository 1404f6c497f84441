#pragma once

#include "tests/vx/Common.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"

namespace vx::text::charset {

/// The result of one call of `convert` for `text`, which begins at index 1, with `room` units from index 1 on.
template <class Converter, class In, class Out>
struct Run {
    Run(Converter& converter, const std::basic_string<In>& text, std::int32_t room = 100)
        : output(static_cast<std::size_t>(room) + 1, Out {'#'})
    {
        using Source = std::conditional_t<sizeof(In) == 1, signed char, char16_t>;
        using Target = std::conditional_t<sizeof(Out) == 1, signed char, char16_t>;
        const std::basic_string<In> source = In {'#'} + text;
        std::int32_t position = 1, written = 1;
        try {
            const std::int32_t stored = converter.convert(reinterpret_cast<const Source*>(source.data()), &position,
                static_cast<std::int32_t>(source.size()), reinterpret_cast<Target*>(output.data()), &written, room + 1);
            const bool countsUnits = sizeof(Out) == 1 && String(converter.getEncodingName()).startsWith(u"UTF-16");
            EXPECT_EQ(stored * (countsUnits ? 2 : 1), written - 1);
        } catch (const Exception& thrown) {
            const bool isUnmappable
                = thrown.getResult() == RESULT_UNMAPPABLE_CHARACTER && thrown.getDescription().isEmpty();
            failure = isUnmappable ? "unmappable" : thrown.getDescription().toUtf8();
        }
        read = position - 1;
        output = output.substr(1, static_cast<std::size_t>(written - 1));
    }

    std::basic_string<Out> output;
    std::int32_t read;
    std::string failure;
};
using Decode = Run<ByteToCharConverter, char, char16_t>;
using Encode = Run<CharToByteConverter, char16_t, char>;

} // namespace vx::text::charset
