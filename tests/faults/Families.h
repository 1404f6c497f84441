#pragma once

#include "tests/vxsys/Scratch.h"
#include "vx/vxlib4.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// An operation to be run under faults, and a function that shows its outcome to a caller. Both are called again and
/// again.
struct Operation {
    std::function<void()> run;
    std::function<std::string()> look = [] { return std::string(); };
};

/// What the files and the result of `look` may be after a failure.
enum class After {
    OLD_STATE, ///< the old state, or the complete new one: a step after the last change may fail too
    PART, ///< or a part of the new state
    ANYTHING ///< the operation consumes what it works on
};

/// A row of the test: `prepare` makes the operation in a folder. Hidden entries of the folder are not part of the
/// state.
struct Family {
    std::string name;
    std::function<Operation(const Scratch& place)> prepare;
    After after = After::OLD_STATE;
};

inline void PrintTo(const Family& family, std::ostream* stream)
{
    *stream << family.name;
}

/// An operation on a value that is kept between the calls.
template <class Value, class Work, class Look>
Operation on(std::shared_ptr<Value> value, Work work, Look look)
{
    return {[=] { work(*value); }, [=] { return look(*value); }};
}

/// The families that only need memory, and those that call the system.
std::vector<Family> memoryFamilies();
std::vector<Family> fileFamilies();
std::vector<Family> systemFamilies();
