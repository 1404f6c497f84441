#include "vxreg/Results.h"

#include "common/Failure.h"

#include <vx/Result.h>
#include <vx/String.h>
#include <vxsys/Registry.h>

#include <span>

namespace vxreg {

namespace {

struct Row {
    std::int32_t result;
    const char* text;
};

constexpr Row STORE[] = {
    {vx::RESULT_NOT_FOUND, "not found"},
    {vx::RESULT_ACCESS_DENIED, "denied; the store must be yours or root's, and nobody else may write there"},
    {vx::RESULT_NAME_TOO_LONG, "a name is too long"},
    {vx::RESULT_INVALID_NAME, "not a name, or the store's place is not a full path"},
    {vx::RESULT_STORE_CORRUPT, "the store's file is damaged"},
    {vx::RESULT_DISK_FULL, "the disk is full"},
    {vx::RESULT_OUT_OF_MEMORY, "out of memory"},
};

constexpr Row LIBRARY[] = {
    {vx::RESULT_NOT_FOUND, "no such file"},
    {vx::RESULT_PATH_NOT_FOUND, "no such folder"},
    {vx::RESULT_ACCESS_DENIED,
        "not to be trusted; it and the folders above it must be yours or root's, and nobody else may write there"},
    {vx::RESULT_INVALID_NAME, "not a full path"},
    {vx::RESULT_MODULE_NOT_FOUND, "cannot be loaded; something that it needs is missing"},
    {vx::RESULT_BAD_MODULE, "not a whole library of this machine"},
    {vx::RESULT_SYMBOL_NOT_FOUND, "not a component library; it does not export what one must"},
    {vx::RESULT_CLASS_NOT_AVAILABLE, "does not have this class"},
    {vx::RESULT_OUT_OF_MEMORY, "out of memory"},
};

std::string find(std::span<const Row> rows, std::int32_t result)
{
    for (const Row& row : rows) {
        if (row.result == result)
            return row.text;
    }
    return vxtools::textOfResult(result);
}

} // namespace

std::string textOfStore(std::int32_t result)
{
    return find(STORE, result);
}

std::string textOfLibrary(std::int32_t result)
{
    return find(LIBRARY, result);
}

std::string textOf(const vx::Exception& failure)
{
    const std::string text = failure.getDescription().toUtf8();
    return text.empty() ? textOfStore(failure.getResult()) : text;
}

} // namespace vxreg
