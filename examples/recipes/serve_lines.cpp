// # Answer lines over TCP
// The server calls your function for each connection, in a thread of its own, and ends all of them in time.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

void shout(net::TcpSocket& client)
{
    io::BufferedReader in(new io::InputStreamReader(client.getInputStream().get(), u"UTF-8", 4096), 4096);
    io::OutputStreamWriter out(client.getOutputStream().get(), u"UTF-8", 4096);
    for (String line; in.readLine(line) >= 0;) {
        line.toUpper();
        out.write(line + u"!\n");
        out.flush();
    }
}

int main()
{
    net::TcpServer server({.hosts = {"127.0.0.1"}, .port = 0, .mostConnections = 50}, shout);
    {
        net::TcpSocket client(u"127.0.0.1", server.getPort());
        client.setSoTimeout(5000);
        io::OutputStreamWriter out(client.getOutputStream().get(), u"UTF-8", 4096);
        out.write(u"good morning\n");
        out.flush();
        io::BufferedReader in(new io::InputStreamReader(client.getInputStream().get(), u"UTF-8", 4096), 4096);
        String answer;
        in.readLine(answer);
        std::cout << answer << '\n';
    }
    server.stop(5000);
}

/* prints
GOOD MORNING!
*/
