#pragma once

#include "Messages.h"

#include <vx/Exception.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vxtools {

/// What ends the program: one line for a person. `what` of the base tells it in English.
class Failure : public std::runtime_error {
public:
    /// `what` names the thing that failed, `why` says what is wrong with it.
    Failure(const Text& what, const Text& why);

    const Text& text() const noexcept { return m_text; }

private:
    Text m_text;
};

/// A fault of the command line, as std::invalid_argument is, in any language.
class UsageError : public std::invalid_argument {
public:
    explicit UsageError(const Text& text);

    const Text& text() const noexcept { return m_text; }

private:
    Text m_text;
};

/// What the system says about one of its error numbers.
std::string textOfError(int error);
/// The description of `failure`, or what its result code stands for.
std::string textOf(const vx::Exception& failure);
/// What the system says about the error that a result code was made of; else the code in hexadecimal.
std::string textOfResult(std::int32_t result);

} // namespace vxtools
