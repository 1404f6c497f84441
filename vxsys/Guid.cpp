#include "vxsys/Guid.h"

#include "vxsys/Component.h"
#include "vxsys/Result.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <tuple>
#include <utility>

namespace {

using namespace vxsys::results;

/// The text form with a zero for each digit.
constexpr std::u16string_view FORM = u"{00000000-0000-0000-0000-000000000000}";

/// The position of each byte's digits.
constexpr std::array<std::uint8_t, sizeof(_GUID)> PLACES {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};

/// The two digits of each byte.
constexpr auto DIGITS = [] {
    std::array<std::array<char16_t, 2>, 256> digits {};
    for (std::size_t byte = 0; byte < digits.size(); ++byte)
        digits[byte] = {u"0123456789ABCDEF"[byte >> 4], u"0123456789ABCDEF"[byte & 0xF]};
    return digits;
}();

/// In the order of the text: each number begins with its highest byte.
using Bytes = std::array<std::uint8_t, sizeof(_GUID)>;

constexpr std::uint8_t byteOf(const _GUID& guid, std::size_t place) noexcept
{
    if (place < 4)
        return static_cast<std::uint8_t>(guid.Data1 >> (24 - 8 * place));
    if (place < 8)
        return static_cast<std::uint8_t>((place < 6 ? guid.Data2 : guid.Data3) >> (8 - 8 * (place % 2)));
    return guid.Data4[place - 8];
}

_GUID fromBytes(const Bytes& bytes) noexcept
{
    const auto word = [&](int at) { return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]); };
    _GUID guid {static_cast<std::uint32_t>(word(0)) << 16 | word(2), word(4), word(6), {}};
    std::copy(bytes.begin() + 8, bytes.end(), guid.Data4);
    return guid;
}

/// Places that the compiler knows take half the time of a loop.
template <std::size_t... INDEX>
void putDigits(const _GUID& guid, char16_t* text, std::index_sequence<INDEX...>) noexcept
{
    (std::memcpy(text + PLACES[INDEX], DIGITS[byteOf(guid, INDEX)].data(), sizeof DIGITS[0]), ...);
}

/// -1: not a hexadecimal digit
int digitOf(char16_t unit) noexcept
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    if (unit >= u'A' && unit <= u'F')
        return unit - u'A' + 10;
    if (unit >= u'a' && unit <= u'f')
        return unit - u'a' + 10;
    return -1;
}

} // namespace

std::int32_t VXComCompareGUID(const _GUID* left, const _GUID* right) noexcept
{
    if (left == nullptr || right == nullptr)
        return (left != nullptr) - (right != nullptr);
    const auto numbers = [](const _GUID& guid) { return std::tie(guid.Data1, guid.Data2, guid.Data3); };
    if (const auto order = numbers(*left) <=> numbers(*right); order != 0)
        return order < 0 ? -1 : 1;
    const int rest = std::memcmp(left->Data4, right->Data4, sizeof left->Data4);
    return (rest > 0) - (rest < 0);
}

std::int32_t VXComGUIDFromString(const char16_t* text, _GUID* guid) noexcept
{
    if (guid == nullptr)
        return RESULT_POINTER;
    *guid = {};
    if (text == nullptr)
        return RESULT_INVALID_ARGUMENT;

    Bytes bytes {};
    std::size_t digits = 0;
    for (const char16_t expected : FORM) { // also ends at the terminator, which no place expects
        const int digit = digitOf(*text);
        if (expected == u'0' ? digit < 0 : *text != expected)
            return RESULT_INVALID_ARGUMENT;
        if (expected == u'0') {
            std::uint8_t& byte = bytes[digits++ / 2];
            byte = static_cast<std::uint8_t>(byte << 4 | digit);
        }
        ++text;
    }
    if (*text != 0)
        return RESULT_INVALID_ARGUMENT;
    *guid = fromBytes(bytes);
    return RESULT_OK;
}

std::int32_t VXComStringFromGUID(const _GUID* guid, char16_t* text, std::int32_t size) noexcept
{
    if (text == nullptr)
        return RESULT_POINTER;
    if (size > 0)
        *text = 0;
    if (guid == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (size <= static_cast<std::int32_t>(FORM.size()))
        return RESULT_BUFFER_TOO_SMALL;

    std::copy(FORM.begin(), FORM.end(), text);
    text[FORM.size()] = 0;
    putDigits(*guid, text, std::make_index_sequence<sizeof(_GUID)>());
    return RESULT_OK;
}
