#pragma once

#include "common/Messages.h"

// The messages of vxconv.

namespace vxconv {

using vxtools::Message;

inline constexpr Message SEVERAL_INPUTS {
    u"vxconv.several-inputs", "several inputs need --to-folder or --in-place, and have no --output"};
inline constexpr Message NO_INPUT {u"vxconv.no-input", "{0} needs a file or a folder to convert"};
inline constexpr Message NO_STANDARD_INPUT {u"vxconv.no-standard-input", "{0} cannot take standard input"};
inline constexpr Message IS_FOLDER {
    u"vxconv.is-folder", "is a folder; --to-folder or --in-place converts the files in it"};

inline constexpr Message READ_AS {u"vxconv.read-as", "{0}: read as {1}"};

inline constexpr Message NO_TEXT {
    u"vxconv.no-text", "byte {0} is zero, so this is probably not text; if it is, name its encoding by -f"};
inline constexpr Message AT_BYTE {u"vxconv.at-byte", "byte {0}: {1}"};
inline constexpr Message AT_CHARACTER {u"vxconv.at-character", "line {0}, character {1}: {2}"};
inline constexpr Message NOT_UTF_8 {u"vxconv.not-utf-8", "not UTF-8"};
inline constexpr Message INCOMPLETE {u"vxconv.incomplete", "the input ends inside a character"};
inline constexpr Message NO_CHARACTER {u"vxconv.no-character", "no character in {0}"};
inline constexpr Message NO_FORM {u"vxconv.no-form", "{0} has no form in {1}"};
inline constexpr Message HALF_PAIR {u"vxconv.half-pair", "half of a surrogate pair"};

inline constexpr Message IS_INPUT {u"vxconv.is-input", "is the input; use -o"};
inline constexpr Message IS_ANOTHER_OUTPUT {u"vxconv.is-another-output", "its output {0} would also be that of {1}"};
inline constexpr Message IS_AN_INPUT {
    u"vxconv.is-an-input", "its output {0} would replace an input; only --in-place does that"};
inline constexpr Message IS_BOTH {
    u"vxconv.is-both", "is an input and also the folder of --to-folder; only --in-place replaces inputs"};
inline constexpr Message IS_TARGET {u"vxconv.is-target", "left out: the folder of --to-folder"};
inline constexpr Message LINK_TO_NOTHING {u"vxconv.link-to-nothing", "a link to a file that does not exist"};
inline constexpr Message LINK_TO_FOLDER {u"vxconv.link-to-folder", "left out: a link to a folder"};
inline constexpr Message LINK {u"vxconv.link", "left out: a symbolic link"};
inline constexpr Message NO_FILE {u"vxconv.no-file", "left out: not a regular file"};
inline constexpr Message SOME_FILES {u"vxconv.some-files", "{0} of {1} files"};
inline constexpr Message NOT_CONVERTED {u"vxconv.not-converted", "not converted"};

} // namespace vxconv
