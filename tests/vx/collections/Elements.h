#pragma once

#include "tests/vx/Common.h"
#include "vx/Object.h"
#include "vx/util/Comparator.h"

#include <typeindex>

namespace vx::collections {

/// A number that is compared and hashed by its value. The class counts its objects.
class Item : public Object {
public:
    explicit Item(int value)
        : m_value(value)
    {
        ++s_alive;
    }
    ~Item() noexcept(false) override { --s_alive; }

    int compareTo(const Object& other) const override { return m_value - dynamic_cast<const Item&>(other).m_value; }
    bool equals(const Object& other) const override { return compareTo(other) == 0; }
    std::uint32_t hashCode() const override { return static_cast<std::uint32_t>(m_value); }

    int getValue() const { return m_value; }

    static inline int s_alive = 0;

private:
    int m_value;
};

class Looking : public Object {
public:
    explicit Looking(std::function<void()> look)
        : m_look(std::move(look))
    {
    }
    ~Looking() noexcept(false) override { m_look(); }

private:
    std::function<void()> m_look;
};

/// Compares as the library does, except in the call that `m_calls` counts down to.
class WatchedComparator : public ComObject, public util::ComparatorFace {
public:
    VX_OBJECT_UNKNOWN(ComObject)

    std::int32_t Compare(const IVXUnknown* a, const IVXUnknown* b, int* result) const override
    {
        return isTime() ? m_failure() : ComparatorFace::Compare(a, b, result);
    }
    std::int32_t Hash(const IVXUnknown* a, std::uint32_t* result) const override
    {
        return isTime() ? m_failure() : ComparatorFace::Hash(a, result);
    }

    mutable int m_calls = 1000;
    std::function<std::int32_t()> m_failure = [] { return RESULT_TIMED_OUT; };

private:
    bool isTime() const { return m_calls-- == 0; }
};

constexpr int NO_ITEM = -1;

/// A new item for a collection; null for NO_ITEM.
inline Reference<IVXUnknown> item(int value)
{
    return value == NO_ITEM ? nullptr : (new Item(value))->GetUnknown();
}

inline int valueOf(const IVXUnknown* element)
{
    return element == nullptr ? NO_ITEM : dynamic_cast<const Item&>(*element).getValue();
}

inline std::string textOf(int value)
{
    return value == NO_ITEM ? "null" : std::to_string(value);
}
inline std::string textOf(const Reference<IVXUnknown>& element)
{
    return textOf(valueOf(element.get()));
}
inline std::string textOf(const Reference<Item>& element)
{
    return textOf(element == nullptr ? NO_ITEM : element->getValue());
}

/// The elements of a collection, or of a model of one, in their order.
template <class Elements>
std::string textOfAll(const Elements& elements)
{
    std::string text;
    for (const auto& element : elements)
        text += textOf(element) + ' ';
    return text;
}

/// The result of `work`, or the kind of its exception. It is the exact type, because all derive from the plain one.
template <class Work>
std::string outcome(Work&& work)
{
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            return "done";
        } else {
            return textOf(work());
        }
    } catch (const ResultException& failure) {
        return "result " + std::to_string(failure.getResult());
    } catch (const Exception& failure) {
        const std::map<std::type_index, const char*> kinds {
            {typeid(Exception), "plain"},
            {typeid(RangeErrorException), "range"},
            {typeid(IllegalStateException), "state"},
            {typeid(UnsupportedOperationException), "unsupported"},
            {typeid(CastFailedException), "cast"},
        };
        const auto kind = kinds.find(typeid(failure));
        return kind != kinds.end() && failure.getDescription().isEmpty() ? kind->second : typeid(failure).name();
    }
}

/// All have the hash of the text without the number, because the hash does not read the digits.
inline std::u16string collidingText(std::uint32_t number)
{
    std::u16string text(64, u'0');
    for (std::size_t place = 1; number != 0; place += 2, number /= 10)
        text[place] = static_cast<char16_t>(u'0' + number % 10);
    return text;
}

} // namespace vx::collections
