// # Change one setting of an INI file
// Comments, order and spaces stay. After a crash the file is the old or the new one.

#include <vx/vxlib4.h>

#include <fstream>
#include <iostream>
#include <string>

using namespace vx;

int main(int argc, char** argv)
{
    const std::string name = (argc > 1 ? argv[1] : ".") + std::string("/mail.ini");
    std::ofstream(name) << "; do not use port 25\n[server]\nhost = mail.example.org\nport = 25\n";

    const String path((std::string_view(name)));
    auto settings = util::IniDocument::load(path);
    settings.set("server", "port", "587");
    throwIfFailed(settings.save(path));

    std::cout << std::ifstream(name).rdbuf();
}

/* prints
; do not use port 25
[server]
host = mail.example.org
port = 587
*/
