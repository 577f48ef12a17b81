#include "moxel/value_data.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "moxel/ansi_text.h"

namespace moxel::tool {
namespace {

struct NamedType {
  std::string_view name;
  DWORD type;
};

constexpr std::array kTypes{
    NamedType{"REG_NONE", REG_NONE},
    NamedType{"REG_SZ", REG_SZ},
    NamedType{"REG_EXPAND_SZ", REG_EXPAND_SZ},
    NamedType{"REG_BINARY", REG_BINARY},
    NamedType{"REG_DWORD", REG_DWORD},
    NamedType{"REG_DWORD_BIG_ENDIAN", 5},
    NamedType{"REG_LINK", 6},
    NamedType{"REG_MULTI_SZ", REG_MULTI_SZ},
    NamedType{"REG_QWORD", REG_QWORD},
};

std::string LittleEndianBytes(std::uint64_t number, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

std::uint64_t LittleEndianNumber(std::string_view bytes) {
  std::uint64_t number = 0;
  for (size_t i = bytes.size(); i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[i]);
  return number;
}

std::string HexText(std::uint64_t number, size_t least_digits) {
  std::string digits;
  for (; number != 0 || digits.size() < least_digits; number >>= 4) {
    digits.insert(digits.begin(), "0123456789abcdef"[number & 15]);
  }
  return digits;
}

std::string HexPairs(std::string_view bytes) {
  std::string pairs;
  for (const char c : bytes) {
    if (!pairs.empty()) pairs += ' ';
    pairs += HexText(static_cast<unsigned char>(c), 2);
  }
  return pairs;
}

[[noreturn]] void RefuseData(std::string_view argument, const std::string& reason) {
  throw ToolError::Usage("data \"" + std::string(argument) + "\": " + reason);
}

template <class Number, class... Options>
std::optional<Number> ParseWhole(std::string_view text, Options... options) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, options...);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Two's complement in `bits` bits of a decimal number, signed or not, or of hexadecimal digits behind 0x.
std::optional<std::uint64_t> ParseInteger(std::string_view text, int bits) {
  const std::uint64_t most = ~std::uint64_t{0} >> (64 - bits);
  if (text.starts_with('-')) {
    const auto number = ParseWhole<std::int64_t>(text);
    if (!number || *number < -static_cast<std::int64_t>(most >> 1) - 1) return std::nullopt;
    return static_cast<std::uint64_t>(*number) & most;
  }
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const auto number = ParseWhole<std::uint64_t>(text.substr(hexadecimal ? 2 : 0), hexadecimal ? 16 : 10);
  return number && *number <= most ? number : std::nullopt;
}

RegData ParseNumber(DWORD type, std::string_view argument, int bits) {
  const std::optional<std::uint64_t> number = ParseInteger(argument, bits);
  if (!number) RefuseData(argument, "not a whole number of " + std::to_string(bits) + " bits");
  return {type, LittleEndianBytes(*number, bits / 8)};
}

RegData ParseReal(std::string_view argument) {
  const std::optional<double> number = ParseWhole<double>(argument);
  if (!number || !std::isfinite(*number)) RefuseData(argument, "not a real number");
  return {REG_DWORD, LittleEndianBytes(std::bit_cast<std::uint64_t>(*number), 8)};
}

RegData ParseBinary(std::string_view argument) {
  RegData data{REG_BINARY, {}};
  for (size_t at = 0; at < argument.size();) {
    if (argument[at] == ' ' || argument[at] == ',') {
      ++at;
      continue;
    }
    const std::string_view pair = argument.substr(at, 2);
    const auto byte = ParseWhole<unsigned char>(pair, 16);
    if (!byte || pair.size() != 2) RefuseData(argument, "not pairs of hexadecimal digits");
    data.bytes += static_cast<char>(*byte);
    at += 2;
  }
  return data;
}

std::string EncodeText(std::string_view argument) {
  try {
    return AnsiFromUtf8(argument);
  } catch (const CodePageError& error) {
    throw ToolError("data \"" + std::string(argument) + "\": " + error.what());
  }
}

RegData ParseTexts(std::string_view argument) {
  RegData data{REG_MULTI_SZ, {}};
  constexpr std::string_view separator = "\\0";
  std::string text = EncodeText(argument);
  while (!text.empty()) {
    const size_t end = std::min(text.find(separator), text.size());
    if (end == 0) RefuseData(argument, "an empty text would end the list");
    data.bytes += text.substr(0, end) + '\0';
    text.erase(0, end + separator.size());
  }
  return {data.type, data.bytes + '\0'};
}

std::string_view WithoutTerminator(std::string_view bytes) {
  if (bytes.ends_with('\0')) bytes.remove_suffix(1);
  return bytes;
}

std::vector<std::string_view> SplitTexts(std::string_view bytes) {
  std::vector<std::string_view> texts;
  bytes = WithoutTerminator(bytes);  // that of the list
  while (!bytes.empty()) {
    const size_t end = std::min(bytes.find('\0'), bytes.size());
    texts.push_back(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return texts;
}

bool IsReal(const RegData& data) { return data.type == REG_DWORD && data.bytes.size() == 8; }

bool IsInteger(const RegData& data) {
  return (data.type == REG_DWORD && data.bytes.size() == 4) ||
         (data.type == REG_QWORD && data.bytes.size() == 8);
}

bool IsText(const RegData& data) { return data.type == REG_SZ || data.type == REG_EXPAND_SZ; }

double RealOf(const RegData& data) { return std::bit_cast<double>(LittleEndianNumber(data.bytes)); }

std::int64_t IntegerOf(const RegData& data) {
  const std::uint64_t number = LittleEndianNumber(data.bytes);
  return data.type == REG_DWORD ? static_cast<std::int32_t>(number) : static_cast<std::int64_t>(number);
}

std::string RealText(double number) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, number);
  return std::string(text, result.ptr);
}

}  // namespace

RegData ParseData(std::string_view type_name, std::string_view argument) {
  if (SameName(type_name, "REG_SZ")) return {REG_SZ, EncodeText(argument) + '\0'};
  if (SameName(type_name, "REG_EXPAND_SZ")) return {REG_EXPAND_SZ, EncodeText(argument) + '\0'};
  if (SameName(type_name, "REG_MULTI_SZ")) return ParseTexts(argument);
  if (SameName(type_name, "REG_DWORD")) return ParseNumber(REG_DWORD, argument, 32);
  if (SameName(type_name, "REG_QWORD")) return ParseNumber(REG_QWORD, argument, 64);
  if (SameName(type_name, "REG_BINARY")) return ParseBinary(argument);
  if (SameName(type_name, "real")) return ParseReal(argument);
  throw ToolError::Usage("type \"" + std::string(type_name) + "\": not one of " + std::string(kTypeNames));
}

std::string TypeName(const RegData& data) {
  if (IsReal(data)) return "real";
  for (const NamedType& named : kTypes) {
    if (named.type == data.type) return std::string(named.name);
  }
  return "hex(" + HexText(data.type, 1) + ")";
}

std::string PrintableData(const RegData& data) {
  if (IsReal(data)) return RealText(RealOf(data));
  if (IsInteger(data)) {
    return std::to_string(IntegerOf(data)) + " (0x" + HexText(LittleEndianNumber(data.bytes), 1) + ")";
  }
  if (IsText(data)) return PrintableFromAnsi(WithoutTerminator(data.bytes));
  if (data.type != REG_MULTI_SZ) return HexPairs(data.bytes);
  std::string list;
  for (const std::string_view text : SplitTexts(data.bytes)) {
    if (!list.empty()) list += "\\0";
    list += PrintableFromAnsi(text);
  }
  return list;
}

nlohmann::ordered_json JsonData(const RegData& data) {
  if (IsReal(data) && std::isfinite(RealOf(data))) return RealOf(data);
  if (IsReal(data)) return RealText(RealOf(data));
  if (IsInteger(data)) return IntegerOf(data);
  if (IsText(data)) return Utf8FromAnsi(WithoutTerminator(data.bytes));
  if (data.type != REG_MULTI_SZ) return HexPairs(data.bytes);
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const std::string_view text : SplitTexts(data.bytes)) list.push_back(Utf8FromAnsi(text));
  return list;
}

}  // namespace moxel::tool
