#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const unsigned int searchPath = 1;
    exec::Process sorter(u"sort", u"-r", nullptr, nullptr, searchPath);
    io::OutputStreamWriter toSorter(sorter.getOutputStream().get(), u"UTF-8", 4096);
    toSorter.write(u"a\nc\nb\n");
    toSorter.flush();
    sorter.closeInput();
    io::BufferedReader sorted(new io::InputStreamReader(sorter.getInputStream().get(), u"UTF-8", 4096), 4096);
    for (String line; sorted.readLine(line) >= 0;)
        std::cout << line << ' ';
    std::cout << sorter.join() << '\n';

    exec::Process sleeper(u"sleep", u"1000", nullptr, nullptr, searchPath);
    if (!sleeper.joinFor(10)) // milliseconds
        sleeper.terminate();
    if (!sleeper.joinFor(5000)) // it does not react
        sleeper.kill();
    sleeper.joinFor(VX_WAIT_FOREVER);
    std::cout << sleeper.getExitCode() << '\n'; // 128 and the number of the signal
}
