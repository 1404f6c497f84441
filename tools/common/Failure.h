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

/// What an error number of the system means.
std::string textOfError(int error);
/// The description of `failure`, or what its result code means: for a line that names the thing that failed by itself.
std::string textOf(const vx::Exception& failure);
std::string textOfResult(std::int32_t result);

} // namespace vxtools
