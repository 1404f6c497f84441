// # Take options from the command line
// Each option is declared once. The table parses them and writes the text of `--help`.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const util::OptionTable table("backup",
        {{.name = "keep", .letter = 'k', .value = "N", .standard = "7", .help = "how many copies stay"},
            {.name = "quiet", .letter = 'q', .help = "print only failures"}});
    const char* const line[] = {"backup", "-qk3", "/srv/data"};
    const util::ParsedOptions options = table.parse(3, line);
    std::cout << options.getArguments().front() << ", " << options.getNumber<int>("keep", 1, 99) << " copies"
              << (options.has("quiet") ? ", quiet\n" : "\n");
    try {
        const char* const wrong[] = {"backup", "--keep=many"};
        table.parse(2, wrong).getNumber<int>("keep", 1, 99);
    } catch (const util::OptionException& failure) {
        std::cout << failure.getDescription() << '\n';
    }
}

/* prints
/srv/data, 3 copies, quiet
backup: --keep takes a number from 1 to 99, not "many"; see --help
*/
