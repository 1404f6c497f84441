#include "vx/Describe.h"

#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/detail/InsertUtf8.h"
#include "vx/detail/OneLine.h"
#include "vx/detail/TypeName.h"
#include "vx/net/SocketResult.h"
#include "vxsys/Net.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <initializer_list>
#include <new>
#include <string>

namespace vx {

namespace {

constexpr std::uint32_t FACILITY_MASK = 0xFFFF0000;
constexpr std::uint32_t SOCKET_FACILITY = 0x8BE30000;

bool isSocketResult(std::int32_t result) noexcept
{
    return (static_cast<std::uint32_t>(result) & FACILITY_MASK) == SOCKET_FACILITY;
}

/// The error number of the system that maps to this socket result, or 0.
int nativeOfSocketResult(std::int32_t result) noexcept
{
    constexpr int LAST_ERROR = 133;
    for (int error = 1; error <= LAST_ERROR; ++error) {
        if (VX_E_SOCKETFromNativeSocketError(VXNativeSocketError(error)) == result)
            return error;
    }
    return 0;
}

String hexadecimal(std::int32_t result)
{
    std::array<char, 11> digits {};
    std::snprintf(digits.data(), digits.size(), "0x%08X", static_cast<unsigned>(result));
    return String(std::string_view(digits.data()));
}

/// Whether `text` already ends with the words of `part`.
bool saysAtEnd(std::u16string_view text, std::u16string_view part)
{
    return text.ends_with(part) && (text.size() == part.size() || text[text.size() - part.size() - 1] == u' ');
}

/// Joins the parts on one line. Leaves out a part that is empty or repeats the end of the text before it. The full stop of a
/// sentence is dropped if another part follows; a part that begins with a small letter may end in the name of a file.
String joined(std::initializer_list<String> parts)
{
    std::u16string text;
    bool endsInSentence = false;
    for (const String& part : parts) {
        text.erase(text.find_last_not_of(u' ') + 1); // the descriptions of some results end in a blank
        if (part.view().empty() || saysAtEnd(text, part.view()))
            continue;
        if (endsInSentence && text.ends_with(u'.'))
            text.pop_back();
        text.append(text.empty() ? u"" : u": ").append(part.view());
        endsInSentence = part[0] >= u'A' && part[0] <= u'Z';
    }
    return detail::onOneLine(text);
}

class ResultCategory final : public std::error_category {
public:
    const char* name() const noexcept override { return "vxlib4"; }

    std::string message(int result) const override { return describe(result).toUtf8(); }

    std::error_condition default_error_condition(int result) const noexcept override
    {
        const int native = isSocketResult(result) ? nativeOfSocketResult(result) : VXResultToNative(result);
        return native != 0 ? std::generic_category().default_error_condition(native)
                           : std::error_condition(result, *this);
    }
};

/// Why std::terminate was called.
std::string reasonOfTermination()
{
    if (const std::exception_ptr failure = std::current_exception())
        return "uncaught " + describe(failure).toUtf8();
    if (std::uncaught_exceptions() > 0) // compilers do not always catch it first
        return "an exception left an operation that must not throw";
    return "std::terminate was called";
}

[[noreturn]] void reportAndAbort() noexcept
{
    try {
        std::fprintf(stderr, "The program ends: %s\n", reasonOfTermination().c_str());
    } catch (...) {
        std::fputs("The program ends by an uncaught exception, and memory is exhausted\n", stderr);
    }
    std::abort();
}

} // namespace

String describe(std::int32_t result)
{
    if (isSocketResult(result)) {
        const auto value = static_cast<ENUM_VX_E_SOCKET>(result);
        if (const String text(VXGetDescriptionFromVX_E_SOCKET(value)); text != u"FAIL")
            return detail::onOneLine(text.view());
    }
    if (const char16_t* const text = VXResultGetText(result))
        return text;
    return (result < 0 ? u"unknown failure " : u"success ") + hexadecimal(result);
}

String describe(const Exception& failure)
{
    const std::int32_t result = getCause(failure);
    return joined({detail::readableName(typeid(failure)), getOccasion(failure), failure.getDescription(),
               describe(result)})
        + u" (" + hexadecimal(result) + u")";
}

String explain(const Exception& failure)
{
    const String description = failure.getDescription();
    const std::int32_t result = getCause(failure);
    const bool saysMore = description.view().empty() || result != RESULT_FAIL;
    return joined({getOccasion(failure), description, saysMore ? describe(result) : String()});
}

String describe(const std::exception_ptr& failure)
{
    if (failure == nullptr)
        return u"no exception";
    try {
        std::rethrow_exception(failure);
    } catch (const Exception& known) {
        return describe(known);
    } catch (const std::exception& standard) {
        return joined({detail::readableName(typeid(standard)), detail::foreignText(standard.what())});
    } catch (...) {
        return u"exception of type " + detail::readableName(*abi::__cxa_current_exception_type());
    }
}

std::ostream& operator<<(std::ostream& stream, const Exception& failure)
{
    struct Description {
        const Exception& failure;
        std::string toUtf8() const { return describe(failure).toUtf8(); }
    };
    return detail::insertUtf8(stream, Description {failure});
}

void installTerminateReport() noexcept
{
    std::set_terminate(reportAndAbort);
}

const std::error_category& resultCategory() noexcept
{
    // Never destroyed, because destructors of static objects use error codes too.
    alignas(ResultCategory) static std::byte s_room[sizeof(ResultCategory)];
    static const auto* const s_category = new (s_room) ResultCategory;
    return *s_category;
}

std::error_code errorCodeOf(std::int32_t result) noexcept
{
    return {result < 0 ? result : 0, resultCategory()};
}

std::error_code errorCodeOf(const Exception& failure) noexcept
{
    return errorCodeOf(getCause(failure));
}

} // namespace vx
