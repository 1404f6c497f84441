/// Shows what components add to a program that knows none of them: encodings, translated messages, and a connection.
/// components LOCALE [LIBRARY...]
///
/// The libraries named are registered first, in the store that VXSYS4_REGISTRY names.

#include <vx/vxlib4.h>
#include <vxsys/Component.h>

#include <iostream>
#include <string>

using namespace vx;

namespace {

void registerLibraries(char** paths)
{
    for (; *paths != nullptr; ++paths) {
        throwIfFailed(VXComRegisterLibrary(TerminatedText(String(*paths, -1, u"UTF-8"))));
        std::cout << "registered " << *paths << '\n';
    }
}

/// Prints the bytes of `text` in an encoding that a component supplies, and what they give back.
void convert(const String& text, const char16_t* encoding)
{
    const std::string bytes = text.getBytes(encoding);
    std::cout << String(encoding) << ':';
    for (const char byte : bytes) {
        constexpr char DIGITS[] = "0123456789ABCDEF";
        std::cout << ' ' << DIGITS[static_cast<unsigned char>(byte) >> 4] << DIGITS[byte & 0xF];
    }
    std::cout << " = " << String(bytes.c_str(), -1, encoding) << '\n';
}

/// Writes into a channel, so that whatever writes to a stream can write there.
class ChannelOutputStream : public io::OutputStream {
public:
    explicit ChannelOutputStream(io::IChannel* channel)
        : m_channel(channel)
    {
    }

    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        io::ByteBuffer buffer(bytes, static_cast<unsigned int>(length), io::VX_ENDIAN_LITTLE);
        while (buffer.remaining() > 0)
            m_channel->write(buffer);
    }

private:
    Reference<io::IChannel> m_channel;
};

/// Logs a message of `messages` to one end of a connection and prints what arrives at the other.
void logOverTransport(const i18n::StringBundle& messages, const String& text, const char16_t* encoding)
{
    const Reference<net::ITransport> transport = net::Transport::get(u"Velmaris.Transport.Tcp");
    util::PropertySet properties; // without a port: the acceptor picks one and tells it here
    const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
    Reference<io::IChannel> near = transport->createConnector(properties)->connect();
    const Reference<io::IChannel> far = acceptor->accept();

    {
        const Reference<log::Logger> logger(log::Logger::create(u"example"));
        const Reference<io::Writer> writer(
            new io::OutputStreamWriter(new ChannelOutputStream(near.get()), u"UTF-8", 256));
        logger->addProcessor(log::BasicLogWriter::create(writer.get()).get());
        log::StringBundleLogger translated(&messages, logger.get());
        const Reference<collections::List<Object>> arguments(
            new collections::List<Object>(new collections::vorb::ArrayList));
        arguments->add(new String(String::valueOf(text.getLength())));
        arguments->add(new String(encoding));
        translated.log(1, u"converted", *arguments);
    }
    near = nullptr; // what closes the connection

    io::ByteBuffer received(1024, io::VX_ENDIAN_LITTLE, false);
    while (received.remaining() > 0 && far->read(received) >= 0) { }
    std::cout << "arrived: "
              << std::string_view(reinterpret_cast<const char*>(received.getConstBuffer()), received.getPosition())
              << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cerr << "Usage: components LOCALE [LIBRARY...]\n";
        return 2;
    }
    try {
        registerLibraries(argv + 2);
        const String japanese(u"日本語のテキスト");
        convert(japanese, u"CP932");
        convert(japanese, u"EUC-JP");
        convert(u"Съешь же ещё этих мягких булок", u"windows-1251");
        convert(u"Съешь же ещё", u"CP866");

        const Reference<i18n::Locale> locale(new i18n::Locale(TerminatedText(String(argv[1]))));
        const Reference<i18n::StringBundle> messages = i18n::StringBundle::getBundle(u"Tools", locale.get());
        std::cout << messages->getLocale()->toString() << ": " << messages->getString(u"greeting") << '\n';
        logOverTransport(*messages, japanese, u"CP932");
    } catch (const Exception& failure) {
        std::cerr << "components: " << explain(failure) << '\n';
        return 1;
    }
}
