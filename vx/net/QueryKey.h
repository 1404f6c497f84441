#pragma once

#include "vx/String.h"

namespace vx::net {

/// The key of a query parameter: text that is compared without regard to case, and printed as it was given. It stores a
/// lower-case copy when it is first used; therefore also constant operations are for one thread at a time.
class VX_API QueryKey : public String {
public:
    QueryKey(const String& key);
    ~QueryKey() noexcept override;

    using String::compareTo;
    using String::equals;
    using String::hashCode;

    // Object
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

private:
    const String& lowerCase() const;

    mutable String m_lowerCase;
};

} // namespace vx::net
