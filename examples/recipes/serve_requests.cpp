// Answer requests over TCP
//
// The handler runs in a thread for each connection. With port 0 the system chooses one that is free.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    net::TcpServer server({.hosts = {"127.0.0.1"}, .port = 0, .mostConnections = 10}, [](net::TcpSocket& client) {
        io::BufferedReader in(new io::InputStreamReader(client.getInputStream().get(), u"UTF-8", 4096), 4096);
        io::OutputStreamWriter out(client.getOutputStream().get(), u"UTF-8", 4096);
        for (String line; in.readLimitedLine(line, 1000) >= 0;) { // a longer line ends the connection
            out.write(String::formatted(u"{0} units\n", line.getLength()));
            out.flush();
        }
    });
    {
        net::TcpSocket socket(u"127.0.0.1", server.getPort(), 3000); // milliseconds
        socket.setSoTimeout(5000);
        io::OutputStreamWriter out(socket.getOutputStream().get(), u"UTF-8", 4096);
        out.write(u"hello\n");
        out.flush();
        io::BufferedReader in(new io::InputStreamReader(socket.getInputStream().get(), u"UTF-8", 4096), 4096);
        String answer;
        in.readLine(answer);
        std::cout << answer << '\n';
    }
    server.stop(5000);
}
// Prints:
// 5 units
