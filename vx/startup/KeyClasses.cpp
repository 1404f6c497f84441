#include "vx/startup/detail/KeyClasses.h"

#include "legacy/CVXByteBuffer.h"
#include "vx/collections/vorb/detail/TextElements.h"
#include "vx/io/ByteBuffer.h"
#include "vx/net/QueryKey.h"
#include "vx/util/RegistryKey.h"

#include <typeinfo>

namespace vx::startup::detail {

namespace {

const std::type_info* const KEY_CLASSES[] = {
    &typeid(io::ByteBuffer),
    &typeid(CVXByteBuffer),
    &typeid(util::RegistryKey),
    &typeid(net::QueryKey),
};

} // namespace

void registerKeyClasses() noexcept
{
    collections::vorb::detail::setOrderedClasses(KEY_CLASSES);
}

} // namespace vx::startup::detail
