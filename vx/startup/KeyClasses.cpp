#include "vx/startup/detail/KeyClasses.h"

#include "legacy/CVXByteBuffer.h"
#include "vx/collections/vorb/detail/TextElements.h"
#include "vx/io/ByteBuffer.h"
#include "vx/net/QueryKey.h"
#include "vx/util/RegistryKey.h"

namespace vx::startup::detail {

namespace {

using collections::vorb::detail::orderedClass;

constexpr collections::vorb::detail::OrderedClass KEY_CLASSES[] = {
    orderedClass<io::ByteBuffer>(),
    orderedClass<CVXByteBuffer>(),
    orderedClass<util::RegistryKey>(),
    orderedClass<net::QueryKey>(),
};

} // namespace

void registerKeyClasses() noexcept
{
    collections::vorb::detail::setOrderedClasses(KEY_CLASSES);
}

} // namespace vx::startup::detail
