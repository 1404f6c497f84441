#include "tests/Slots.h"
#include "tests/vx/Offer.h"
#include "vx/Exceptions.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/Channels.h"
#include "vx/net/Transport.h"
#include "vx/net/vorb/AbstractTransport.h"
#include "vx/net/vorb/VorbTransport.h"
#include "vx/util/vorb/VorbPropertySet.h"

#include <gtest/gtest.h>

#include <string>

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

/// A transport as a component library writes it. What it saw of its properties stands in `m_seen`.
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

/// The byte that comes out of `channel`.
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
    const Offer exhausted(u"Test.Exhausted", []() -> IVXUnknown* { throw std::bad_alloc(); });
    EXPECT_EQ(resultOf([] { Transport::get(u"Test.Exhausted"); }), RESULT_OUT_OF_MEMORY);
}

/// A component that answers as it is told, and then gives nothing.
struct EmptyTransport : Component<IVXTransport> {
    std::int32_t CreateAcceptor(const IPropertySet*, const _GUID&, void**) override { return m_result; }
    std::int32_t CreateConnector(const IPropertySet*, const _GUID&, void**) override { return m_result; }
    std::int32_t m_result = RESULT_OK;
};
struct EmptyConnector : Component<IVXConnector2> {
    std::int32_t Connect(const _GUID&, void**) override { return m_result; }
    std::int32_t m_result = RESULT_OK;
};
struct EmptyAcceptor : Component<IVXAcceptor> {
    std::int32_t Accept(const _GUID&, void**) override { return m_result; }
    std::int32_t m_result = RESULT_OK;
};

TEST(Transport, TellsTheFailureOfAComponent)
{
    const Reference<EmptyTransport> component(new EmptyTransport);
    const Reference<EmptyConnector> nowhere(new EmptyConnector);
    const Reference<EmptyAcceptor> nobody(new EmptyAcceptor);
    const Offer offer(u"Test.Empty", [&] { return component->GetUnknown(); });
    const Reference<ITransport> transport = Transport::get(u"Test.Empty");
    const Reference<IConnector> connector(new vorb::VorbConnector(nowhere.get()));
    const Reference<IAcceptor> acceptor(new vorb::VorbAcceptor(nobody.get()));
    const PropertySet properties;
    for (const auto& [result, told] :
        {std::pair(RESULT_ACCESS_DENIED, RESULT_ACCESS_DENIED), std::pair(RESULT_OK, RESULT_POINTER)}) {
        component->m_result = nowhere->m_result = nobody->m_result = result;
        EXPECT_EQ(resultOf([&] { transport->createConnector(properties); }), told);
        EXPECT_EQ(resultOf([&] { transport->createAcceptor(properties); }), told);
        EXPECT_EQ(resultOf([&] { connector->connect(); }), told);
        EXPECT_EQ(resultOf([&] { acceptor->accept(); }), told);
    }
}

TEST(AbstractTransport, AnswersForItsComponentFaceAlone)
{
    const Reference<TestTransport> component(new TestTransport);
    const Reference<IVXTransport> face(static_cast<Object*>(component.get()));
    ASSERT_NE(face, nullptr);
    void* out = nullptr;
    EXPECT_EQ(face->QueryInterface(IVXComparable::IID, &out), RESULT_NO_INTERFACE);

    PropertySet properties;
    properties.set(u"host", u"there");
    const Reference<const IPropertySet> shared = PropertySet::getVorb(properties);
    Reference<IVXConnector2> connector;
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 4, shared.get(), &IVXConnector2::IID, connector.outVoid()), RESULT_OK);
    Reference<io::vorb::IVXChannel> channel;
    EXPECT_EQ(callSlot<std::int32_t>(connector.get(), 3, &io::vorb::IVXChannel::IID, channel.outVoid()), RESULT_OK);
    EXPECT_NE(channel, nullptr);
    out = &out;
    EXPECT_EQ(face->CreateAcceptor(shared.get(), IVXConnector2::IID, &out), RESULT_NO_INTERFACE);
    EXPECT_EQ(out, nullptr);
    component->m_fails = true;
    EXPECT_THROW(static_cast<void>(face->CreateConnector(shared.get(), IVXConnector2::IID, &out)), ResultException)
        << "nothing is caught here";
    EXPECT_EQ(face->CreateConnector(nullptr, IVXConnector2::IID, &out), RESULT_POINTER);
    EXPECT_EQ(connector->Connect(io::vorb::IVXChannel::IID, nullptr), RESULT_POINTER);
}

} // namespace
} // namespace vx::net
