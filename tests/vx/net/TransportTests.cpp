#include "tests/Slots.h"
#include "tests/vx/Common.h"
#include "tests/vx/Offer.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/Channels.h"
#include "vx/net/Transport.h"
#include "vx/net/vorb/AbstractTransport.h"
#include "vx/net/vorb/VorbTransport.h"
#include "vx/util/vorb/VorbPropertySet.h"

namespace vx::net {
namespace {

using util::PropertySet;
using util::vorb::IPropertySet;
using vorb::IVXAcceptor;
using vorb::IVXConnector2;
using vorb::IVXTransport;

TEST(Transport, KeepsTheOrderOfVirtualOperations)
{
    expectSlots("IVXTransport", 3, {slotOf(&IVXTransport::CreateAcceptor), slotOf(&IVXTransport::CreateConnector)});
    expectSlots("IVXAcceptor", 3, {slotOf(&IVXAcceptor::Accept)});
    expectSlots("IVXConnector2", 3, {slotOf(&IVXConnector2::Connect)});
    expectSlots("ITransport", 3, {slotOf(&ITransport::createConnector), slotOf(&ITransport::createAcceptor)});
    expectSlots("IAcceptor", 3, {slotOf(&IAcceptor::accept)});
    expectSlots("IConnector", 3, {slotOf(&IConnector::connect)});
}

Reference<io::IChannel> channelOf(const char* text)
{
    const Reference<io::InputStream> stream(
        new io::ByteArrayInputStream(reinterpret_cast<const signed char*>(text), 1));
    return io::Channels::adaptStreams(stream.get(), nullptr);
}

struct Acceptor : vorb::AbstractAcceptor {
    Reference<io::IChannel> accept() override { return channelOf("a"); }
};

struct Connector : vorb::AbstractConnector {
    Reference<io::IChannel> connect() override { return channelOf("c"); }
};

/// A transport as a component library implements it. It records the properties that it got in `m_seen`.
struct TestTransport : vorb::AbstractTransport {
    Reference<IConnector> createConnector(const PropertySet& properties) override
    {
        look(properties);
        if (m_fails)
            throw ResultException(RESULT_END_OF_FILE);
        return m_isEmpty ? nullptr : new Connector;
    }
    Reference<IAcceptor> createAcceptor(const PropertySet& properties) override
    {
        look(properties);
        return new Acceptor;
    }

    void look(const PropertySet& properties)
    {
        EXPECT_EQ(typeid(properties), typeid(util::vorb::VorbPropertySet));
        m_seen = properties.get(u"host");
        EXPECT_FALSE(properties.hasProperty(u"absent"));
        EXPECT_EQ(resultOf([&] { properties.getKeys(); }), RESULT_NOT_IMPLEMENTED);
        const_cast<PropertySet&>(properties).set(u"seen", u"yes");
    }

    String m_seen;
    bool m_fails = false;
    bool m_isEmpty = false;
};

/// The next byte of `channel`.
int byteOf(io::IChannel& channel)
{
    io::ByteBuffer buffer(1, io::VX_ENDIAN_LITTLE, false);
    EXPECT_EQ(channel.read(buffer), 1);
    return buffer.get(0U);
}

TEST(Transport, BridgesBothFacesOfAComponent)
{
    const Reference<TestTransport> component(new TestTransport);
    const Offer offer(u"Test.Transport", [&] { return component->GetUnknown(); });
    const Reference<ITransport> transport = Transport::get(u"Test.Transport");
    PropertySet properties;
    properties.set(u"host", u"here");

    const Reference<IConnector> connector = transport->createConnector(properties);
    EXPECT_EQ(byteOf(*connector->connect()), 'c');
    EXPECT_EQ(component->m_seen, u"here");
    EXPECT_EQ(properties.get(u"seen"), u"yes") << "what the component sets shows here";
    const Reference<IAcceptor> acceptor = transport->createAcceptor(properties);
    EXPECT_EQ(byteOf(*acceptor->accept()), 'a');

    component->m_fails = true;
    EXPECT_EQ(resultOf([&] { transport->createConnector(properties); }), RESULT_END_OF_FILE);
    component->m_fails = false;
    component->m_isEmpty = true;
    EXPECT_EQ(resultOf([&] { transport->createConnector(properties); }), RESULT_FAIL);
}

TEST(Transport, TellsWhyThereIsNone)
{
    EXPECT_EQ(resultOf([] { Transport::get(u"Test.Nobody"); }), RESULT_CLASS_NOT_AVAILABLE);
    const Offer other(u"Test.Other", [] { return (new Object)->GetUnknown(); });
    EXPECT_EQ(resultOf([] { Transport::get(u"Test.Other"); }), RESULT_NO_INTERFACE);
}

} // namespace
} // namespace vx::net
