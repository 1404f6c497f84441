#pragma once

#include "Messages.h"

#include <functional>
#include <string>

namespace vxtools {

/// Prints a line about the program `name` to standard error, after what the program has printed so far.
void complain(const char* name, const std::string& text);

/// Prints `text` to standard output and flushes it. Throws Failure.
void print(const std::string& text);
/// Prints the name and the version of the library that is loaded.
void printVersion(const char* name);

/// Runs a program with its standard streams open. Signals of failed writes are ignored: the errors that the writes
/// return say more. Returns the exit code: 0, 1 for a failure, or 2 for a std::invalid_argument, which is an error in
/// the command line. Exceptions are reported in the language of `messages`.
int runProgram(const char* name, const std::function<void()>& work, Messages& messages);
/// As above, in English.
int runProgram(const char* name, const std::function<void()>& work);

} // namespace vxtools
