// The data of registry values as people write and read it: at the terminal and in JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "moxel/reg_document.h"

namespace moxel::tool {

// "real" is what the product stores a real number as: the 8 bytes of a double under type REG_DWORD.
inline constexpr std::string_view kTypeNames =
    "REG_SZ,REG_DWORD,REG_EXPAND_SZ,REG_MULTI_SZ,REG_BINARY,REG_QWORD,real";

// The data that a user writes as `argument` (UTF-8) under one of kTypeNames, letter case aside.
// REG_MULTI_SZ: texts separated by \0; REG_BINARY: pairs of hexadecimal digits, blanks or commas between
// them; REG_DWORD and REG_QWORD: decimal, negative too, or 0x and hexadecimal digits; real: decimal point,
// exponent. Throws ToolError.
RegData ParseData(std::string_view type_name, std::string_view argument);

// "REG_SZ", "real" for 8 bytes under REG_DWORD, "hex(2a)" for a type without a name.
std::string TypeName(const RegData& data);

// One line without control characters.
std::string PrintableData(const RegData& data);

// A text, a number (signed, as the product reads it), a list of texts, or the bytes as pairs of hexadecimal
// digits.
nlohmann::ordered_json JsonData(const RegData& data);

}  // namespace moxel::tool
