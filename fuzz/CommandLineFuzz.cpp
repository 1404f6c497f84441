#include "Law.h"
#include "vx/Exception.h"
#include "vx/util/CommandLineParser.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const vx::String text(reinterpret_cast<const char*>(data), static_cast<int>(size), u"ISO8859_1");
    vx::util::CommandLineParser parser;
    parser.defineOption(u"two", 2, u"a, b");
    parser.defineOption(u"none", 0, nullptr);
    parser.setIgnoreCase(size % 2 == 0);
    parser.parse(text);

    for (int index = 0; index < parser.getElementCount(); ++index) {
        const auto element = parser.getElement(index);
        VX_LAW(element->getPosition() == index);
        VX_LAW(static_cast<std::size_t>(element->getValueCount()) <= size + 2);
        for (int value = 0; value < element->getValueCount(); ++value) {
            element->getValueString(value);
            try {
                element->getValueLong(value);
                element->getValueDouble(value);
            } catch (const vx::Exception&) { // it is no number
            }
        }
        VX_LAW(element->getName().isEmpty() || parser.isPresent(element->getName().getData()));
    }
    for (int index = 0, last = -1; index < parser.getParameterCount(); ++index) {
        const auto parameter = parser.getParameter(index);
        VX_LAW(parameter->getName().isEmpty() && parameter->getValueCount() == 1);
        VX_LAW(parameter->getPosition() > last);
        last = parameter->getPosition();
    }
    return 0;
}
