#pragma once

#include "Messages.h"

#include <vx/Exception.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vxtools {

/// An error that ends the program with a one-line message. `what` of the base class gives the message in English.
class Failure : public std::runtime_error {
public:
    /// `what` names the thing that failed, `why` says what is wrong with it.
    Failure(const Text& what, const Text& why);
    explicit Failure(const Text& text);

    const Text& text() const noexcept { return m_text; }

private:
    Text m_text;
};

/// An error in the command line, as std::invalid_argument is, that can be reported in any language.
class UsageError : public std::invalid_argument {
public:
    explicit UsageError(const Text& text);

    const Text& text() const noexcept { return m_text; }

private:
    Text m_text;
};

/// The description of an error number of the system.
std::string textOfError(int error);
/// The description of `failure`, or else of its result code. For a message that already names the thing that failed.
std::string textOf(const vx::Exception& failure);
std::string textOfResult(std::int32_t result);

} // namespace vxtools
