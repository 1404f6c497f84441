#include "components/tcp/TcpTransport.h"
#include "tests/faults/Families.h"
#include "vxsys/Component.h"

#include <algorithm>
#include <memory>

#include <netinet/in.h>
#include <unistd.h>

namespace {

using namespace vx;

/// Names that only this process uses.
std::string nameOfOurs(const char* what)
{
    return std::string(what) + std::to_string(::getpid());
}

/// Work that leaves nothing but what it says: always the same, unless it fails.
Family saying(const char* name, std::string (*work)())
{
    return {name,
        [work](const Scratch&) {
            return on(
                std::make_shared<std::string>(), [work](std::string& said) { said = work(); },
                [](const std::string& said) { return said; });
        },
        After::ANYTHING};
}

Reference<io::Writer> fileWriter(const Scratch& place)
{
    return new io::OutputStreamWriter(
        new io::FileOutputStream(String(place.full("log")), io::FileOutputStream::APPEND), u"UTF-8", 1000);
}

Reference<log::ILogProcessor> fileLog(const Scratch& place)
{
    return log::BasicLogWriter::create(fileWriter(place).get());
}

void logBy(log::AsyncProcessor& processor)
{
    const Reference<log::Logger> logger = log::Logger::create();
    logger->addProcessor(&processor);
    logger->log(1, u"an entry");
    if (!processor.waitUntilDone())
        throw Exception(u"not written");
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

std::string talkToChild()
{
    exec::Process child(u"/bin/cat", u"-");
    try {
        child.getOutputStream()->write("through and back", 16);
        child.closeInput();
        const std::string said = readAll(*child.getInputStream());
        return said + std::to_string(child.join());
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

} // namespace

std::vector<Family> systemFamilies()
{
    return {
        saying("Semaphore",
            []() -> std::string {
                ipc::SemaphoreR semaphore(nameOfOurs("faults").c_str(), 1, nullptr);
                semaphore.wait();
                const int taken = semaphore.getValue();
                semaphore.signal();
                return std::to_string(10 * taken + semaphore.getValue());
            }),
        saying("SharedMemory",
            [] {
                ipc::SharedMemory memory(nameOfOurs("faults").c_str(), 100, VX_FILE_READ | VX_FILE_WRITE,
                    VX_SHARED_MEMORY_CREATE | VX_SHARED_MEMORY_EXCLUSIVE);
                std::fill_n(static_cast<char*>(memory.get()), 100, 'x');
                return std::string();
            }),

        {"LogToFile",
            [](const Scratch& place) {
                const Reference<log::Logger> logger = log::Logger::create(u"a name");
                logger->enableField(u"sequence", true);
                logger->enableField(u"sequence", false);
                logger->addProcessor(fileLog(place).get());
                const Reference<log::SyncLogger> locked(new log::SyncLogger(logger.get()));
                return Operation {[locked] { locked->log(1, u"an entry \u00E4"); }};
            }},
        {"LogAsXml",
            [](const Scratch& place) {
                const Reference<log::Logger> logger = log::Logger::create();
                const Reference<io::Writer> file = fileWriter(place);
                logger->addProcessor(log::XmlLogWriter::create(file.get(), log::XmlLogWriter::Values::ESCAPED).get());
                file->flush(); // the head of the document
                return Operation {[logger] { logger->log(1, u"an entry <&>"); }};
            }},
        {"LogFromAnotherThread",
            [](const Scratch& place) {
                const Reference<log::ILogProcessor> file = fileLog(place);
                return Operation {[file] { logBy(*log::AsyncProcessor::create(file.get(), 1)); }};
            }},
        {"LogFromAThreadThatGoesOn",
            [](const Scratch& place) {
                const Reference<log::AsyncProcessor> others
                    = log::AsyncProcessor::create(fileLog(place).get(), 1, log::AsyncProcessor::Failures::KEEP_WORKER);
                return Operation {[others] { logBy(*others); }};
            }},
        saying("TcpTransport",
            []() -> std::string {
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
                while (received.remaining() > 0 && far->read(received) >= 0) { }
                received.flip();
                return {received.getConstBuffer(), received.getConstBuffer() + received.remaining()};
            }),

        saying("Thread",
            []() -> std::string {
                const Reference<Answer> answer(new Answer);
                exec::Thread thread(answer.get());
                thread.start();
                return thread.join() == answer.get() ? "its answer" : "another one";
            }),
        saying("Process", talkToChild),
        saying("ProcessLeftAlone", [] { return exec::Process(u"/bin/cat"), std::string(); }),
        saying("ProcessElsewhere",
            []() -> std::string {
                const char16_t* const environment[] = {u"A=b", nullptr};
                exec::Process child(u"true", u"\"an argument\" another", u"/", environment, 1);
                return std::to_string(child.join());
            }),
        saying("SharedLibrary",
            []() -> std::string {
                exec::SharedLibrary library(u"libm.so.6");
                return library.getSymbol(u"cos") != nullptr ? "found" : "not found";
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
        saying("Sockets",
            [] {
                net::TcpServerSocket listener(0, 5);
                Reference<net::TcpSocket> client(new net::TcpSocket(u"127.0.0.1", listener.getPort()));
                const Reference<net::TcpSocket> server = listener.accept();
                server->setSoTimeout(10'000);
                client->getOutputStream()->write("hello", 5);
                client = nullptr;
                return readAll(*server->getInputStream());
            }),
    };
}
