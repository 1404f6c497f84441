#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

/// Answers one client, line by line.
class EchoServer : public Object, public exec::IRunnable {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap() { return Object::GetComIntfMap(); }

    unsigned short getPort() const { return m_listener.getPort(); }

    // IRunnable
    void* run() override
    {
        const Reference<net::TcpSocket> client(m_listener.accept());
        const Reference<io::BufferedReader> in(
            new io::BufferedReader(new io::InputStreamReader(client->getInputStream().get(), u"UTF-8", 4096), 4096));
        const Reference<io::Writer> out(new io::OutputStreamWriter(client->getOutputStream().get(), u"UTF-8", 4096));
        for (String line; in->readLine(line) >= 0;) {
            out->write(line + u" — and so it is.\n");
            out->flush();
        }
        return nullptr;
    }

private:
    net::TcpServerSocket m_listener {0, 5}; // a port that the system picks
};

int main()
{
    const Reference<EchoServer> server(new EchoServer);
    exec::Thread thread(server.get());
    thread.start();
    {
        net::TcpSocket socket(u"127.0.0.1", server->getPort());
        socket.setSoTimeout(5000); // io::TimeoutException behind it
        const Reference<io::Writer> out(new io::OutputStreamWriter(socket.getOutputStream().get(), u"UTF-8", 4096));
        out->write(String(u"Water is wet\n"));
        out->flush();
        const Reference<io::BufferedReader> in(
            new io::BufferedReader(new io::InputStreamReader(socket.getInputStream().get(), u"UTF-8", 4096), 4096));
        String answer;
        in->readLine(answer);
        std::cout << answer << '\n';
    }
    thread.join();
}
