#include "components/tls/IVXTls.h"
#include "tests/Threads.h"
#include "tests/components/LoadedLibrary.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Describe.h"
#include "vx/exec/Process.h"
#include "vx/net/SocketResult.h"
#include "vx/net/TcpSocket.h"
#include "vx/net/Transport.h"
#include "vx/util/PropertySet.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vx {
namespace {

using components::IVXTls;
using components::IVXTlsContext;
using components::IVXTlsSession;
using Properties = std::vector<std::pair<const char16_t*, std::string>>;

constexpr _GUID TLS_CLASS {0x9BA2A870, 0x2255, 0x4FD6, {0x96, 0xA8, 0xF7, 0xCA, 0xB5, 0xAE, 0x9C, 0x4C}};
constexpr const char16_t* TLS = u"Velmaris.Transport.Tls";

/// The program openssl as the other side of a connection.
class Stranger {
public:
    explicit Stranger(const std::string& arguments, const char* program = "openssl")
        : m_process(String(std::string_view(program)).getData(), String(std::string_view(arguments)).getData(), nullptr,
            nullptr, 1)
    {
    }

    /// What it prints before `text`, or all if it ends without it.
    std::string readUntil(std::string_view text)
    {
        std::string read;
        signed char byte = 0;
        while (m_output->read(&byte, 1) == 1) {
            read += static_cast<char>(byte);
            if (read.ends_with(text))
                return read.substr(0, read.size() - text.size());
        }
        return read;
    }
    void write(std::string_view text)
    {
        m_process.getOutputStream()->write(
            reinterpret_cast<const signed char*>(text.data()), static_cast<std::int32_t>(text.size()));
    }
    void closeInput() { m_process.closeInput(); }
    int join() { return m_process.join(); }

private:
    exec::Process m_process;
    Reference<io::InputStream> m_output = m_process.getInputStream();
};

class TlsComponent : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_folder = std::make_unique<Scratch>();
        std::filesystem::current_path(s_folder->getPath());
        Stranger script("-s", "bash");
        script.write(R"sh(
            exec >log 2>&1
            make() { # name, subject, days, options of x509, extension
                openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout $1.key -out request -subj "/CN=$2" &&
                openssl x509 -req -in request -set_serial $RANDOM -days $3 $4 -extfile <(echo "$5") -out $1.pem
            }
            by() { echo "-CA $1.pem -CAkey $1.key"; }
            for name in ca other; do
                make $name "$name authority" 9 "-signkey $name.key" basicConstraints=critical,CA:TRUE
            done
            make good localhost 9 "$(by ca)" subjectAltName=DNS:localhost,IP:127.0.0.1
            make named localhost 9 "$(by ca)" subjectAltName=DNS:localhost
            make old localhost -1 "$(by ca)" subjectAltName=DNS:localhost
            make client Ada 9 "$(by other)" extendedKeyUsage=clientAuth
            make past Ada -1 "$(by other)" extendedKeyUsage=clientAuth
            cat good.key good.pem >both.pem
            openssl pkey -in good.key -aes128 -passout pass:secret -out locked.key
            sed s/M/!/ good.pem >broken.pem
            touch empty.pem
        )sh");
        script.closeInput();
        script.join();
    }
    static void TearDownTestSuite() { s_folder.reset(); }

    static void set(util::PropertySet& set, const Properties& properties)
    {
        for (const auto& [key, value] : properties)
            set.set(key, String(value));
    }

    /// "" if `work` succeeds.
    static std::string failureOf(const std::function<void()>& work)
    {
        try {
            work();
            return "";
        } catch (const Exception& failure) {
            return explain(failure).toUtf8();
        }
    }

    static inline std::unique_ptr<Scratch> s_folder;

    LoadedLibrary m_library {COMPONENTS "/vxtls.so"};
    const Offer m_offer {TLS, creatorOf(m_library, TLS_CLASS)};
};

const Properties SERVER {{u"timeout", "60000"}, {u"cert", "good.pem"}, {u"key", "good.key"}};
const Properties CLIENT {{u"timeout", "60000"}, {u"ca", "ca.pem"}, {u"host", "localhost"}};

Properties operator+(Properties left, const Properties& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST_F(TlsComponent, ConnectsOnlyToTheServerThatItKnows)
{
    const char* const good = "-cert good.pem -key good.key";
    const char* const wantsClients = "-cert good.pem -key good.key -CAfile other.pem -Verify 1 -verify_return_error";
    const Properties known {{u"cert", "client.pem"}, {u"key", "client.key"}};
    const struct {
        std::string server;
        Properties properties;
        const char* failure;
    } cases[] = {
        {good, {}, ""},
        {good, {{u"host", "127.0.0.1"}}, ""},
        {std::string(good) + " -tls1_2", {}, ""},
        {wantsClients, known, ""},
        {std::string(wantsClients) + " -tls1_2", known, ""},
        {wantsClients, {}, "the peer refuses the connection: certificate required"},
        {std::string(wantsClients) + " -tls1_2", {}, "the peer refuses the connection: handshake failure"},
        {good, {{u"ca", "other.pem"}}, "the certificate CN = localhost is refused: it is from an unknown authority"},
        {"-cert old.pem -key old.key", {}, "the certificate CN = localhost is refused: it has expired"},
        {good, {{u"serverName", "example.org"}}, "the certificate CN = localhost is refused: it is for another host"},
        {"-cert named.pem -key named.key", {{u"host", "127.0.0.1"}}, "is refused: it is for another address"},
        {std::string(good) + " -tls1_1 -cipher DEFAULT@SECLEVEL=0", {},
            "the peer refuses the connection: protocol version"},
    };
    for (const auto& row : cases) {
        Stranger server("s_server -accept 127.0.0.1:0 -naccept 1 -rev " + row.server);
        server.readUntil("ACCEPT 127.0.0.1:");
        util::PropertySet properties;
        set(properties, CLIENT + row.properties);
        properties.set(u"port", String(server.readUntil("\n")));
        std::string answer;
        const std::string failure = failureOf([&] {
            const Reference<io::IChannel> channel = net::Transport::get(TLS)->createConnector(properties)->connect();
            writeTo(*channel, "hello\n");
            answer = readFrom(*channel, 6);
        });
        EXPECT_EQ(answer, *row.failure == 0 ? "olleh\n" : "") << row.server;
        EXPECT_TRUE(*row.failure == 0 ? failure.empty() : failure.find(row.failure) != failure.npos) << failure;
    }
}

TEST_F(TlsComponent, NamesTheFileThatItCannotUse)
{
    const struct {
        Properties properties;
        const char* failure;
    } cases[] = {
        {{}, "cert, the file of a certificate, is missing"},
        {{{u"cert", "absent.pem"}}, "absent.pem: no such file or directory"},
        {{{u"cert", "empty.pem"}}, "empty.pem: the file has no certificate in PEM form"},
        {{{u"cert", "broken.pem"}}, "broken.pem: a certificate cannot be read: "},
        {{{u"cert", "/dev/zero"}}, "/dev/zero: the file is too large for certificates and keys"},
        {{{u"cert", "good.pem"}}, "good.pem: the file has no private key in PEM form"},
        {{{u"cert", "good.pem"}, {u"key", "old.key"}},
            "old.key: the key does not belong to the certificate in good.pem"},
        {{{u"cert", "good.pem"}, {u"key", "locked.key"}}, "locked.key: the key is protected by a passphrase"},
        {{{u"cert", "both.pem"}, {u"clientCa", "good.key"}}, "good.key: the file has no certificate in PEM form"},
        {{{u"cert", "both.pem"}}, ""},
    };
    for (const auto& row : cases) {
        util::PropertySet properties;
        set(properties, row.properties);
        const std::string failure = failureOf([&] { net::Transport::get(TLS)->createAcceptor(properties); });
        EXPECT_TRUE(*row.failure == 0 ? failure.empty() : failure.find(row.failure) != failure.npos)
            << row.failure << " is not in " << failure;
    }
}

TEST_F(TlsComponent, AcceptsOnlyTheClientThatItKnows)
{
    const struct {
        const char* client;
        const char* failure;
    } cases[] = {
        {"-cert client.pem -key client.key", ""},
        {"-cert client.pem -key client.key -tls1_2", ""},
        {"", "the peer has no certificate"},
        {"-cert named.pem -key named.key", "is refused: it is from an unknown authority"},
        {"-cert past.pem -key past.key", "the certificate CN = Ada is refused: it has expired"},
        {"-tls1_1 -cipher DEFAULT@SECLEVEL=0", "the peer does not speak TLS 1.2 or later"},
        {"-servername example.org -verify_hostname example.org", "the peer refuses the connection: bad certificate"},
    };
    util::PropertySet properties;
    set(properties, SERVER + Properties {{u"clientCa", "other.pem"}});
    const Reference<net::IAcceptor> acceptor = net::Transport::get(TLS)->createAcceptor(properties);
    const std::string port = properties.get(u"port").toUtf8();
    for (const auto& row : cases) {
        Stranger client("s_client -quiet -no_ign_eof -verify_return_error -CAfile ca.pem -connect 127.0.0.1:" + port
            + ' ' + row.client);
        const Reference<io::IChannel> channel = acceptor->accept();
        std::string heard;
        const std::string failure = failureOf([&] {
            writeTo(*channel, "hello\n");
            EXPECT_EQ(client.readUntil("\n"), "hello");
            client.write("answer");
            client.closeInput();
            heard = readFrom(*channel, 100); // up to the end that the client announces
        });
        EXPECT_EQ(heard, *row.failure == 0 ? "answer" : "") << row.client;
        EXPECT_TRUE(*row.failure == 0 ? failure.empty() : failure.find(row.failure) != failure.npos)
            << row.failure << " is not in " << failure;
    }
}

TEST_F(TlsComponent, TellsABrokenConnectionFromItsEnd)
{
    util::PropertySet properties;
    set(properties, SERVER);
    const Reference<net::IAcceptor> acceptor = net::Transport::get(TLS)->createAcceptor(properties);
    const std::string address = "127.0.0.1:" + properties.get(u"port").toUtf8();
    const auto readAll = [](io::IChannel& channel) { return failureOf([&] { readFrom(channel, 100); }); };
    {
        Stranger client("-c \"echo $$; exec openssl s_client -quiet -connect " + address + '"', "bash");
        const pid_t process = std::stoi(client.readUntil("\n"));
        const Reference<io::IChannel> channel = acceptor->accept();
        writeTo(*channel, "hello\n");
        client.readUntil("\n");
        ::kill(process, SIGKILL);
        client.join();
        EXPECT_NE(readAll(*channel).find("the connection was cut off"), std::string::npos);
    }
    {
        Stranger client("-c \"exec openssl s_client -tls1_2 -connect " + address + " 2>&1\"", "bash");
        const Reference<io::IChannel> channel = acceptor->accept();
        writeTo(*channel, "hello\n");
        client.readUntil("hello\n");
        client.write("R\n"); // asks for new keys
        EXPECT_NE(readAll(*channel).find("the peer refuses the connection: handshake failure"), std::string::npos);
        EXPECT_NE(client.readUntil("no such text").find("no renegotiation"), std::string::npos);
    }
}

TEST_F(TlsComponent, WaitsForAHandshakeNoLongerThanItIsTold)
{
    util::PropertySet properties;
    set(properties, SERVER + Properties {{u"timeout", "20"}});
    const Reference<net::IAcceptor> acceptor = net::Transport::get(TLS)->createAcceptor(properties);
    const auto port = static_cast<unsigned short>(std::stoi(properties.get(u"port").toUtf8()));
    const Reference<net::TcpSocket> client(new net::TcpSocket(u"127.0.0.1", port));
    const Reference<io::IChannel> channel = acceptor->accept();
    std::string failure = failureOf([&] { readFrom(*channel, 1); });
    EXPECT_TRUE(failure.starts_with("TLS handshake with 127.0.0.1:")) << failure;
    EXPECT_NE(failure.find("ETIMEDOUT"), failure.npos) << failure;
    const std::string_view plain = "VXLOG level=3\n";
    client->getOutputStream()->write(
        reinterpret_cast<const signed char*>(plain.data()), static_cast<std::int32_t>(plain.size()));
    failure = failureOf([&] { readFrom(*channel, 1); });
    EXPECT_NE(failure.find("the peer does not speak TLS"), failure.npos) << failure;
}

TEST_F(TlsComponent, CarriesBothDirectionsAtOnce)
{
    util::PropertySet properties;
    set(properties, SERVER + CLIENT);
    const Reference<net::IAcceptor> acceptor = net::Transport::get(TLS)->createAcceptor(properties);
    const Reference<net::IConnector> connector = net::Transport::get(TLS)->createConnector(properties);
    const std::string text(3'000'001, 'x');
    Reference<io::IChannel> sides[2];
    Doing server([&] {
        sides[0] = acceptor->accept();
        readFrom(*sides[0], 1);
    });
    sides[1] = connector->connect();
    writeTo(*sides[1], "x");
    server.join();
    inThreads(4, [&](int thread) {
        io::IChannel& side = *sides[thread / 2];
        if (thread % 2 == 0)
            writeTo(side, text);
        else
            EXPECT_TRUE(readFrom(side, static_cast<unsigned int>(text.size())) == text);
    });
}

/// One side of a connection in memory.
class Side {
public:
    Side(decltype(&IVXTls::CreateClientContext) create, const Properties& properties)
    {
        util::PropertySet set;
        for (const auto& [key, value] : properties)
            set.set(key, String(value));
        Reference<IVXTls> tls;
        Reference<IVXTlsContext> context;
        throwIfFailed(VXComCreateObjectByProgID(TLS, nullptr, &IVXTls::IID, tls.outVoid()));
        throwIfFailed(((*tls).*create)(util::PropertySet::getVorb(set).get(), IVXTlsContext::IID, context.outVoid()));
        throwIfFailed(context->CreateSession(IVXTlsSession::IID, m_session.outVoid()));
    }

    IVXTlsSession& operator*() { return *m_session; }
    std::int32_t state()
    {
        std::int32_t state = -1;
        m_session->GetState(&state);
        return state;
    }
    std::string failure()
    {
        const Reference<String> text(new String);
        m_session->GetFailure(text.get());
        return text->toUtf8();
    }
    /// The number of bytes that it takes.
    std::size_t give(std::string_view text, decltype(&IVXTlsSession::Feed) operation = &IVXTlsSession::GivePlain)
    {
        auto length = static_cast<std::int32_t>(text.size());
        m_result = ((*m_session).*operation)(reinterpret_cast<const signed char*>(text.data()), &length);
        return static_cast<std::size_t>(length);
    }
    std::string take(decltype(&IVXTlsSession::TakePlain) operation = &IVXTlsSession::TakePlain)
    {
        std::string all;
        signed char piece[1000];
        for (std::int32_t length = 1; length > 0; all.append(reinterpret_cast<char*>(piece), length)) {
            length = sizeof piece;
            m_result = ((*m_session).*operation)(piece, &length);
        }
        return all;
    }
    std::string takeEncrypted() { return take(&IVXTlsSession::TakeEncrypted); }
    /// Passes what it has for `other`, byte by byte. Returns the plain bytes that `other` then gives.
    std::string passTo(Side& other)
    {
        std::string plain;
        for (const char byte : takeEncrypted()) {
            other.give({&byte, 1}, &IVXTlsSession::Feed);
            plain += other.take();
        }
        return plain;
    }
    std::int32_t lastResult() const { return m_result; }

private:
    Reference<IVXTlsSession> m_session;
    std::int32_t m_result = 0;
};

class TlsSession : public TlsComponent {
protected:
    void shakeHands()
    {
        for (int flight = 0; flight < 3; ++flight) {
            m_client.passTo(m_server);
            m_server.passTo(m_client);
        }
        ASSERT_EQ(m_client.state(), IVXTlsSession::OPEN) << m_client.failure();
        ASSERT_EQ(m_server.state(), IVXTlsSession::OPEN) << m_server.failure();
    }

    Side m_client {&IVXTls::CreateClientContext, CLIENT};
    Side m_server {&IVXTls::CreateServerContext, SERVER};
};

TEST_F(TlsSession, ClosesEachDirectionByItself)
{
    EXPECT_EQ(m_client.give("too early"), 0U);
    shakeHands();
    EXPECT_EQ(m_client.give("question"), 8U);
    (*m_client).Close();
    EXPECT_EQ(m_client.passTo(m_server), "question");
    EXPECT_EQ(m_server.state(), IVXTlsSession::CLOSED);
    EXPECT_EQ((*m_server).FeedEnd(), RESULT_OK);
    EXPECT_EQ(m_client.give("more"), 0U);
    EXPECT_EQ(m_client.lastResult(), RESULT_NOT_AVAILABLE);
    EXPECT_EQ(m_server.give("answer"), 6U);
    EXPECT_EQ(m_server.passTo(m_client), "answer");
    EXPECT_EQ(m_client.state(), IVXTlsSession::OPEN);
    EXPECT_EQ((*m_client).FeedEnd(), RESULT_OK);
    m_client.take();
    EXPECT_EQ(m_client.state(), IVXTlsSession::FAILED);
}

TEST_F(TlsSession, GivesAllBytesBeforeTheFailure)
{
    shakeHands();
    m_client.give("last words");
    m_server.give(m_client.takeEncrypted(), &IVXTlsSession::Feed);
    EXPECT_EQ((*m_server).FeedEnd(), RESULT_OK);
    EXPECT_EQ(m_server.take(), "last words");
    EXPECT_EQ(m_server.lastResult(), RESULT_FAIL);
    EXPECT_EQ(m_server.failure(), "the connection was cut off: the peer did not announce its end");

    m_server.give("VXLOG level=3\n", &IVXTlsSession::Feed);
    EXPECT_EQ(m_server.lastResult(), RESULT_FAIL);
    Side other {&IVXTls::CreateServerContext, SERVER};
    other.give("VXLOG level=3\n", &IVXTlsSession::Feed);
    EXPECT_EQ(other.failure(), "the peer does not speak TLS");
}

TEST_F(TlsSession, LimitsTheBytesThatWait)
{
    shakeHands();
    std::string text;
    for (int number = 0; text.size() < 1'000'000; ++number)
        text += std::to_string(number) + ' ';
    constexpr std::size_t MOST = 100'000;
    std::string heard;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t given = m_client.give(rest);
        ASSERT_TRUE(given > 0 && given < MOST) << given;
        EXPECT_EQ(m_client.give(rest.substr(given)), 0U) << "before any is taken";
        rest.remove_prefix(given);
        const std::string encrypted = m_client.takeEncrypted();
        for (std::string_view bytes = encrypted; !bytes.empty(); heard += m_server.take())
            bytes.remove_prefix(m_server.give(bytes, &IVXTlsSession::Feed));
    }
    EXPECT_TRUE(heard == text);
    const std::string flood(MOST, 'x');
    m_client.give(flood);
    const std::string encrypted = m_client.takeEncrypted() + flood;
    EXPECT_LT(m_server.give(encrypted, &IVXTlsSession::Feed), MOST);
    EXPECT_EQ(m_server.give(flood, &IVXTlsSession::Feed), 0U);
}

} // namespace
} // namespace vx
