#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const Reference<Object> object(Class::forName(u"CVXString")->createInstance());
    String text(u"{0} speaks {1}");
    String greeting;
    greeting.format(text, u"vxlib4", u"UTF-16");

    const Reference<io::ByteArrayOutputStream> bytes(new io::ByteArrayOutputStream);
    const Reference<io::OutputStreamWriter> writer(new io::OutputStreamWriter(bytes.get(), u"UTF-8", 256));
    writer->write(greeting);
    writer->flush();
    if (bytes->toString(u"UTF-8") != greeting || !object->equals(String()))
        return 1;
    std::cout << greeting << '\n';
}
