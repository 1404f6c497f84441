#pragma once

#include <vx/String.h>
#include <vx/util/RegistryKey.h>

#include <iosfwd>
#include <string>
#include <vector>

/// The registry as text, in UTF-8: a line "[HIVE\KEY]" for each key, and below it a line for each value.
///
///     "name"="text"
///     "number"=u32:5
///     "large number"=u64:18446744073709551615
///     "bytes"=hex:00ff
///     ""="the default value"
///
/// In quotes, \\ \" \n \r \t and \uXXXX stand for a unit; in a key's line %XX does. Lines that are empty or begin with
/// "#" mean nothing.
namespace vxreg {

struct Value {
    ENUM_VX_REG_TYPE type = VX_REG_STRING;
    vx::String text;
    std::uint64_t number = 0;
    std::vector<signed char> bytes;
};

/// Throws UsageError for bytes that are not UTF-8.
vx::String fromUtf8(const std::string& bytes);

/// Throws vx::Exception if the value cannot be read.
Value readValue(const vx::util::RegistryKey& key, const vx::String& name);
void writeValue(const vx::util::RegistryKey& key, const vx::String& name, const Value& value);

/// Reads `text` as a value of `type` ("text", "u32", "u64" or "hex"). Throws UsageError that says what is
/// wrong.
Value parseValue(const std::string& type, const std::string& text);
/// The value alone, for a program to read: a text as it is, a number in decimal, bytes in hexadecimal.
std::string plainText(const Value& value);

std::string lineOfKey(const vx::util::RegistryKey& key);
std::string lineOfValue(const vx::String& name, const Value& value);

/// One line of the form, for a key or for a value of it.
struct Entry {
    vx::util::RegistryKey key;
    bool hasValue = false;
    vx::String name;
    Value value;
};

/// Throws UsageError that names the line and says what is wrong with it.
std::vector<Entry> parseEntries(std::istream& source);

} // namespace vxreg
