#pragma once

#include <vx/Reference.h>
#include <vx/i18n/StringBundle.h>

#include <concepts>
#include <optional>
#include <string>
#include <vector>

namespace vxtools {

class Text;

/// Something that a program says: its key in the string bundle "Tools", and what it is in English. In either form {0}, {1}
/// and so on, up to {9}, stand for what is put in.
struct Message {
    const char16_t* key;
    const char* english;

    /// The message with the values put in.
    template <class... Values>
    Text operator()(const Values&... values) const;
};

/// What is said to a person, before its language is known: a message with what is put in, or bytes that are the same in each
/// language, such as a file name.
class Text {
public:
    Text(std::string plain)
        : m_plain(std::move(plain))
    {
    }
    Text(const char* plain)
        : m_plain(plain)
    {
    }
    Text(std::integral auto number)
        : m_plain(std::to_string(number))
    {
    }
    Text(const Message& message, std::vector<Text> values = {})
        : m_message(message)
        , m_values(std::move(values))
    {
    }

private:
    friend class Messages;

    std::optional<Message> m_message;
    std::vector<Text> m_values;
    std::string m_plain;
};

template <class... Values>
Text Message::operator()(const Values&... values) const
{
    return Text(*this, std::vector<Text> {Text(values)...});
}

/// Speaks a language, as far as its bundle goes. What a bundle lacks, and everything where there is none or it is broken, is
/// said in English.
class Messages {
public:
    /// English without a locale. The bundle for one is looked up when there is something to say.
    explicit Messages(std::optional<std::string> locale = std::nullopt);

    /// In UTF-8.
    std::string say(const Text& text);

private:
    std::string patternOf(const Message& message);

    std::optional<std::string> m_locale;
    vx::Reference<vx::i18n::StringBundle> m_bundle;
};

/// What several programs say.
inline constexpr Message STANDARD_INPUT {u"tools.standard-input", "standard input"};
inline constexpr Message STANDARD_OUTPUT {u"tools.standard-output", "standard output"};
inline constexpr Message BACKSLASH {u"tools.backslash", "a file name with a backslash"};
inline constexpr Message NOT_UTF_8 {u"tools.not-utf-8", "a file name that is not UTF-8"};
inline constexpr Message SEE_HELP {u"tools.see-help", "{0}; {1} --help tells more"};

} // namespace vxtools
