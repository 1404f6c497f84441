#include "Loaded.h"
#include "vx/Exception.h"
#include "vx/i18n/StringBundle.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/IChannel.h"
#include "vx/net/Transport.h"
#include "vx/util/PropertySet.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace vx {
namespace {

_GUID bundleClass(std::uint16_t index)
{
    return {0x2C7E94D8, static_cast<std::uint16_t>(0x5B10 + index), 0x4F63,
        {0xA7, 0x45, 0x91, 0x0E, 0x6B, 0xF2, 0x38, 0xCD}};
}

TEST(BundleComponent, SaysTheSameInEachLanguage)
{
    const LoadedLibrary library(COMPONENTS "/vxbundles.so");
    const LoadedClass english(library, u"Velmaris.Tools.StringBundle.en_US", bundleClass(0));
    const LoadedClass german(library, u"Velmaris.Tools.StringBundle.de", bundleClass(1));
    const LoadedClass french(library, u"Velmaris.Tools.StringBundle.fr", bundleClass(2));
    std::set<std::u16string> keys;
    std::set<std::u16string> greetings;
    for (const char16_t* name : {u"en_US", u"de_AT@euro", u"fr_CA"}) {
        const Reference<i18n::Locale> locale(new i18n::Locale(name));
        const Reference<i18n::StringBundle> bundle = i18n::StringBundle::getBundle(u"Tools", locale.get());
        EXPECT_EQ(bundle->getLocale()->getLanguage(), locale->getLanguage());
        greetings.insert(std::u16string(bundle->getString(u"greeting")));
        EXPECT_THROW(bundle->getString(u"absent"), Exception);
        std::set<std::u16string> own;
        const Reference<const collections::Collection<String>> listed = bundle->getKeys();
        for (const Reference<String>& key : *listed)
            own.insert(std::u16string(*key));
        if (keys.empty())
            keys = own;
        EXPECT_EQ(own, keys) << String(name);
    }
    EXPECT_EQ(greetings.size(), 3U);
    EXPECT_TRUE(greetings.contains(u"Grüß Gott! Dieser Text kommt aus einem Bündel."));
    EXPECT_TRUE(keys.contains(u"greeting"));
}

constexpr _GUID TCP_CLASS {0x84B1D3E6, 0x0C29, 0x4A5D, {0xB8, 0x72, 0x6F, 0x15, 0x9E, 0x43, 0xD0, 0x2B}};

std::string readFrom(io::IChannel& channel, unsigned int length)
{
    io::ByteBuffer buffer(length, io::VX_ENDIAN_LITTLE, false);
    while (buffer.remaining() > 0 && channel.read(buffer) >= 0) { }
    return {reinterpret_cast<const char*>(buffer.getConstBuffer()), buffer.getPosition()};
}

void writeTo(io::IChannel& channel, const std::string& text)
{
    io::ByteBuffer buffer(reinterpret_cast<const signed char*>(text.data()), static_cast<unsigned int>(text.size()),
        io::VX_ENDIAN_LITTLE);
    while (buffer.remaining() > 0)
        channel.write(buffer);
}

TEST(TcpComponent, ConnectsTwoParties)
{
    const LoadedLibrary library(COMPONENTS "/vxtcp.so");
    const LoadedClass tcp(library, u"Velmaris.Transport.Tcp", TCP_CLASS);
    for (const char16_t* host : {u"", u"127.0.0.1", u"*"}) {
        const Reference<net::ITransport> transport = net::Transport::get(u"Velmaris.Transport.Tcp");
        util::PropertySet properties;
        if (*host != 0)
            properties.set(u"host", host);
        const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
        EXPECT_NE(properties.get(u"port"), u"0") << "the set is told which one it is";

        util::PropertySet there;
        there.set(u"port", properties.get(u"port"));
        if (String(host) == u"*")
            there.set(u"host", u"localhost");
        const Reference<net::IConnector> connector = transport->createConnector(there);
        const Reference<io::IChannel> near = connector->connect();
        Reference<io::IChannel> far = acceptor->accept();
        writeTo(*near, "question");
        EXPECT_EQ(readFrom(*far, 8), "question");
        writeTo(*far, "answer");
        far = nullptr;
        EXPECT_EQ(readFrom(*near, 100), "answer") << "and then the end";
    }
}

TEST(TcpComponent, TellsWhatItCannotDo)
{
    const LoadedLibrary library(COMPONENTS "/vxtcp.so");
    const LoadedClass tcp(library, u"Velmaris.Transport.Tcp", TCP_CLASS);
    const Reference<net::ITransport> transport = net::Transport::get(u"Velmaris.Transport.Tcp");
    const auto resultOf = [&](const char16_t* key, const char16_t* value, bool listens) {
        util::PropertySet properties;
        properties.set(key, value);
        try {
            if (listens)
                transport->createAcceptor(properties);
            else
                transport->createConnector(properties);
            return RESULT_OK;
        } catch (const ResultException& failure) {
            return failure.getResult();
        }
    };
    for (const bool listens : {false, true}) {
        for (const char16_t* port : {u"", u"x", u"80x", u"-1", u"65536"})
            EXPECT_EQ(resultOf(u"port", port, listens), RESULT_INVALID_ARGUMENT) << String(port);
        EXPECT_EQ(resultOf(u"timeout", u"soon", listens), RESULT_INVALID_ARGUMENT);
    }
    EXPECT_EQ(resultOf(u"port", u"0", false), RESULT_INVALID_ARGUMENT) << "there is nothing to connect to";
    EXPECT_LT(resultOf(u"host", u"no such host.invalid", true), 0);

    util::PropertySet properties;
    const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
    properties.set(u"timeout", u"1");
    const Reference<io::IChannel> channel = transport->createConnector(properties)->connect();
    io::ByteBuffer buffer(1, io::VX_ENDIAN_LITTLE, false);
    EXPECT_THROW(channel->read(buffer), ResultException) << "nobody speaks";
}

} // namespace
} // namespace vx
