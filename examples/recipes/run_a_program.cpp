// Run a program and read what it prints
//
// The search path is used because the last argument says so. `join` returns the exit status.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    exec::Process sorter(u"sort", u"-n", nullptr, nullptr, 1);
    io::OutputStreamWriter numbers(sorter.getOutputStream().get(), u"UTF-8", 4096);
    numbers.write(u"10\n9\n8\n");
    numbers.flush();
    sorter.closeInput();
    io::BufferedReader sorted(new io::InputStreamReader(sorter.getInputStream().get(), u"UTF-8", 4096), 4096);
    for (String line; sorted.readLine(line) >= 0;)
        std::cout << line << ' ';
    std::cout << "status " << sorter.join() << '\n';
}
// Prints:
// 8 9 10 status 0
