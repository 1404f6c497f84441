#include "components/tcp/TcpTransport.h"
#include "tests/faults/Families.h"
#include "vx/Result.h"
#include "vx/exec/IRunnable.h"
#include "vx/exec/Process.h"
#include "vx/exec/SharedLibrary.h"
#include "vx/exec/Thread.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/IChannel.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/ipc/SemaphoreR.h"
#include "vx/ipc/SharedMemory.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/Logger.h"
#include "vx/log/SyncLogger.h"
#include "vx/log/XmlLogWriter.h"
#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket.h"
#include "vx/net/TcpServerSocket2.h"
#include "vx/net/TcpSocket.h"
#include "vx/util/PropertySet.h"
#include "vxsys/Component.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <netinet/in.h>
#include <unistd.h>

namespace {

using namespace vx;

/// Names that only this process uses.
std::string nameOfOurs(const char* what)
{
    return std::string(what) + std::to_string(::getpid());
}

[[noreturn]] void wrong(const char* what)
{
    throw std::logic_error(what);
}

/// Work that leaves no state.
Family passing(const char* name, void (*work)(), bool tellsSignals = false)
{
    return {name, [work](const Scratch&) { return Operation {work}; }, After::ANYTHING, tellsSignals};
}

Reference<io::Writer> fileWriter(const String& path)
{
    return new io::OutputStreamWriter(new io::FileOutputStream(path, io::FileOutputStream::APPEND), u"UTF-8", 1000);
}

std::string readAll(io::InputStream& stream)
{
    std::string seen;
    for (char bytes[10];;) {
        const std::int32_t got = stream.read(bytes, sizeof bytes);
        if (got < 1)
            return seen;
        seen.append(bytes, static_cast<std::size_t>(got));
    }
}

void talkToChild()
{
    exec::Process child(u"/bin/cat", u"-");
    try {
        child.getOutputStream()->write("through and back", 16);
        child.closeInput();
        if (readAll(*child.getInputStream()) != "through and back")
            wrong("the child said something else");
        if (child.join() != 0)
            wrong("the child failed");
    } catch (const Exception&) {
        child.closeInput();
        child.join();
        throw;
    }
}

struct RegisteredGreeter {
    RegisteredGreeter() { throwIfFailed(VXComRegisterLibrary(String(VX_GREETER).getData())); }

    const Scratch place;
    const ScopedVariable store {"VXSYS4_REGISTRY", (place / "store").c_str()};
};

class Answer : public Object, public exec::IRunnable {
public:
    VX_OBJECT_UNKNOWN(Object)
    void* run() override { return this; }
};

void checkSocket(ENUM_VX_E_SOCKET result)
{
    if (result != 0)
        throwResult(static_cast<std::int32_t>(result));
}

struct Destroy {
    void operator()(net::TcpSocket2* socket) const { net::TcpSocket2::destroyTcpSocket2(&socket); }
};

template <class Socket>
using Owned = std::unique_ptr<Socket, Destroy>;

/// Stores what `make` creates, and destroys it even if `make` fails.
template <class Socket, class Make>
Owned<Socket> made(Make make)
{
    Socket* socket = nullptr;
    const ENUM_VX_E_SOCKET result = make(&socket);
    Owned<Socket> owned(socket);
    checkSocket(result);
    return owned;
}

void talkBySockets2()
{
    const auto server = made<net::TcpServerSocket2>(
        [](auto** out) { return net::TcpServerSocket2::createTcpServerSocket2(AF_INET, SOCK_STREAM, 0, out); });
    checkSocket(server->bindListAddAddrAny(0));
    checkSocket(server->bind());
    checkSocket(server->listen(5));
    checkSocket(server->saveBoundAddresses());
    vx_sockaddr_union address {};
    unsigned int length = sizeof address;
    checkSocket(server->getBoundAddress(0, reinterpret_cast<signed char*>(&address), &length));
    const auto client = made<net::TcpClientSocket2>([&](auto** out) {
        return net::TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, 0, out);
    });
    checkSocket(client->connect(&address, length));
    const auto worker = made<net::TcpWorkerSocket2>([&](auto** out) { return server->accept(out); });
    std::int32_t sent = 0;
    checkSocket(client->send("hello", 5, 0, &sent));
    char bytes[10];
    std::int32_t got = 0;
    checkSocket(worker->recv(bytes, sizeof bytes, 0, &got));
    if (got < 1 || sent < got || !std::string_view("hello").starts_with(std::string(bytes, bytes + got)))
        wrong("other bytes came");
}

} // namespace

std::vector<Family> systemFamilies()
{
    return {
        passing("Semaphore",
            [] {
                ipc::SemaphoreR semaphore(nameOfOurs("faults").c_str(), 1, nullptr);
                semaphore.wait();
                if (semaphore.getValue() != 0)
                    wrong("taken, and not taken");
                semaphore.signal();
                if (semaphore.getValue() != 1)
                    wrong("not given back");
            }),
        passing("SharedMemory",
            [] {
                ipc::SharedMemory memory(nameOfOurs("faults").c_str(), 100, VX_FILE_READ | VX_FILE_WRITE,
                    VX_SHARED_MEMORY_CREATE | VX_SHARED_MEMORY_EXCLUSIVE);
                std::fill_n(static_cast<char*>(memory.get()), 100, 'x');
            }),

        {"LogToFile",
            [](const Scratch& place) {
                const Reference<log::Logger> logger = log::Logger::create(u"a name");
                logger->enableField(u"sequence", true);
                logger->enableField(u"sequence", false);
                logger->addProcessor(log::BasicLogWriter::create(fileWriter(String(place.full("log"))).get()).get());
                const Reference<log::SyncLogger> locked(new log::SyncLogger(logger.get()));
                return Operation {[locked] { locked->log(1, u"an entry \u00E4"); }};
            }},
        {"LogAsXml",
            [](const Scratch& place) {
                const Reference<log::Logger> logger = log::Logger::create();
                const Reference<io::Writer> file = fileWriter(String(place.full("log")));
                logger->addProcessor(log::XmlLogWriter::create(file.get(), log::XmlLogWriter::Values::ESCAPED).get());
                file->flush(); // the head of the document
                return Operation {[logger] { logger->log(1, u"an entry <&>"); }};
            }},
        {"LogFromAnotherThread",
            [](const Scratch& place) {
                const Reference<log::ILogProcessor> file
                    = log::BasicLogWriter::create(fileWriter(String(place.full("log"))).get());
                return Operation {[file] {
                    const Reference<log::AsyncProcessor> others = log::AsyncProcessor::create(file.get(), 1);
                    const Reference<log::Logger> logger = log::Logger::create();
                    logger->addProcessor(others.get());
                    logger->log(1, u"an entry");
                    if (!others->waitUntilDone())
                        throw Exception(u"not written");
                }};
            }},
        {"LogFromAThreadThatGoesOn",
            [](const Scratch& place) {
                const Reference<log::ILogProcessor> file
                    = log::BasicLogWriter::create(fileWriter(String(place.full("log"))).get());
                const Reference<log::AsyncProcessor> others
                    = log::AsyncProcessor::create(file.get(), 1, log::AsyncProcessor::Failures::KEEP_WORKER);
                return Operation {[others] {
                    const Reference<log::Logger> logger = log::Logger::create();
                    logger->addProcessor(others.get());
                    logger->log(1, u"an entry");
                    if (!others->waitUntilDone())
                        throw Exception(u"not written");
                }};
            }},
        passing("TcpTransport",
            [] {
                const Reference<components::TcpTransport> transport(new components::TcpTransport);
                util::PropertySet properties;
                properties.set(u"timeout", u"10000");
                const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
                const Reference<net::IConnector> connector = transport->createConnector(properties);
                const Reference<io::IChannel> near = connector->connect();
                const Reference<io::IChannel> far = acceptor->accept();
                io::ByteBuffer entry(5, io::VX_ENDIAN_BIG, false);
                entry.putInt32(0x41424344);
                entry.put(0x45);
                entry.flip();
                while (entry.remaining() > 0)
                    near->write(entry);
                io::ByteBuffer received(5, io::VX_ENDIAN_BIG, false);
                while (received.remaining() > 0) {
                    if (far->read(received) < 0)
                        wrong("no bytes came");
                }
                received.flip();
                if (received.getInt32() != 0x41424344 || received.get() != 0x45)
                    wrong("other bytes came");
            }),

        passing("Thread",
            [] {
                const Reference<Answer> answer(new Answer);
                exec::Thread thread(answer.get());
                thread.start();
                if (thread.join() != answer.get())
                    wrong("another answer");
            }),
        passing("Process", talkToChild),
        passing("ProcessLeftAlone", [] { exec::Process child(u"/bin/cat"); }),
        passing("ProcessElsewhere",
            [] {
                const char16_t* const environment[] = {u"A=b", nullptr};
                exec::Process child(u"true", u"\"an argument\" another", u"/", environment, 1);
                child.join();
            }),
        passing("SharedLibrary",
            [] {
                exec::SharedLibrary library(u"libm.so.6");
                if (library.getSymbol(u"cos") == nullptr)
                    wrong("no symbol");
            }),
        {"Component",
            [](const Scratch&) {
                static const RegisteredGreeter s_greeter; // one for all attempts
                return Operation {[] {
                    void* object = nullptr;
                    throwIfFailed(VXComCreateObjectByProgID(u"Example.Greeter", nullptr, &IVXUnknown::IID, &object));
                    static_cast<IVXUnknown*>(object)->Release();
                    VXComFreeUnusedLibraries();
                }};
            }},
        passing("Sockets",
            [] {
                net::TcpServerSocket listener(0, 5);
                const Reference<net::TcpSocket> client(new net::TcpSocket(u"127.0.0.1", listener.getPort()));
                const Reference<net::TcpSocket> server = listener.accept();
                server->setSoTimeout(10'000);
                client->getOutputStream()->write("hello", 5);
                char bytes[5];
                for (std::int32_t done = 0; done < 5;) {
                    const std::int32_t got = server->getInputStream()->read(bytes + done, 5 - done);
                    if (got < 1)
                        wrong("no bytes came");
                    done += got;
                }
                if (std::string_view(bytes, 5) != "hello")
                    wrong("other bytes came");
            }),
        passing("Sockets2", talkBySockets2, true),
    };
}
