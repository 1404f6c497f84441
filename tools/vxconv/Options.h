#pragma once

#include <string>

namespace vxconv {

struct Options {
    enum class Task { CONVERT, LIST, HELP };

    Task task = Task::CONVERT;
    std::string from = "UTF-8";
    std::string to = "UTF-8";
    bool lines = false;
    bool strict = false;
    std::string input = "-";
    std::string output = "-";
};

/// Throws std::invalid_argument that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

extern const char* const USAGE;

} // namespace vxconv
