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
#include <optional>
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
    std::string readAll() { return readUntil("no such text"); }
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

} // namespace
} // namespace vx
