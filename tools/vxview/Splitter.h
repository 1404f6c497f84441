#pragma once

#include "Record.h"

#include <cstddef>
#include <string_view>

namespace vxview {

/// Finds the pieces of a log, which may have entries of several forms.
class Splitter {
public:
    /// The piece at the start of `bytes`, which are at the start of a line. Returns its length, or 0 if more bytes are
    /// needed. At the end of the log, `isLast`, any bytes give a piece.
    std::size_t next(std::string_view bytes, bool isLast, Record& record);

    /// Forgets a piece that was not complete.
    void restart();

    /// The form of the last entry.
    Form getForm() const { return m_form; }

private:
    std::size_t nextEntry(
        std::string_view bytes, bool isLast, std::string_view start, std::string_view end, Record& record);

    Form m_form = Form::UNKNOWN;
    // Of a piece that is not complete yet, where the search for more of it continues:
    std::size_t m_searchedForLine = 0;
    std::size_t m_searchedForEnd = 0; ///< the start of a line
};

/// The bytes that end each entry of a form.
std::string_view endOf(Form form);

} // namespace vxview
