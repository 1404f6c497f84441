#include "vx/util/vorb/VorbPropertySet.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/util/CopyCharBuffer.h"

namespace vx::util::vorb {

namespace {

using collections::vorb::HashSet;

} // namespace

VorbPropertySet::VorbPropertySet(IPropertySet* foreign, const PropertySet*)
    : m_foreign(foreign)
{
    if (foreign == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

VorbPropertySet::~VorbPropertySet() noexcept(false) = default;

void VorbPropertySet::set(const String& key, const String& value)
{
    const Reference<String> text(new String(value));
    throwIfFailed(m_foreign->Set(SystemName(key), text->GetUnknown()));
}

String VorbPropertySet::get(const String& key) const
{
    Reference<IVXCharBuffer> value;
    throwIfFailed(m_foreign->Get(SystemName(key), IVXCharBuffer::IID, value.outVoid()));
    String text(64);
    VXCopyCharBuffer(&text, value.get());
    return text;
}

bool VorbPropertySet::hasProperty(const String& key) const
{
    Reference<IVXCharBuffer> value;
    try {
        return m_foreign->Get(SystemName(key), IVXCharBuffer::IID, value.outVoid()) >= 0;
    } catch (const Exception&) { // a set of this library throws for a key that it lacks
        return false;
    }
}

Reference<const collections::Set<String>> VorbPropertySet::getKeys() const
{
    Reference<IPropertyKeyIterator> iterator;
    throwIfFailed(m_foreign->GetKeyIterator(IPropertyKeyIterator::IID, iterator.outVoid()));
    if (iterator == nullptr)
        throwResult(RESULT_POINTER);

    const Reference<collections::Set<String>> keys(new collections::Set<String>(new HashSet));
    while (iterator->IsAtEnd() == 0) {
        Reference<IVXCharBuffer> key;
        throwIfFailed(iterator->GetNext(IVXCharBuffer::IID, key.outVoid()));
        const Reference<String> text(new String);
        VXCopyCharBuffer(text.get(), key.get());
        keys->add(text.get());
    }
    return keys;
}

void VorbPropertySet::clear()
{
    const Reference<const collections::Set<String>> keys = getKeys();
    for (const Reference<String>& key : *keys)
        remove(*key);
}

String VorbPropertySet::remove(const String& key)
{
    Reference<IVXCharBuffer> value;
    String text;
    if (!SystemName::isValid(key))
        return text;
    if (m_foreign->Remove(TerminatedText(key), IVXCharBuffer::IID, value.outVoid()) >= 0 && value != nullptr)
        VXCopyCharBuffer(&text, value.get());
    return text;
}

} // namespace vx::util::vorb
