#pragma once

#include "Messages.h"

#include <functional>
#include <string>

namespace vxtools {

/// One line about the program `name` on standard error, behind what it has printed so far.
void complain(const char* name, const std::string& text);

/// Puts `text` on standard output at once. Throws Failure.
void print(const std::string& text);
/// Prints the name and the version that it shares with the library.
void printVersion(const char* name);

/// Runs a program with its standard streams open and without the signals of failed writes, which tell more as results.
/// Gives the exit code: 0, 1 for a failure, 2 for a std::invalid_argument, which is a fault of the command line. What is
/// thrown becomes a complaint, in the language of `messages`.
int runProgram(const char* name, const std::function<void()>& work, Messages& messages);
/// As above, in English.
int runProgram(const char* name, const std::function<void()>& work);

} // namespace vxtools
