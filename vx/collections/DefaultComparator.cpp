#include "vx/collections/DefaultComparator.h"

#include "vx/detail/MadeOnce.h"
#include "vx/util/Comparator.h"

namespace vx::collections {

namespace {

// A static of the library and not of the function: collections of the host's own statics go before it.
constinit vx::detail::MadeOnce<util::Comparator> g_defaultComparator;

} // namespace

Reference<IVXComparator> GetDefaultComparator()
{
    return g_defaultComparator.get();
}

} // namespace vx::collections
