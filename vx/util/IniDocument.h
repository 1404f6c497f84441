#pragma once

#include "vx/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx::util {

/// The text of an INI file, for a program that shares it with people: comments, order, blanks and line ends stay, and each byte
/// that is not changed. IniFile is for settings that only programs write.
///
/// Texts are bytes, in UTF-8 as a rule. Lines mean what they mean to IniFile: "[set]" begins a set, "name = value" is an entry,
/// and a line that begins with "#", ";" or ":" a comment. Letters from A to Z are equal in either case. Sets of one name are
/// one set, and the last entry of a name counts; IniFile takes only the last of such sets, and does not read lines of more than
/// 510 bytes as one. The empty set name stands for the lines before the first set too.
///
/// One thread at a time. A change of a copy does not change the original.
///
/// @code
/// auto settings = util::IniDocument::parse("# of the server\n[net]\nport = 80 \n");
/// settings.set("net", "port", "8080");
/// settings.set("net", "host", "localhost");
/// assert(settings.getText() == "# of the server\n[net]\nport = 8080 \nhost = localhost\n");
/// assert(settings.find("NET", "port")->line == 3);
/// assert(settings.save(u"settings.ini") == 0);
/// assert(util::IniDocument::load(u"settings.ini").get("net", "host") == "localhost");
/// @endcode
class VX_API IniDocument {
public:
    struct Entry {
        std::string set;
        std::string name;
        std::string value; ///< without blanks at its ends
        std::size_t line; ///< counted from 1
    };
    /// A line that is none of those above, or not all of it: one without "=" or "]", one that begins with a blank, which
    /// IniFile skips, one with more than a comment after "]", or several that a file ends with carriage returns alone.
    struct StrangeLine {
        std::string text; ///< without its end
        std::size_t line;
    };

    /// An empty text.
    IniDocument();
    IniDocument(const IniDocument& other);
    /// `other` has an empty text then.
    IniDocument(IniDocument&& other);
    IniDocument& operator=(IniDocument other) noexcept;
    ~IniDocument();

    /// Takes any text.
    static IniDocument parse(std::string_view text);
    /// Throws ResultException if the file cannot be read.
    static IniDocument load(const String& path);
    /// Makes the text the content of the file in one step, and returns when it is on the disk. A negative result is a failure;
    /// the file has its old content then. The file keeps its owner, permissions and symbolic link.
    [[nodiscard]] std::int32_t save(const String& path) const;

    std::string getText() const;
    bool hasSet(std::string_view set) const;
    /// The names as they stand, each once, in their order.
    std::vector<std::string> getSets() const;
    /// All entries in the order of the lines, also those that a later one of their name replaces.
    std::vector<Entry> getEntries() const;
    std::vector<StrangeLine> getStrangeLines() const;

    /// The entry that counts.
    std::optional<Entry> find(std::string_view set, std::string_view name) const;
    std::optional<std::string> get(std::string_view set, std::string_view name) const;

    /// Changes the value of the entry that counts, or adds one after the last entry of the set. A new set is added at the end.
    /// Throws ResultException with RESULT_INVALID_ARGUMENT for a text that would not be read back as it is: one with a line
    /// feed in it, say, or a value with a blank at an end. A failure leaves the text as it was.
    void set(std::string_view set, std::string_view name, std::string_view value);
    /// Removes all lines of that name. False if there is none.
    bool remove(std::string_view set, std::string_view name);
    /// Removes each such set with all lines up to the next set, comments too. False if there is none.
    bool removeSet(std::string_view set);

private:
    struct Line;
    struct Content;

    static Line lineOf(std::string text);
    /// The lines of `text` end as the first one of the document does.
    void insert(std::size_t index, std::string_view text);
    /// Calls `work(index, set)` for each line; `set` is the name of the set that the line belongs to.
    template <class Work>
    void forEach(Work work) const;
    /// The index of the entry that counts, or npos.
    std::size_t indexOf(std::string_view set, std::string_view name) const;
    /// Where a new entry of the set belongs, or npos if there is no such set.
    std::size_t placeIn(std::string_view set) const;

    std::unique_ptr<Content> m_content; ///< never null
};

} // namespace vx::util
