#include "Texts.h"

#include <vx/Exception.h>
#include <vx/io/BufferedReader.h>
#include <vx/io/FileInputStream.h>
#include <vx/io/InputStreamReader.h>

namespace vx::components {

namespace {

/// `text` with each backslash and the character after it replaced by what they mean.
String unescape(const String& text)
{
    String plain;
    const std::u16string_view units = text.view();
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i] != u'\\' || i + 1 == units.size()) {
            plain.append(units[i]);
            continue;
        }
        const char16_t escaped = units[++i];
        plain.append(escaped == u'n' ? u'\n' : escaped == u't' ? u'\t' : escaped);
    }
    return plain;
}

} // namespace

Reference<collections::StringHashMap> readTexts(const String& path)
{
    const Reference<io::InputStream> file(new io::FileInputStream(path));
    const Reference<io::Reader> characters(new io::InputStreamReader(file.get(), u"UTF-8", 4096));
    const Reference<io::BufferedReader> lines(new io::BufferedReader(characters.get(), 4096));
    const Reference<collections::StringHashMap> texts(new collections::StringHashMap);
    int number = 0;
    for (String line; lines->readLine(line) >= 0;) {
        ++number;
        line.trim();
        if (line.isEmpty() || line[0] == u'#')
            continue;
        const int split = line.indexOf(u'=');
        if (split < 0)
            throw Exception(String(path).append(u": no \"=\" in line ").append(String::valueOf(number)));
        String key = line.substring(0, split);
        String text = line.substring(split + 1);
        key.trim();
        text.trim();
        texts->put(key, Reference<String>(new String(unescape(text))).get());
    }
    return texts;
}

} // namespace vx::components
