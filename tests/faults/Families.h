#pragma once

#include "tests/vxsys/Scratch.h"
#include "vx/Exception.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// What is to be done under faults, and what a caller sees of its outcome. Both are called again and again.
struct Operation {
    std::function<void()> run;
    std::function<std::string()> look = [] { return std::string(); };
};

/// What a failure may leave of the files and of what `look` sees.
enum class After {
    OLD_STATE, ///< all as it was, or all of the new: a step after the last change may fail too
    PART, ///< the first part of the new state
    COMPLETED, ///< a part as well, and what the second try makes whole
    ANYTHING ///< the operation consumes what it works on
};

/// A row of the test: `prepare` makes the operation in a folder, in which hidden entries are no part of the state.
struct Family {
    std::string name;
    std::function<Operation(const Scratch& place)> prepare;
    After after = After::OLD_STATE;
    bool tellsSignals = false; ///< a call that a signal breaks off is a failure, as documented
};

inline void PrintTo(const Family& family, std::ostream* stream)
{
    *stream << family.name;
}

/// An operation on a value that stays between the calls.
template <class Value, class Work, class Look>
Operation on(std::shared_ptr<Value> value, Work work, Look look)
{
    return {[=] { work(*value); }, [=] { return look(*value); }};
}

/// Those that need only memory, and those that call the system.
std::vector<Family> memoryFamilies();
std::vector<Family> fileFamilies();
std::vector<Family> systemFamilies();
