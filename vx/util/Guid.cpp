#include "vx/util/Guid.h"

#include "vx/Exception.h"

#include <iterator>
#include <memory>
#include <new>
#include <ostream>

namespace vx::util {

Guid::Guid(const char16_t* text)
{
    if (VXComGUIDFromString(text, &m_guid) < 0)
        throw Exception(u"invalid GUID string");
}

Guid* Guid::Generate()
{
    std::unique_ptr<Guid> guid(new (std::nothrow) Guid);
    if (guid != nullptr)
        throwIfFailed(VXComGenerateGUID(&guid->m_guid));
    return guid.release();
}

String Guid::toString() const
{
    char16_t text[39];
    throwIfFailed(VXComStringFromGUID(&m_guid, text, std::size(text)));
    return {text, static_cast<int>(std::size(text)) - 1};
}

std::ostream& operator<<(std::ostream& stream, const Guid& guid)
{
    return stream << guid.toString();
}

} // namespace vx::util
