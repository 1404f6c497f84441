// Read the options of a command line
//
// One row for each option serves for parsing, for `--help` and for the completion of the shell.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const util::OptionTable table("copy",
        {{.name = "force", .letter = 'f', .help = "overwrite"},
            {.name = "tries", .letter = 't', .value = "N", .standard = "1", .help = "how often it is tried"}});
    const char* const words[] = {"copy", "-ft3", "a", "b"};
    const util::ParsedOptions options = table.parse(4, words);
    std::cout << options.has("force") << ' ' << options.getNumber<int>("tries", 1, 9) << ' '
              << options.getArguments().size() << '\n';
    try {
        const char* const wrong[] = {"copy", "--fast"};
        table.parse(2, wrong);
    } catch (const util::OptionException& failure) {
        std::cout << failure.getDescription() << '\n';
    }
}
// Prints:
// 1 3 2
// copy: unknown option --fast; see --help
