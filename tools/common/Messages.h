#pragma once

#include <vx/Reference.h>
#include <vx/i18n/StringBundle.h>

#include <concepts>
#include <optional>
#include <string>
#include <vector>

namespace vxtools {

class Text;

/// A message of a program: its key in the string bundle "Tools" and its English text. In the text and its translations
/// {0} to {9} are placeholders.
struct Message {
    const char16_t* key;
    const char* english;

    /// The message with its placeholders replaced by values.
    template <class... Values>
    Text operator()(const Values&... values) const;
};

/// Text for the user that is not translated yet: a message with its values, or bytes that are the same in every
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

/// Translates messages into one language. A message that the bundle lacks is given in English, and so are all messages
/// if the bundle is missing or broken.
class Messages {
public:
    /// English.
    Messages() = default;
    /// Without a locale, messages are in English. The bundle of a locale is loaded when the first message is needed. If
    /// its language is not available, a line on standard error says once what brings it.
    Messages(const char* program, std::optional<std::string> locale);

    /// The translated text in UTF-8.
    std::string say(const Text& text);

private:
    std::string patternOf(const Message& message);
    void load(const std::string& locale);

    const char* m_program = nullptr;
    std::optional<std::string> m_locale;
    vx::Reference<vx::i18n::StringBundle> m_bundle;
};

/// Messages that several programs share.
inline constexpr Message STANDARD_INPUT {u"tools.standard-input", "standard input"};
inline constexpr Message STANDARD_OUTPUT {u"tools.standard-output", "standard output"};
inline constexpr Message BACKSLASH {u"tools.backslash", "a file name with a backslash"};
inline constexpr Message NOT_UTF_8 {u"tools.not-utf-8", "a file name that is not UTF-8"};
inline constexpr Message EMPTY_FILE_NAME {u"tools.empty-file-name", "a file name is empty"};
inline constexpr Message NOT_TOGETHER {u"tools.not-together", "{0} and {1} do not go together"};
inline constexpr Message ONLY_WITH {u"tools.only-with", "{0} has no effect without {1}"};
inline constexpr Message SEE_HELP {u"tools.see-help", "{0}; {1} --help tells more"};

} // namespace vxtools
