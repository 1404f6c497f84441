#pragma once

#include <vx/Exception.h>

#include <stdexcept>
#include <string>

namespace vxtools {

/// What ends the program: one line for a person.
class Failure : public std::runtime_error {
public:
    /// `what` names the thing that failed, `why` says what is wrong with it.
    Failure(const std::string& what, const std::string& why)
        : std::runtime_error(what + ": " + why)
    {
    }
};

/// What the system says about one of its error numbers.
std::string textOfError(int error);
/// The description of `failure`, or what its result code stands for.
std::string textOf(const vx::Exception& failure);

} // namespace vxtools
