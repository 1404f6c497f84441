#include <vx/Describe.h>
#include <vx/Occasion.h>
#include <vx/io/FileInputStream.h>
#include <vx/util/PropertySet.h>

#include <iostream>

using namespace vx;

int main()
{
    installTerminateReport(); // an uncaught exception says what it is before the program aborts

    try {
        io::FileInputStream settings(u"/etc/none.conf");
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n'; // for the user of the program
        std::cout << describe(failure) << '\n'; // for its developers
        if (errorCodeOf(failure) == std::errc::no_such_file_or_directory)
            std::cout << "The program continues without settings.\n";
    }

    const Reference<util::PropertySet> settings(new util::PropertySet);
    try {
        during(u"start service", u"mail", [&] { settings->get(u"port"); });
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n'; // the note that is closest to the cause stays
    }
}
