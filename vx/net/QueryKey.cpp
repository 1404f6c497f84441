#include "vx/net/QueryKey.h"

namespace vx::net {

QueryKey::QueryKey(const String& key)
    : String(key)
{
}

QueryKey::~QueryKey() noexcept = default;

int QueryKey::compareTo(const Object& other) const
{
    return lowerCase().compare(other.toString(), true);
}

bool QueryKey::equals(const Object& other) const
{
    return lowerCase().equals(other.toString(), true);
}

std::uint32_t QueryKey::hashCode() const
{
    return lowerCase().hashCode();
}

const String& QueryKey::lowerCase() const
{
    if (m_lowerCase.isEmpty() && !isEmpty()) {
        m_lowerCase = static_cast<const String&>(*this);
        m_lowerCase.toLower();
    }
    return m_lowerCase;
}

} // namespace vx::net
