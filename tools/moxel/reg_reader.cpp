#include "moxel/reg_reader.h"

#include <algorithm>
#include <utility>

#include "moxel/ansi_text.h"

namespace moxel::tool {
namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool IsLineBreak(char16_t c) { return c == u'\r' || c == u'\n'; }

char16_t LowerAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

int HexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  c = LowerAscii(c);
  return c >= u'a' && c <= u'f' ? c - u'a' + 10 : -1;
}

std::u16string Utf16FromBytes(std::string_view bytes, bool big_endian) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    text += static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first);
  }
  return text;
}

size_t CountLines(std::u16string_view text) {
  size_t lines = 1;
  for (size_t at = 0; at < text.size(); ++at) {
    const bool lone_cr = text[at] == u'\r' && (at + 1 == text.size() || text[at + 1] != u'\n');
    if (text[at] == u'\n' || lone_cr) ++lines;
  }
  return lines;
}

std::u16string DecodeUtf16(std::string_view bytes, bool big_endian) {
  std::u16string text = Utf16FromBytes(bytes, big_endian);
  if (bytes.size() % 2 != 0) throw RegSyntaxError(CountLines(text), "UTF-16 file of an odd number of bytes");
  return text;
}

std::u16string Decode(std::string_view file) {
  if (file.starts_with("\xFF\xFE")) return DecodeUtf16(file.substr(2), false);
  if (file.starts_with("\xFE\xFF")) return DecodeUtf16(file.substr(2), true);
  if (!file.starts_with("\xEF\xBB\xBF")) return IsUtf8(file) ? FromUtf8(file) : Utf16FromAnsi(file);
  if (!IsUtf8(file)) throw RegSyntaxError(1, "file marked as UTF-8 is not valid UTF-8");
  return FromUtf8(file.substr(3));
}

class Reader {
 public:
  explicit Reader(std::u16string_view text) : text_(text) {}

  RegDocument Read() {
    ReadHeader();
    while (!AtEnd()) ReadStatement();
    return std::move(document_);
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const { throw RegSyntaxError(line_, reason); }

  bool AtEnd() const { return position_ == text_.size(); }
  bool At(char16_t c) const { return !AtEnd() && text_[position_] == c; }
  bool AtLineEnd() const { return AtEnd() || IsLineBreak(text_[position_]); }

  char16_t Take() {
    const char16_t c = text_[position_++];
    if (c == u'\n' || (c == u'\r' && !At(u'\n'))) ++line_;
    return c;
  }

  bool Accept(char16_t c) {
    if (!At(c)) return false;
    Take();
    return true;
  }

  bool AcceptKeyword(std::u16string_view keyword) {
    const std::u16string_view found = text_.substr(position_, keyword.size());
    const auto same = [](char16_t a, char16_t b) { return LowerAscii(a) == b; };
    if (!std::equal(found.begin(), found.end(), keyword.begin(), keyword.end(), same)) return false;
    position_ += keyword.size();
    return true;
  }

  void SkipBlanks() {
    while (!AtEnd() && IsBlank(text_[position_])) Take();
  }

  void SkipLineBreak() {
    Accept(u'\r');
    Accept(u'\n');
  }

  std::u16string_view TakeRestOfLine() {
    const size_t begin = position_;
    while (!AtLineEnd()) Take();
    return text_.substr(begin, position_ - begin);
  }

  // Blanks and a comment may stand between what was read and the end of its line, and nothing else.
  void ExpectEndOfLine(const std::string& complaint) {
    SkipBlanks();
    if (At(u';')) TakeRestOfLine();
    if (!AtLineEnd()) Fail(complaint);
    SkipLineBreak();
  }

  std::string ToAnsi(std::u16string_view text, size_t line) const {
    try {
      return AnsiFromUtf16(text);
    } catch (const CodePageError& error) {
      throw RegSyntaxError(line, error.what());
    }
  }

  void ReadHeader() {
    std::u16string_view header = TakeRestOfLine();
    while (!header.empty() && IsBlank(header.back())) header.remove_suffix(1);
    if (header == u"Windows Registry Editor Version 5.00") {
      texts_are_utf16_ = true;
    } else if (header != u"REGEDIT4") {
      Fail("first line is neither \"REGEDIT4\" nor \"Windows Registry Editor Version 5.00\"");
    }
    SkipLineBreak();
  }

  void ReadStatement() {
    SkipBlanks();
    if (At(u'[')) return ReadKey();
    if (At(u'"') || At(u'@')) return ReadValue();
    ExpectEndOfLine("neither a key, a value nor a comment");
  }

  // A component may itself hold "]", so the last one of the line ends the key.
  void ReadKey() {
    const size_t line = line_;
    const size_t begin = position_ + 1;
    size_t line_end = text_.find_first_of(u"\r\n", begin);
    if (line_end == std::u16string_view::npos) line_end = text_.size();
    const size_t close = text_.substr(0, line_end).rfind(u']');
    if (close == std::u16string_view::npos || close < begin) Fail("key without closing \"]\"");
    position_ = close + 1;
    ExpectEndOfLine("unexpected text after the key");

    std::u16string_view name = text_.substr(begin, close - begin);
    const bool deletes = name.starts_with(u'-');
    if (deletes) name.remove_prefix(1);
    AddSection(ToAnsi(name, line), deletes, line);
  }

  void AddSection(const std::string& name, bool deletes, size_t line) {
    try {
      KeyPath key = ParseFullKeyName(name);
      if (deletes && key.path.empty()) throw KeyPathError("a hive cannot be deleted");
      document_.push_back({std::move(key), deletes, {}});
    } catch (const KeyPathError& error) {
      throw RegSyntaxError(line, error.what());
    }
  }

  void ReadValue() {
    if (document_.empty()) Fail("value before any key");
    if (document_.back().deletes_key) Fail("value below a key that is deleted");
    RegValueChange change;
    if (!Accept(u'@')) {
      const size_t line = line_;
      change.name = ReadQuotedText();
      if (change.name.find('\0') != std::string::npos)
        throw RegSyntaxError(line, "NUL character in a value name");
    }
    SkipBlanks();
    if (!Accept(u'=')) Fail("\"=\" expected after the value name");
    SkipBlanks();
    if (!Accept(u'-')) change.data = ReadData();
    ExpectEndOfLine("unexpected text after the value");
    document_.back().values.push_back(std::move(change));
  }

  RegData ReadData() {
    if (At(u'"')) return {REG_SZ, ReadQuotedText() + '\0'};
    if (AcceptKeyword(u"dword:")) return ReadDword();
    if (AcceptKeyword(u"hex:")) return {REG_BINARY, ReadBytes()};
    if (AcceptKeyword(u"hex(")) return ReadTypedBytes();
    Fail(AtLineEnd() ? "value without data" : "unknown form of data");
  }

  std::string ReadQuotedText() {
    const size_t line = line_;
    std::u16string text;
    Take();
    while (!AtEnd()) {
      char16_t c = Take();
      if (c == u'"') return ToAnsi(text, line);
      if (c == u'\\') {
        if (AtEnd()) break;
        c = Take();
        if (c == u'n') c = u'\n';
        if (c == u'r') c = u'\r';
      }
      text += c;
    }
    throw RegSyntaxError(line, "text without closing quote");
  }

  RegData ReadDword() {
    const std::uint32_t number = ReadHexNumber(8, "1 to 8 hexadecimal digits expected");
    RegData data{REG_DWORD, {}};
    for (int shift = 0; shift < 32; shift += 8) data.bytes += static_cast<char>(number >> shift & 0xFF);
    return data;
  }

  RegData ReadTypedBytes() {
    const size_t line = line_;
    const DWORD type = ReadHexNumber(8, "type of 1 to 8 hexadecimal digits expected");
    if (!AcceptKeyword(u"):")) Fail("\"):\" expected after the type");
    std::string bytes = ReadBytes();
    const bool is_text = type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
    if (!texts_are_utf16_ || !is_text) return {type, std::move(bytes)};
    if (bytes.size() % 2 != 0) throw RegSyntaxError(line, "UTF-16 text of an odd number of bytes");
    return {type, ToAnsi(Utf16FromBytes(bytes, false), line)};
  }

  std::string ReadBytes() {
    std::string bytes;
    SkipContinuation();
    if (AtLineEnd() || At(u';')) return bytes;
    do {
      SkipContinuation();
      bytes += static_cast<char>(ReadHexNumber(2, "byte of 1 or 2 hexadecimal digits expected"));
      SkipContinuation();
    } while (Accept(u','));
    return bytes;
  }

  void SkipContinuation() {
    SkipBlanks();
    while (Accept(u'\\')) {
      SkipBlanks();
      if (!AtLineEnd()) Fail("backslash before the end of the line");
      if (AtEnd()) Fail("file ends in a continued line");
      SkipLineBreak();
      SkipBlanks();
    }
  }

  std::uint32_t ReadHexNumber(int most_digits, const std::string& complaint) {
    std::uint32_t number = 0;
    int digits = 0;
    for (; !AtEnd() && HexDigit(text_[position_]) >= 0; ++digits) {
      number = number << 4 | static_cast<std::uint32_t>(HexDigit(Take()));
    }
    if (digits == 0 || digits > most_digits) Fail(complaint);
    return number;
  }

  std::u16string_view text_;
  size_t position_ = 0;
  size_t line_ = 1;
  bool texts_are_utf16_ = false;
  RegDocument document_;
};

}  // namespace

RegDocument ReadRegFile(std::string_view file) {
  const std::u16string text = Decode(file);
  return Reader(text).Read();
}

}  // namespace moxel::tool
