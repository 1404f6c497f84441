#include "components/tcp/TcpTransport.h"
#include "tests/faults/Families.h"
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
Family passing(const char* name, void (*work)())
{
    return {name, [work](const Scratch&) { return Operation {work}; }, After::ANYTHING};
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
    };
}
