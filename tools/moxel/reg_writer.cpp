#include "moxel/reg_writer.h"

#include "moxel/ansi_text.h"

namespace moxel::tool {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr size_t kColumns = 80;

constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string Hex(std::uint32_t value, size_t least_digits) {
  std::string digits;
  for (; value != 0 || digits.size() < least_digits; value >>= 4) {
    digits.insert(digits.begin(), kHexDigits[value & 15]);
  }
  return digits;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '\n') {
      quoted += "\\n";
    } else if (c == '\r') {
      quoted += "\\r";
    } else {
      if (c == '"' || c == '\\') quoted += '\\';
      quoted += c;
    }
  }
  return quoted + '"';
}

// Readers disagree on line breaks between quotes, so a text that holds one is written in bytes.
bool HasQuotedForm(const RegData& data) {
  using namespace std::string_view_literals;
  return data.type == REG_SZ && data.bytes.find_first_of("\0\r\n"sv) + 1 == data.bytes.size() &&
         data.bytes.ends_with('\0');
}

bool IsTextType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

std::string Utf16LeBytes(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(2 * text.size());
  for (const char16_t c : text) {
    bytes += static_cast<char>(c & 0xFF);
    bytes += static_cast<char>(c >> 8);
  }
  return bytes;
}

std::uint32_t LittleEndian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (size_t i = bytes.size(); i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[i]);
  return number;
}

}  // namespace

void RegWriter::AddKey(const KeyPath& key) {
  const std::string name = key.FullName();
  if (name.find_first_of("\r\n") != std::string::npos) {
    throw ToolError("key " + key.Printable() + ": a name with a line break cannot be written in a .reg file");
  }
  body_.append(kLineEnd).append("[").append(name).append("]").append(kLineEnd);
}

void RegWriter::AddValue(std::string_view name, const RegData& data) {
  const std::string prefix = (name.empty() ? "@" : Quoted(name)) + "=";
  if (HasQuotedForm(data)) {
    const std::string_view text(data.bytes.data(), data.bytes.size() - 1);
    body_.append(prefix).append(Quoted(text)).append(kLineEnd);
  } else if (data.type == REG_DWORD && data.bytes.size() == 4) {
    body_.append(prefix).append("dword:").append(Hex(LittleEndian(data.bytes), 8)).append(kLineEnd);
  } else if (data.type == REG_BINARY) {
    AddBytes(prefix + "hex:", data.bytes);
  } else {
    const bool wide = format_ == RegFormat::kRegedit5 && IsTextType(data.type);
    AddBytes(prefix + "hex(" + Hex(data.type, 1) + "):",
             wide ? Utf16LeBytes(Utf16FromAnsi(data.bytes)) : data.bytes);
  }
}

void RegWriter::AddBytes(std::string_view prefix, std::string_view bytes) {
  body_ += prefix;
  size_t column = prefix.size();
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    body_ += kHexDigits[byte >> 4];
    body_ += kHexDigits[byte & 15];
    if (i + 1 == bytes.size()) break;
    body_ += ',';
    column += 3;
    if (column + 4 > kColumns) {
      body_.append("\\").append(kLineEnd).append("  ");
      column = 2;
    }
  }
  body_ += kLineEnd;
}

std::string RegWriter::File() const {
  if (format_ == RegFormat::kRegedit5) {
    return "\xFF\xFE" +
           Utf16LeBytes(Utf16FromAnsi("Windows Registry Editor Version 5.00\r\n" + body_ + "\r\n"));
  }
  // Bytes that happen to be UTF-8 would be read as UTF-8: an accented letter in a comment settles the code
  // page.
  const bool ambiguous = !IsAscii(body_) && IsUtf8(body_);
  return std::string("REGEDIT4\r\n") + (ambiguous ? "; code page 1252 (\xE9)\r\n" : "") + body_ + "\r\n";
}

}  // namespace moxel::tool
