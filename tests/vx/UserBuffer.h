#pragma once

#include "tests/vx/Common.h"
#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

#include <new>

namespace vx {

/// A character buffer that a program implements without code of the library. It records the calls of its locks in
/// `m_events`, and can let one of them fail. One thread at a time.
class UserBuffer final : public IVXCharBuffer {
public:
    static constexpr std::int32_t FAILURE = -0x7FFF0123;

    explicit UserBuffer(const std::u16string& text)
        : m_units(text.c_str(), text.c_str() + text.size() + 1)
        , m_length(static_cast<int>(m_units.size()))
    {
        m_events.reserve(MOST_EVENTS); // so that recording needs no memory
    }

    std::int32_t QueryInterface(const _GUID& iid, void** out) override
    {
        *out = iid == IVXUnknown::IID || iid == IVXCharBuffer::IID ? this : nullptr;
        if (*out == nullptr)
            return RESULT_NO_INTERFACE;
        AddRef();
        return RESULT_OK;
    }
    std::uint32_t AddRef() const override { return ++m_count; }
    std::uint32_t Release() const override
    {
        const std::uint32_t count = --m_count;
        if (count == 0)
            delete this;
        return count;
    }
    int GetLength() const override { return m_length; }
    const char16_t* GetData() const override { return m_units.data(); }
    std::int32_t GetReadLock(const char16_t** out) const override
    {
        *out = nullptr;
        if (fails("R"))
            return FAILURE;
        m_deepest = std::max(m_deepest, ++m_readers);
        *out = m_units.data();
        return m_isWriting ? FAILURE : RESULT_OK;
    }
    std::int32_t ReleaseReadLock() const override
    {
        --m_readers;
        return fails("r") ? FAILURE : RESULT_OK;
    }
    std::int16_t IsWritable() const override { return m_isReadOnly ? 0 : 1; }
    std::int32_t GetWriteLock(int minimumLength, char16_t** out) override
    {
        *out = nullptr;
        if (fails("W" + std::to_string(minimumLength)) || m_isWriting || m_readers != 0)
            return FAILURE;
        const std::int32_t result = ensure(minimumLength, out);
        m_isWriting = result == RESULT_OK;
        return result;
    }
    std::int32_t EnsureCapacity(int minimumLength, char16_t** out) override
    {
        *out = nullptr;
        return fails("E" + std::to_string(minimumLength)) ? FAILURE : ensure(minimumLength, out);
    }
    std::int32_t ReleaseWriteLock(int length) override
    {
        m_isWriting = false;
        if (fails("w" + std::to_string(length)))
            return FAILURE;
        m_length = length;
        return RESULT_OK;
    }
    std::int32_t FreeExtra() override { return fails("F") ? FAILURE : RESULT_OK; }

    bool isUnlocked() const { return !m_isWriting && m_readers == 0; }

    mutable std::string m_events;
    /// Each call decrements it; the one that makes it 0 fails.
    mutable int m_failing = 0;
    mutable int m_deepest = 0;
    bool m_isReadOnly = false;

private:
    static constexpr std::size_t MOST_EVENTS = 1000;

    bool fails(const std::string& event) const
    {
        if (m_events.size() + event.size() < MOST_EVENTS)
            (m_events += event) += ' ';
        return m_failing != 0 && --m_failing == 0;
    }
    std::int32_t ensure(int minimumLength, char16_t** out)
    {
        try {
            if (minimumLength > static_cast<int>(m_units.size()))
                m_units.resize(static_cast<std::size_t>(minimumLength), u'?'); // unused units are not 0
        } catch (const std::bad_alloc&) {
            return RESULT_OUT_OF_MEMORY;
        }
        *out = m_units.data();
        return RESULT_OK;
    }

    std::vector<char16_t> m_units;
    int m_length;
    bool m_isWriting = false;
    mutable int m_readers = 0;
    mutable std::uint32_t m_count = 0;
};

} // namespace vx
