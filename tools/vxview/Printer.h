#pragma once

#include "Record.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxview {

/// How pieces are printed.
enum class Style { LINE, PLAIN, JSON, CSV, XML };

/// Writes pieces of a log in one of the forms.
class Printer {
public:
    struct Settings {
        Style style = Style::LINE;
        std::vector<std::string> fields {}; ///< only these, in this order; empty for all
        bool hasColours = false;
        bool isTerminal = false; ///< control characters are shown and not sent
    };

    explicit Printer(Settings settings);

    /// What stands before the first piece and after the last one.
    std::string_view getHead() const;
    std::string_view getFoot() const;
    /// Appends the piece to `text`. `log` names its log where there are several.
    void print(Record& record, std::string_view log, std::string& text);

private:
    enum class Colour { NONE, LOG, TIME, LEVEL, NAME, FIELD, FAULT };

    void printLine(Record& record, std::string_view log, std::string& text) const;
    void printPlain(Record& record, std::string& text) const;
    void printJson(Record& record, std::string& text) const;
    void printCsv(Record& record, std::string& text) const;
    void printXml(Record& record, std::string& text) const;
    void printColoured(Colour colour, std::string_view text, std::string& output) const;
    template <class Visit>
    void forEachField(Record& record, Visit&& visit) const;

    const Settings m_settings;
    std::string m_head;
};

/// Appends `text` with what a terminal would obey made visible: control characters, and those that turn the direction of
/// a text. Line ends become "\n" in one line.
void appendVisible(std::string_view text, std::string& visible);

} // namespace vxview
