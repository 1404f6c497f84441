#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

/// Answers one client, line by line.
void echo(net::TcpSocket& client)
{
    const Reference<io::BufferedReader> in(
        new io::BufferedReader(new io::InputStreamReader(client.getInputStream().get(), u"UTF-8", 4096), 4096));
    const Reference<io::Writer> out(new io::OutputStreamWriter(client.getOutputStream().get(), u"UTF-8", 4096));
    for (String line; in->readLimitedLine(line, 1000) >= 0;) { // a longer line is an io::IoException
        out->write(line + u" — and so it is.\n");
        out->flush();
    }
}

int main()
{
    net::TcpServer server({.hosts = {"127.0.0.1"}, .port = 0, .mostConnections = 100}, echo); // a port that is free
    {
        net::TcpSocket socket(u"127.0.0.1", server.getPort());
        socket.setSoTimeout(5000); // a longer wait for an answer is an io::TimeoutException
        const Reference<io::Writer> out(new io::OutputStreamWriter(socket.getOutputStream().get(), u"UTF-8", 4096));
        out->write(String(u"Water is wet\n"));
        out->flush();
        const Reference<io::BufferedReader> in(
            new io::BufferedReader(new io::InputStreamReader(socket.getInputStream().get(), u"UTF-8", 4096), 4096));
        String answer;
        in->readLine(answer);
        std::cout << answer << '\n';
    }
    std::cout << server.stop(5000) << " connections were cut\n"; // the handlers have time to end before
}
