#pragma once

#include "vx/Api.h"
#include "vx/Result.h"

#include <cstdint>
#include <string>

namespace vx {

class String;

/// A string's text as a pointer, for a function that reads UTF-16 up to a zero unit.
///
/// `String::getData` is no such pointer: a part of another text that was wrapped (AcquireWrap) has no zero unit at its
/// end, and the function would read on. This class points to the string's own text where a zero unit ends it, and makes a
/// copy elsewhere. A copied text may outlive the string; any other ends with the string, or at its next change, so use
/// the object within one call. To the function, a zero unit inside the text is the end of the text: see SystemName.
class VX_API TerminatedText {
public:
    explicit TerminatedText(const String& text);
    /// Always copies, since the string is about to end.
    explicit TerminatedText(String&& text);
    TerminatedText(const TerminatedText&) = delete;
    TerminatedText& operator=(const TerminatedText&) = delete;

    /// Never null.
    const char16_t* get() const noexcept { return m_text; }
    operator const char16_t*() const noexcept { return m_text; }

private:
    std::u16string m_copy;
    const char16_t* m_text;
};

/// A TerminatedText for the name of something in the operating system, a registry or another component. A zero unit
/// would cut the name to that of something else, so such a text is refused.
class VX_API SystemName : public TerminatedText {
public:
    /// Throws ResultException with the code `refusal` for a text with a zero unit in it.
    explicit SystemName(const String& text, std::int32_t refusal = RESULT_INVALID_NAME);
    explicit SystemName(String&& text, std::int32_t refusal = RESULT_INVALID_NAME);

    /// The text has no zero unit in it.
    static bool isValid(const String& text);
};

} // namespace vx
