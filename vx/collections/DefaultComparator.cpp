#include "vx/collections/DefaultComparator.h"

#include "vx/detail/MadeOnce.h"
#include "vx/util/Comparator.h"

namespace vx::collections {

namespace {

// A static object of the library and not of the function: it is destroyed after the host's static objects, which may be
// collections.
constinit vx::detail::MadeOnce<util::Comparator> g_defaultComparator;

} // namespace

Reference<IVXComparator> GetDefaultComparator()
{
    return g_defaultComparator.get();
}

} // namespace vx::collections
