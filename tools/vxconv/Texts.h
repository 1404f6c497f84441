#pragma once

#include "common/Messages.h"

// The messages of vxconv.

namespace vxconv {

using vxtools::Message;

inline constexpr Message SEVERAL_INPUTS {
    u"vxconv.several-inputs", "several inputs need --to-folder or --in-place, and have no --output"};
inline constexpr Message NO_FILE_NAME {
    u"vxconv.no-file-name", "with --to-folder and --in-place each input is a file or a folder"};

inline constexpr Message UNKNOWN_ENCODING {u"vxconv.unknown-encoding", "unknown encoding \"{0}\""};
inline constexpr Message SEE_LIST {u"vxconv.see-list", "vxconv --list prints the known ones"};
inline constexpr Message REGISTER_CODECS {u"vxconv.register-codecs",
    "the component library vxcodecs.so has it (package vxlib4-components), once vxreg has registered it"};
inline constexpr Message READ_AS {u"vxconv.read-as", "{0}: read as {1}"};

inline constexpr Message NO_TEXT {
    u"vxconv.no-text", "byte {0} is zero, so this is probably no text; otherwise name its encoding by -f"};
inline constexpr Message AT_BYTE {u"vxconv.at-byte", "byte {0}: {1}"};
inline constexpr Message AT_CHARACTER {u"vxconv.at-character", "line {0}, character {1}: {2}"};
inline constexpr Message NOT_UTF_8 {u"vxconv.not-utf-8", "not UTF-8"};
inline constexpr Message INCOMPLETE {u"vxconv.incomplete", "the input ends inside a character"};
inline constexpr Message NO_CHARACTER {u"vxconv.no-character", "no character in {0}"};
inline constexpr Message NO_FORM {u"vxconv.no-form", "{0} has no form in {1}"};
inline constexpr Message HALF_PAIR {u"vxconv.half-pair", "half of a surrogate pair"};

inline constexpr Message IS_INPUT {u"vxconv.is-input", "is the input; use -o"};
inline constexpr Message NAMED_TWICE {u"vxconv.named-twice", "another input has the same name in {0}"};
inline constexpr Message SOME_FILES {u"vxconv.some-files", "{0} of {1} files"};
inline constexpr Message NOT_CONVERTED {u"vxconv.not-converted", "not converted"};

} // namespace vxconv
