#include "vx/collections/DefaultComparator.h"

#include "vx/util/Comparator.h"

#include <mutex>

namespace vx::collections {

namespace {

// A static of the library and not of the function: collections of the host's own statics go before it.
constinit Reference<IVXComparator> g_defaultComparator;
constinit std::once_flag g_created;

} // namespace

Reference<IVXComparator> GetDefaultComparator()
{
    std::call_once(g_created, [] { g_defaultComparator = new util::Comparator; });
    return g_defaultComparator;
}

} // namespace vx::collections
