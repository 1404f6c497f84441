#pragma once

#include "Record.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxview {

/// Reads one line with a JSON object (RFC 8259). False if it is none. Values that are objects or arrays keep their JSON
/// text. `decoded` needs room for as many bytes as the line has: fields point into it.
bool parseJson(std::string_view line, std::vector<Field>& fields, std::string& decoded);

/// Appends a JSON string. Bytes that are not UTF-8 become U+FFFD.
void appendJson(std::string_view text, std::string& json);

} // namespace vxview
