#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main(int argc, char** argv)
{
    const util::OptionTable table("settings",
        {{.name = "level", .letter = 'l', .value = "N", .standard = "3", .help = "how much to tell"},
            {.name = "format", .value = "plain|xml", .standard = "plain", .help = "what the log looks like"}});
    std::string file;
    try {
        const util::ParsedOptions options = table.parse(argc, argv);
        std::cout << "level " << options.getNumber<int>("level", 0, 9) << ", format " << options.get("format")
                  << (options.has("level") ? "" : ", by default") << '\n'
                  << table.getHelp();
        file = options.getArguments().empty() ? "settings.ini" : options.getArguments().front();
    } catch (const util::OptionException& failure) {
        std::cerr << failure.getDescription() << '\n'; // settings: unknown option --foo; see --help
        return 2;
    }

    util::CommandLineParser line; // the other grammar, with slashes
    line.defineOption(u"level", 1, u"3");
    line.parse(String(u"-verbose /level 0x10 \"my file.txt\""));
    std::cout << line.isPresent(u"verbose") << ' ' << line.getValueLong(u"level", 0) << ' '
              << line.getParameter(0)->getValueString(0) << '\n';

    const String path((std::string_view(file)));
    util::IniFile ini(TerminatedText(path), "guide.settings", 0); // the semaphore's name: processes take turns
    throwIfFailed(ini.AddKey(u"window\\main", u"width", u"640", true));
    throwIfFailed(ini.GetWriteResult(), u"write", path); // 0: the change is in the file
    char16_t width[16];
    throwIfFailed(ini.GetValue(u"Window\\Main", u"WIDTH", width, 16));
    std::cout << String(width) << '\n';

    auto document = util::IniDocument::parse("; written by hand\n[window]\nwidth = 640 \n");
    document.set("window", "width", "800");
    document.set("window", "height", "600");
    throwIfFailed(document.save(path), u"write", path); // in the file and on the disk, or the file is as before
    std::cout << document.getText() << "line " << document.find("window", "height")->line << '\n';

    net::URI uri(u"vxlog://ann@example.org:7514/inbox?level=3");
    uri.setQueryPair(u"topic", u"bread & butter", true);
    std::cout << uri.getHost(true) << ' ' << uri.getPort() << ' ' << uri.getQueryValue(u"topic", true) << '\n';
    std::cout << uri.getQueryValue(u"topic", false) << '\n';

    const auto page = net::UriReference::parse("http://[::1]:8080/a/b?tag=x&tag=y%20z#end");
    for (const net::UriReference::Parameter& each : page->getParameters())
        std::cout << each.name << '=' << each.value << ' ';
    std::cout << page->getHostName() << ' ' << page->resolve(*net::UriReference::parse("../c"))->getText() << '\n';
}
