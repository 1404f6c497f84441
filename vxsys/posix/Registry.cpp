#include "vxsys/Registry.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/posix/RegistryStore.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Owns the texts to which the elements refer.
struct VXRegistryEnumTag {
    bool ofKeys = false;
    std::size_t position = 0;
    std::vector<std::u16string> keys;
    std::u16string units;
    std::u16string machineUnits;
    std::vector<vxsys::detail::RegistryValue> values;
};

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

/// Runs the work of an operation and returns its result; exhausted memory is a result too.
template <std::invocable Work>
std::int32_t guarded(Work&& work) noexcept
{
    try {
        return work();
    } catch (const std::exception&) { // a text beyond its maximum length is treated like exhausted memory
        return RESULT_OUT_OF_MEMORY;
    }
}

/// The numbers of the system for its roots are accepted as well.
ENUM_VX_HKEY hiveOf(ENUM_VX_HKEY hive) noexcept
{
    switch (static_cast<std::uint32_t>(hive)) {
    case 0x80000000:
        return VX_HKEY_CLASSES_32;
    case 0x80000001:
        return VX_HKEY_USER;
    case 0x80000002:
        return VX_HKEY_CONFIG_32;
    default:
        return hive;
    }
}

std::int32_t assign(RegistryPath& path, ENUM_VX_HKEY hive, const char16_t* key)
{
    return key != nullptr && hiveOf(hive) <= VX_HKEY_CONFIG_64 ? path.assign(key) : RESULT_INVALID_ARGUMENT;
}

/// Reads the units of the record of a key. A store that does not exist yet is treated as an empty one.
std::int32_t readKey(const std::string& place, ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string& units,
    RegistryFile* file = nullptr)
{
    RegistryStore store;
    if (const std::int32_t result = store.open(place); failed(result))
        return result == RESULT_NOT_FOUND && path.steps().empty() ? RESULT_OK : result;
    return store.read(hiveOf(hive), path, units, file);
}

/// Finds a value in the units of a record.
std::int32_t findValue(RegistryPlace& place, std::u16string_view units, std::u16string_view name)
{
    return place.find(units, name) ? RESULT_OK : RESULT_STORE_CORRUPT;
}

/// Reads both stores by `read(place, isMachine)`, the user's first. RESULT_NOT_FOUND if neither has the key.
template <class Read>
std::int32_t readBoth(Read&& read)
{
    const std::int32_t result = read(RegistryStore::place(), false);
    if (failed(result) && result != RESULT_NOT_FOUND)
        return result;
    const std::int32_t more = read(RegistryStore::machinePlace(), true);
    return more == RESULT_NOT_FOUND ? result : more;
}

/// Brings the elements of both stores, those of the user first, into the order of their names, and removes the second
/// one of two with the same name.
template <class Element, class Name>
void merge(std::vector<Element>& elements, Name&& name)
{
    std::stable_sort(elements.begin(), elements.end(), [&](const Element& left, const Element& right) {
        return foldRegistryName(name(left)) < foldRegistryName(name(right));
    });
    const auto isSame
        = [&](const Element& left, const Element& right) { return isSameRegistryName(name(left), name(right)); };
    elements.erase(std::unique(elements.begin(), elements.end(), isSame), elements.end());
}

/// The result of the removal of a key that the user's store does not have, or of a value (unless `name` is null).
std::int32_t resultOfMissing(ENUM_VX_HKEY hive, const RegistryPath& path, const char16_t* name)
{
    std::u16string units;
    RegistryPlace place;
    const std::int32_t result = inOrder([&] { return readKey(RegistryStore::machinePlace(), hive, path, units); },
        [&] { return findValue(place, units, name != nullptr ? name : u""); });
    if (result == RESULT_NOT_FOUND || (!failed(result) && name != nullptr && place.value() == nullptr))
        return RESULT_NOT_FOUND;
    return RESULT_ACCESS_DENIED;
}

bool isWhole(ENUM_VX_REG_TYPE type, std::int32_t length) noexcept
{
    switch (type) {
    case VX_REG_STRING:
        return length % static_cast<std::int32_t>(sizeof(char16_t)) == 0;
    case VX_REG_UINT32:
        return length == sizeof(std::uint32_t);
    case VX_REG_UINT64:
        return length == sizeof(std::uint64_t);
    case VX_REG_BINARY:
        return true;
    }
    return false;
}

/// Adds `value` to the record of a key, unless the record already has exactly this value.
std::int32_t setValue(ENUM_VX_HKEY hive, const RegistryPath& path, const RegistryValue& value)
{
    RegistryChange change;
    if (const std::int32_t result = change.begin(true); failed(result))
        return result;
    std::u16string units;
    const std::int32_t result = change.read(hive, path, units);
    if (result == RESULT_NOT_FOUND || (!failed(result) && units.empty()))
        return change.create(hive, path, {value});
    if (failed(result))
        return result;
    RegistryPlace place;
    if (!place.find(units, value.name))
        return RESULT_STORE_CORRUPT;
    const RegistryValue* old = place.value();
    if (old != nullptr && old->type == value.type && old->data == value.data)
        return RESULT_OK;
    place.put(units, value);
    return change.replace(hive, path, units);
}

template <class Read>
std::int32_t openEnum(VXRegistryEnum* handle, Read&& read) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = nullptr;
    return guarded([&] {
        auto elements = std::make_unique<VXRegistryEnumTag>();
        const std::int32_t result = read(*elements);
        if (!failed(result))
            *handle = elements.release();
        return result;
    });
}

std::int32_t copyName(std::u16string_view source, char16_t* name, std::int32_t* length) noexcept
{
    const std::int32_t room = *length;
    *length = static_cast<std::int32_t>(source.size());
    if (room < *length)
        return RESULT_BUFFER_TOO_SMALL;
    source.copy(name, source.size());
    return RESULT_OK;
}

/// False if `data` is requested and has no room for the value.
bool copyData(
    const RegistryValue& value, ENUM_VX_REG_TYPE* type, void* data, std::int32_t room, std::int32_t* length) noexcept
{
    if (type != nullptr)
        *type = value.type;
    if (length == nullptr)
        return true;
    *length = static_cast<std::int32_t>(value.data.size());
    if (data == nullptr)
        return true;
    if (room < *length)
        return false;
    std::memcpy(data, value.data.data(), value.data.size());
    return true;
}

std::int32_t copyPlace(std::string_view path, char* place, std::int32_t size) noexcept
{
    if (place == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (size < 0 || path.size() >= static_cast<std::size_t>(size))
        return RESULT_BUFFER_TOO_SMALL;
    path.copy(place, path.size());
    place[path.size()] = '\0';
    return RESULT_OK;
}

} // namespace

std::int32_t VXRegistryCreateKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept
{
    return guarded([&] {
        RegistryPath path;
        RegistryChange change;
        if (const std::int32_t result
            = inOrder([&] { return assign(path, hive, key); }, [&] { return change.begin(true); });
            failed(result))
            return result;
        std::u16string units;
        const std::int32_t result = change.read(hiveOf(hive), path, units);
        if (result == RESULT_NOT_FOUND)
            return change.create(hiveOf(hive), path, {});
        RegistryPlace place;
        return failed(result) ? result : findValue(place, units, u"");
    });
}

std::int32_t VXRegistryDeleteKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept
{
    return guarded([&] {
        RegistryPath path;
        RegistryChange change;
        const std::int32_t result = inOrder([&] { return assign(path, hive, key); },
            [&] { return path.steps().empty() ? RESULT_ACCESS_DENIED : change.begin(false); },
            [&] { return change.remove(hiveOf(hive), path); });
        return result == RESULT_NOT_FOUND ? resultOfMissing(hive, path, nullptr) : result;
    });
}

std::int32_t VXRegistrySetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name, ENUM_VX_REG_TYPE type,
    const void* data, std::int32_t length) noexcept
{
    if (name == nullptr || length < 0 || (data == nullptr && length != 0) || !isWhole(type, length))
        return RESULT_INVALID_ARGUMENT;
    return guarded([&] {
        RegistryPath path;
        const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(length));
        return inOrder([&] { return assign(path, hive, key); }, [&] { return checkRegistryName(name); },
            [&] {
                return setValue(hiveOf(hive), path, {name, type, bytes});
            });
    });
}

std::int32_t VXRegistryGetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name, ENUM_VX_REG_TYPE* type,
    void* data, std::int32_t* length) noexcept
{
    if (name == nullptr || (data != nullptr && length == nullptr))
        return RESULT_INVALID_ARGUMENT;
    const std::int32_t room = length != nullptr ? std::exchange(*length, 0) : 0;
    return guarded([&] {
        if (key == nullptr)
            return RESULT_INVALID_ARGUMENT;
        const auto copy = [&](const RegistryValue& value) {
            return copyData(value, type, data, room, length) ? RESULT_OK : RESULT_BUFFER_TOO_SMALL;
        };
        const auto find = [&](const std::string& place) {
            const RegistryQuestion question {place, hiveOf(hive), key, name};
            if (RegistryAnswer answer; answer.find(question))
                return copy(answer.value());

            RegistryPath path;
            std::u16string units;
            RegistryPlace found;
            RegistryFile file;
            if (const std::int32_t result = inOrder([&] { return assign(path, hive, key); },
                    [&] { return readKey(place, hive, path, units, &file); },
                    [&] { return findValue(found, units, name); });
                failed(result))
                return result;
            const RegistryValue* value = found.value();
            if (value == nullptr)
                return RESULT_NOT_FOUND;
            RegistryAnswer::keep(question, file, *value);
            return copy(*value);
        };
        const std::int32_t result = find(RegistryStore::place());
        return result == RESULT_NOT_FOUND ? find(RegistryStore::machinePlace()) : result;
    });
}

std::int32_t VXRegistryDeleteValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name) noexcept
{
    if (name == nullptr)
        return RESULT_INVALID_ARGUMENT;
    return guarded([&] {
        RegistryPath path;
        RegistryChange change;
        std::u16string units;
        RegistryPlace place;
        if (const std::int32_t result
            = inOrder([&] { return assign(path, hive, key); }, [&] { return change.begin(false); },
                [&] { return change.read(hiveOf(hive), path, units); }, [&] { return findValue(place, units, name); });
            failed(result))
            return result == RESULT_NOT_FOUND ? resultOfMissing(hive, path, name) : result;
        if (place.value() == nullptr)
            return resultOfMissing(hive, path, name);
        place.remove(units);
        return change.replace(hiveOf(hive), path, units);
    });
}

std::int32_t VXRegistryOpenKeyEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept
{
    return openEnum(handle, [&](VXRegistryEnumTag& elements) {
        elements.ofKeys = true;
        RegistryPath path;
        if (const std::int32_t result = assign(path, hive, key); failed(result))
            return result;
        const std::int32_t result = readBoth([&](const std::string& place, bool) {
            RegistryStore store;
            if (const std::int32_t opened = store.open(place); failed(opened))
                return opened == RESULT_NOT_FOUND && path.steps().empty() ? RESULT_OK : opened;
            return store.readSubkeys(hiveOf(hive), path, elements.keys);
        });
        merge(elements.keys, [](const std::u16string& name) { return std::u16string_view(name); });
        return result;
    });
}

std::int32_t VXRegistryOpenValueEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept
{
    return openEnum(handle, [&](VXRegistryEnumTag& elements) {
        RegistryPath path;
        if (const std::int32_t result = assign(path, hive, key); failed(result))
            return result;
        const std::int32_t result = readBoth([&](const std::string& place, bool isMachine) {
            RegistryRecord record;
            std::u16string& units = isMachine ? elements.machineUnits : elements.units;
            const std::int32_t read = readKey(place, hive, path, units);
            if (failed(read) || units.empty())
                return read;
            if (!record.read(units))
                return RESULT_STORE_CORRUPT;
            elements.values.insert(elements.values.end(), record.values.begin(), record.values.end());
            return RESULT_OK;
        });
        merge(elements.values, [](const RegistryValue& value) { return value.name; });
        return result;
    });
}

std::int32_t VXRegistryEnumNextKey(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength) noexcept
{
    if (name == nullptr || nameLength == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (handle == nullptr || !handle->ofKeys)
        return RESULT_INVALID_HANDLE;
    if (handle->position == handle->keys.size())
        return RESULT_NO_MORE_ITEMS;
    const std::int32_t result = copyName(handle->keys[handle->position], name, nameLength);
    handle->position += !failed(result);
    return result;
}

std::int32_t VXRegistryEnumNextValue(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength,
    ENUM_VX_REG_TYPE* type, void* data, std::int32_t* dataLength) noexcept
{
    if (name == nullptr || nameLength == nullptr || (data != nullptr && dataLength == nullptr))
        return RESULT_INVALID_ARGUMENT;
    if (handle == nullptr || handle->ofKeys)
        return RESULT_INVALID_HANDLE;
    if (handle->position == handle->values.size())
        return RESULT_NO_MORE_ITEMS;
    const RegistryValue& value = handle->values[handle->position];
    const std::int32_t result = copyName(value.name, name, nameLength);
    if (failed(result))
        return result;
    ++handle->position;
    const std::int32_t room = dataLength != nullptr ? *dataLength : 0;
    return copyData(value, type, data, room, dataLength) ? RESULT_OK : RESULT_FALSE;
}

std::int32_t VXRegistryCloseEnum(VXRegistryEnum handle) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_HANDLE;
    delete handle;
    return RESULT_OK;
}

std::int32_t VXRegistryGetPlace(char* place, std::int32_t size) noexcept
{
    try {
        return copyPlace(RegistryStore::place(), place, size);
    } catch (const std::exception&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

std::int32_t VXRegistryGetMachinePlace(char* place, std::int32_t size) noexcept
{
    return copyPlace(RegistryStore::machinePlace(), place, size);
}
