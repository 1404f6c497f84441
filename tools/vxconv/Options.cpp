#include "Options.h"

#include <getopt.h>
#include <stdexcept>

namespace vxconv {

const char* const USAGE = "Usage: vxconv [-f ENCODING] [-t ENCODING] [--lines] [--strict] [INPUT] [-o OUTPUT]\n"
                          "       vxconv --list\n"
                          "Converts text from one encoding to another.\n"
                          "\n"
                          "  -f, --from=ENCODING  the encoding of INPUT (UTF-8)\n"
                          "  -t, --to=ENCODING    the encoding of OUTPUT (UTF-8)\n"
                          "      --lines          end each line with LF, whether it ended with LF, CR or CR LF;\n"
                          "                       holds one line in memory\n"
                          "      --strict         fail at a character that has no mapping, and tell where it is;\n"
                          "                       otherwise it is replaced, mostly by ? or U+FFFD\n"
                          "  -o, --output=OUTPUT  write there; the file appears when it is whole, and may be INPUT\n"
                          "  -l, --list           print the encodings with their code pages\n"
                          "  -h, --help           print this\n"
                          "\n"
                          "INPUT and OUTPUT are standard input and output where they are missing or \"-\". Malformed\n"
                          "input is an error. A byte order mark is text as any other and stays where it is.\n"
                          "The exit status is 0 for success, 1 for a failure, 2 for a wrong command line.\n";

Options parseOptions(int argc, char** argv)
{
    constexpr int LINES = 256;
    constexpr int STRICT = 257;
    static const option LONG_OPTIONS[] = {
        {"from", required_argument, nullptr, 'f'},
        {"to", required_argument, nullptr, 't'},
        {"output", required_argument, nullptr, 'o'},
        {"lines", no_argument, nullptr, LINES},
        {"strict", no_argument, nullptr, STRICT},
        {"list", no_argument, nullptr, 'l'},
        {"help", no_argument, nullptr, 'h'},
        {},
    };

    Options options;
    opterr = 0;
    const auto given = [&] {
        return optopt > 0 && optopt < LINES ? std::string("-") + static_cast<char>(optopt)
                                            : std::string(argv[optind - 1]);
    };
    for (int found; (found = ::getopt_long(argc, argv, ":f:t:o:lh", LONG_OPTIONS, nullptr)) != -1;) {
        switch (found) {
        case 'f':
            options.from = optarg;
            break;
        case 't':
            options.to = optarg;
            break;
        case 'o':
            options.output = optarg;
            break;
        case LINES:
            options.lines = true;
            break;
        case STRICT:
            options.strict = true;
            break;
        case 'l':
            options.task = Options::Task::LIST;
            break;
        case 'h':
            options.task = Options::Task::HELP;
            break;
        case ':':
            throw std::invalid_argument(given() + " needs a value");
        default:
            throw std::invalid_argument("wrong option " + given());
        }
    }
    if (optind < argc)
        options.input = argv[optind++];
    if (optind < argc)
        throw std::invalid_argument(std::string("one input too many: ") + argv[optind]);
    if (options.input.empty() || options.output.empty())
        throw std::invalid_argument("a file name is empty");
    return options;
}

} // namespace vxconv
