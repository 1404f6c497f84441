#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxview {

/// The forms in which the library writes entries.
enum class Form { UNKNOWN, PLAIN, XML, JSON };

struct Field {
    std::string_view name;
    std::string_view value; ///< decoded; for a JSON value that is not text, as it is written
    bool isText;
};

/// One piece of a log.
class Record {
public:
    enum class Kind {
        ENTRY,
        TORN, ///< the beginning of an entry that was never completed
        FOREIGN, ///< a line that is no part of an entry
        MARKUP ///< a line of an XML document outside of its entries
    };

    Record() = default;
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    /// `bytes` with the line end must stay valid as long as the fields are used.
    void set(Kind kind, Form form, std::string_view bytes);

    /// Reads the fields if this was not done yet: an entry that cannot be read is torn.
    Kind getKind();
    /// In the order of the log. Empty unless this is an entry.
    const std::vector<Field>& getFields();
    std::optional<std::string_view> find(std::string_view name);
    Form getForm() const { return m_form; }
    std::string_view getBytes() const { return m_bytes; }

private:
    void parse();

    Kind m_kind = Kind::FOREIGN;
    Form m_form = Form::UNKNOWN;
    bool m_isParsed = false;
    std::string_view m_bytes;
    std::vector<Field> m_fields;
    std::string m_decoded; ///< the values that differ from the bytes of the log
};

/// Whether the text is an integer that JSON accepts as a number.
bool isInteger(std::string_view text);

} // namespace vxview
