#include "vx/Class.h"

#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/detail/MixedHash.h"
#include "vx/detail/TypeName.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace vx {

namespace {

/// The records by name, with open addressing. Its number of slots is a power of 2, which saves a division by a prime.
class ByName {
public:
    const Class* find(std::u16string_view name) const noexcept
    {
        const std::uint32_t hash = detail::mixedHash(name);
        for (std::size_t slot = hash & mask(); m_rows[slot].record != nullptr; slot = (slot + 1) & mask())
            if (m_rows[slot].hash == hash && m_rows[slot].name == name)
                return m_rows[slot].record.get();
        return nullptr;
    }

    /// Room for one more, so that the next `add` does not fail.
    void makeRoom()
    {
        if (2 * m_size < m_rows.size())
            return;
        std::vector<Row> old(2 * m_rows.size());
        old.swap(m_rows);
        for (Row& row : old)
            take(row);
    }
    void add(std::u16string_view name, const Reference<Class>& record) noexcept
    {
        Row row {name, record, detail::mixedHash(name)};
        take(row);
        ++m_size;
    }
    /// Fills the gap with rows after it that would no longer be found (Knuth, The Art of Computer Programming 3, 6.4, R).
    void remove(std::u16string_view name) noexcept
    {
        const std::uint32_t hash = detail::mixedHash(name);
        std::size_t gap = hash & mask();
        while (m_rows[gap].hash != hash || m_rows[gap].name != name)
            gap = (gap + 1) & mask();
        const Row removed = std::exchange(m_rows[gap], Row());
        for (std::size_t slot = (gap + 1) & mask(); m_rows[slot].record != nullptr; slot = (slot + 1) & mask()) {
            if (((slot - m_rows[slot].hash) & mask()) < ((slot - gap) & mask()))
                continue;
            std::swap(m_rows[gap], m_rows[slot]);
            gap = slot;
        }
        --m_size;
    }

private:
    struct Row {
        std::u16string_view name;
        Reference<Class> record; ///< null in a free slot
        std::uint32_t hash = 0;
    };
    static constexpr std::size_t FIRST_SLOTS = 512;

    std::size_t mask() const noexcept { return m_rows.size() - 1; }
    void take(Row& row) noexcept
    {
        std::size_t slot = row.hash & mask();
        while (m_rows[slot].record != nullptr)
            slot = (slot + 1) & mask();
        std::swap(m_rows[slot], row);
    }

    std::vector<Row> m_rows = std::vector<Row>(FIRST_SLOTS);
    std::size_t m_size = 0;
};

struct TypeOrder {
    bool operator()(const std::type_info* left, const std::type_info* right) const noexcept
    {
        return left->before(*right);
    }
};

} // namespace

Class::Class(const char16_t* name, const std::type_info* type, ObjectCreator creator) noexcept
    : m_name(name)
    , m_type(type)
    , m_creator(creator)
{
}

Class::~Class() noexcept = default;

const char16_t* Class::getName() const
{
    return m_name;
}

bool Class::isInstance(const Object& object) const
{
    return m_type != nullptr && typeid(object) == *m_type;
}

Object* Class::createInstance() const
{
    if (m_creator == nullptr)
        throw IllegalAccessException();
    return m_creator();
}

const Class* Class::forName(const char16_t* name)
{
    return ClassManager::getInstance()->lookupName(name);
}

const Class* Class::forType(const std::type_info* type)
{
    return ClassManager::getInstance()->lookupType(type);
}

class ClassManagerBase::Impl {
public:
    ByName byName;
    std::map<const std::type_info*, Reference<Class>, TypeOrder> byType;
};

ClassManagerBase::ClassManagerBase()
    : m_impl(std::make_unique<Impl>())
{
}

ClassManagerBase::~ClassManagerBase() = default;

void ClassManagerBase::registerClass(const char16_t* name, const std::type_info* type, ObjectCreator creator)
{
    tryRegister(name, type, creator);
}

const Class* ClassManagerBase::tryRegister(const char16_t* name, const std::type_info* type, ObjectCreator creator)
{
    if (name == nullptr || type == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    if (find(name) != nullptr)
        return nullptr;
    const Reference<Class> record(new Class(name, type, creator));
    m_impl->byName.makeRoom();
    m_impl->byType.emplace(type, record);
    m_impl->byName.add(name, record);
    return record.get();
}

void ClassManagerBase::unregisterClass(const char16_t* name) noexcept
{
    if (name == nullptr)
        return;
    const Class* const record = find(name);
    if (record == nullptr)
        return;
    std::erase_if(m_impl->byType, [record](const auto& each) { return each.second == record; });
    m_impl->byName.remove(name);
}

const Class* ClassManagerBase::lookupName(const char16_t* name)
{
    if (name == nullptr)
        throw ClassNotFoundException();
    if (const Class* record = find(name))
        return record;
    throw ClassNotFoundException(name);
}

const Class* ClassManagerBase::find(const char16_t* name) const noexcept
{
    return m_impl->byName.find(name);
}

const Class* ClassManagerBase::lookupType(const std::type_info* type)
{
    if (type == nullptr)
        throw ClassNotFoundException();
    const auto found = m_impl->byType.find(type);
    if (found == m_impl->byType.end())
        throw ClassNotFoundException(detail::readableName(*type));
    return found->second.get();
}

template class util::Singleton<ClassManagerBase, &g_pGlobalLock>;

ClassRegistration::ClassRegistration(const char16_t* name, const std::type_info* type, ObjectCreator creator) noexcept
    : m_name(name)
{
    try {
        m_record = ClassManager::getInstance()->tryRegister(name, type, creator);
    } catch (...) { // isRegistered tells
    }
}

ClassRegistration::~ClassRegistration()
{
    if (m_record == nullptr)
        return;
    try {
        ClassManagerBase& manager = *ClassManager::getInstance();
        if (manager.find(m_name) == m_record) // it is another one if the library was stopped and started since
            manager.unregisterClass(m_name);
    } catch (const IllegalStateException&) { // the library has stopped, and the registry is gone
    }
}

} // namespace vx
