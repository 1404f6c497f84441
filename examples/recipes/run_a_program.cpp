// # Run a program and read what it prints
// The program gets its input and has ten seconds. Then it is ended.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const unsigned int searchPath = 1;
    exec::Process sort(u"sort", u"-n", nullptr, nullptr, searchPath);
    {
        io::OutputStreamWriter input(sort.getOutputStream().get(), u"UTF-8", 4096);
        input.write(u"10\n9\n2\n");
        input.flush();
    }
    sort.closeInput();
    io::BufferedReader output(new io::InputStreamReader(sort.getInputStream().get(), u"UTF-8", 4096), 4096);
    for (String line; output.readLine(line) >= 0;)
        std::cout << line << '\n';
    if (!sort.joinFor(10'000))
        sort.kill();
    sort.joinFor(VX_WAIT_FOREVER);
    std::cout << "exit status " << sort.getExitCode() << '\n';
}

/* prints
2
9
10
exit status 0
*/
