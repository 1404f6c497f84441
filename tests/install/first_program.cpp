#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    String text;
    text.format(u"{0} speaks {1}", -1, u"vxlib4", u"Ελληνικά, 中文 and 😀");

    const Reference<io::ByteArrayOutputStream> bytes(new io::ByteArrayOutputStream);
    const Reference<io::PrintWriter> out(
        new io::PrintWriter(new io::OutputStreamWriter(bytes.get(), u"UTF-16BE", 256), false));
    out->println(text);
    out->println(text.getLength());
    out->flush();

    const Reference<io::BufferedReader> in(new io::BufferedReader(
        new io::InputStreamReader(new io::ByteArrayInputStream(bytes->getBytes(), bytes->getSize()), u"UTF-16BE", 256),
        256));
    for (String line; in->readLine(line) >= 0;)
        std::cout << line << '\n';
}
