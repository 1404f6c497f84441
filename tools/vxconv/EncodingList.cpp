#include "EncodingList.h"

#include <vx/Exception.h>
#include <vx/Reference.h>
#include <vx/Result.h>
#include <vx/TerminatedText.h>
#include <vx/io/BufferedWriter.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/io/PrintWriter.h>
#include <vx/io/StdioOutputStream.h>
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

    const Reference<io::OutputStreamWriter> encoder(
        new io::OutputStreamWriter(new io::StdioOutputStream, u"UTF-8", 4096));
    const Reference<io::PrintWriter> out(new io::PrintWriter(encoder.get(), false));
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
        out->println(line);
    }
    out->flush();
}

} // namespace vxconv
