#include "EncodingList.h"

#include "common/Program.h"

#include <vx/Reference.h>
#include <vx/Result.h>
#include <vx/TerminatedText.h>
#include <vx/text/charset/ByteToCharConverter.h>
#include <vx/text/charset/CharsetException.h>
#include <vx/text/charset/EncInfo.h>
#include <vx/text/charset/EncodingNames.h>

namespace vxconv {

using namespace vx;

namespace {

bool hasConverter(const char16_t* encoding)
{
    using text::charset::ByteToCharConverter;
    try {
        return Reference<ByteToCharConverter>(ByteToCharConverter::getConverter(encoding)) != nullptr;
    } catch (const text::charset::UnknownEncodingException&) {
        return false;
    }
}

} // namespace

void listEncodings()
{
    constexpr int NAME_WIDTH = 12;
    constexpr int COLUMNS = 18;

    String list;
    for (const text::charset::EncodingNames& encoding : text::charset::getEncodingNames()) {
        const TerminatedText name(encoding.name);
        if (!hasConverter(name))
            continue;
        String line(encoding.name);
        VXEncInfo info;
        if (VXGetEncInfoByName(name, &info) == RESULT_OK) {
            line.resize(NAME_WIDTH, u' ');
            line += String::valueOf(info.codePage);
        }
        if (!encoding.aliases.empty())
            line.resize(COLUMNS, u' ');
        for (const String& alias : encoding.aliases)
            line.append(u" ").append(alias);
        list.append(line).append(u'\n');
    }
    vxtools::print(list.toUtf8());
}

} // namespace vxconv
