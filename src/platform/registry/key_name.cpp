#include "platform/registry/key_name.h"

#include <array>

#include "platform/registry/failure.h"

namespace moxel::platform {
namespace {

// Unicode of the codes 0x80 to 0x9F of code page 1252; the five unassigned ones pass through.
constexpr char16_t kHighControls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char16_t ToUnicode(unsigned char code) {
  return code >= 0x80 && code <= 0x9F ? kHighControls[code - 0x80] : char16_t{code};
}

constexpr unsigned char ToUpper(unsigned char code) {
  if (code >= 'a' && code <= 'z') return static_cast<unsigned char>(code - 0x20);
  if (code >= 0xE0 && code <= 0xFE && code != 0xF7) return static_cast<unsigned char>(code - 0x20);
  switch (code) {
    case 0x9A: return 0x8A;
    case 0x9C: return 0x8C;
    case 0x9E: return 0x8E;
    case 0xFF: return 0x9F;
    default: return code;
  }
}

struct Utf8 {
  char bytes[3];
  unsigned char length;
};

constexpr Utf8 Encode(char16_t unit) {
  if (unit < 0x80) return {{static_cast<char>(unit), 0, 0}, 1};
  if (unit < 0x800)
    return {{static_cast<char>(0xC0 | (unit >> 6)), static_cast<char>(0x80 | (unit & 0x3F)), 0}, 2};
  return {{static_cast<char>(0xE0 | (unit >> 12)), static_cast<char>(0x80 | ((unit >> 6) & 0x3F)),
           static_cast<char>(0x80 | (unit & 0x3F))},
          3};
}

struct CodeForms {
  Utf8 text;
  Utf8 folded;
};

constexpr std::array<CodeForms, 256> kForms = [] {
  std::array<CodeForms, 256> forms{};
  for (unsigned code = 0; code < 256; ++code) {
    auto byte = static_cast<unsigned char>(code);
    forms[code] = {Encode(ToUnicode(byte)), Encode(ToUnicode(ToUpper(byte)))};
    if (forms[code].text.length != forms[code].folded.length)
      throw "both forms of a name share their offsets";
  }
  return forms;
}();

void Append(Name& name, unsigned char code) {
  const CodeForms& forms = kForms[code];
  if (forms.text.length == 1) {
    name.text.push_back(forms.text.bytes[0]);
    name.folded.push_back(forms.folded.bytes[0]);
    return;
  }
  name.text.append(forms.text.bytes, forms.text.length);
  name.folded.append(forms.folded.bytes, forms.folded.length);
}

char AnsiOf(char16_t unit) {
  for (unsigned i = 0; i < 32; ++i)
    if (kHighControls[i] == unit) return static_cast<char>(0x80 + i);
  return unit < 0x100 ? static_cast<char>(unit) : '?';
}

}  // namespace

Name MakeName(std::string_view ansi) {
  Name name;
  name.text.reserve(ansi.size());
  name.folded.reserve(ansi.size());
  for (char c : ansi) Append(name, static_cast<unsigned char>(c));
  return name;
}

Name MakePath(LPCSTR ansi) {
  std::string_view rest = ansi ? ansi : "";
  if (!rest.empty() && rest.front() == '\\') throw RegistryFailure(ERROR_BAD_PATHNAME);
  Name path;
  path.text.reserve(rest.size());
  path.folded.reserve(rest.size());
  bool separator_due = false;
  for (char c : rest) {
    if (c == '\\') {
      separator_due = true;
      continue;
    }
    if (separator_due) Append(path, '\\');
    separator_due = false;
    Append(path, static_cast<unsigned char>(c));
  }
  return path;
}

Name JoinPaths(Name base, Name relative) {
  if (base.folded.empty()) return relative;
  if (relative.folded.empty()) return base;
  return {base.text + '\\' + relative.text, base.folded + '\\' + relative.folded};
}

bool HasOverlongLevel(const Name& path) {
  std::size_t length = 0;
  for (char c : path.text) {
    if (c == '\\')
      length = 0;
    else if ((c & 0xC0) != 0x80 && ++length > kMaxKeyNameLength)
      return true;
  }
  return false;
}

std::string ToAnsi(std::string_view utf8) {
  std::string ansi;
  ansi.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    auto byte = [&](std::size_t at) {
      return at < utf8.size() ? static_cast<unsigned>(static_cast<unsigned char>(utf8[at])) : 0U;
    };
    unsigned lead = byte(i);
    if (lead < 0x80) {
      ansi.push_back(static_cast<char>(lead));
      i += 1;
    } else if (lead < 0xE0) {
      ansi.push_back(AnsiOf(static_cast<char16_t>(((lead & 0x1F) << 6) | (byte(i + 1) & 0x3F))));
      i += 2;
    } else {
      ansi.push_back(AnsiOf(
          static_cast<char16_t>(((lead & 0x0F) << 12) | ((byte(i + 1) & 0x3F) << 6) | (byte(i + 2) & 0x3F))));
      i += 3;
    }
  }
  return ansi;
}

}  // namespace moxel::platform
