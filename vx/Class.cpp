#include "vx/Class.h"

#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TypeName.h"

#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace vx {

namespace {

struct NameHash {
    std::size_t operator()(std::u16string_view name) const // not `noexcept`: then the map keeps the hashes
    {
        return detail::mixedHash(name);
    }
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
    std::unordered_map<std::u16string_view, Reference<Class>, NameHash> byName;
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
    const auto place = m_impl->byName.emplace(name, record).first;
    try {
        m_impl->byType.emplace(type, record);
    } catch (...) {
        m_impl->byName.erase(place);
        throw;
    }
    return record.get();
}

void ClassManagerBase::unregisterClass(const char16_t* name) noexcept
{
    if (name == nullptr)
        return;
    const auto place = m_impl->byName.find(name);
    if (place == m_impl->byName.end())
        return;
    std::erase_if(m_impl->byType, [&](const auto& each) { return each.second == place->second; });
    m_impl->byName.erase(place);
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
    const auto found = m_impl->byName.find(name);
    return found != m_impl->byName.end() ? found->second.get() : nullptr;
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
