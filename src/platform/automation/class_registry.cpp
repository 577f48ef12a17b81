#include "platform/automation/class_registry.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/locale/code_pages.h"

namespace moxel {
namespace {

constexpr std::size_t kGuidTextLength = 38;
constexpr char16_t kGuidPattern[] = u"{________-____-____-____-____________}";

class OpenKey {
 public:
  OpenKey(HKEY parent, const std::string& path) {
    if (RegOpenKeyExA(parent, path.c_str(), 0, KEY_QUERY_VALUE, &key_) != ERROR_SUCCESS) key_ = 0;
  }
  ~OpenKey() {
    if (key_ != 0) RegCloseKey(key_);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  HKEY get() const { return key_; }

 private:
  HKEY key_ = 0;
};

int HexDigit(char16_t character) {
  if (character >= u'0' && character <= u'9') return character - u'0';
  const char16_t lower = character | 0x20;
  return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

// The sixteen bytes of a "{...}" text in the order in which they are written.
std::optional<std::array<BYTE, 16>> ReadGuidBytes(std::u16string_view text) {
  if (text.size() != kGuidTextLength) return std::nullopt;
  std::array<BYTE, 16> bytes{};
  std::size_t digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kGuidPattern[i] != u'_') {
      if (text[i] != kGuidPattern[i]) return std::nullopt;
      continue;
    }
    const int digit = HexDigit(text[i]);
    if (digit < 0) return std::nullopt;
    bytes[digits / 2] = static_cast<BYTE>(bytes[digits / 2] << 4 | digit);
    ++digits;
  }
  return bytes;
}

std::optional<GUID> ParseGuid(std::u16string_view text) {
  const auto bytes = ReadGuidBytes(text);
  if (!bytes) return std::nullopt;
  const auto& b = *bytes;
  GUID guid{static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
                static_cast<std::uint32_t>(b[2]) << 8 | b[3],
            static_cast<std::uint16_t>(b[4] << 8 | b[5]),
            static_cast<std::uint16_t>(b[6] << 8 | b[7]),
            {}};
  std::copy(b.begin() + 8, b.end(), guid.Data4);
  return guid;
}

std::optional<GUID> FindProgId(std::u16string_view prog_id) {
  // A backslash would lead to another key, a character outside the code page to one of another name.
  const std::string name = EncodeAnsi(prog_id);
  if (name.empty() || name.find('\\') != name.npos || DecodeAnsi(name) != prog_id) return std::nullopt;
  const auto value = ReadClassValue(name + "\\CLSID");
  return value ? ParseGuid(DecodeAnsi(*value)) : std::nullopt;
}

HRESULT Answer(const std::optional<GUID>& found, CLSID& target) {
  target = found.value_or(GUID_NULL);
  return found ? S_OK : CO_E_CLASSSTRING;
}

}  // namespace

std::optional<std::string> ReadClassValue(const std::string& path) {
  const OpenKey key(HKEY_CLASSES_ROOT, path);
  if (key.get() == 0) return std::nullopt;
  DWORD type = REG_NONE;
  DWORD size = 0;
  if (RegQueryValueExA(key.get(), "", nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return std::nullopt;
  std::string value(size, '\0');
  auto* data = reinterpret_cast<BYTE*>(value.data());
  if (RegQueryValueExA(key.get(), "", nullptr, &type, data, &size) != ERROR_SUCCESS || type != REG_SZ) {
    return std::nullopt;
  }
  value.resize(std::min(value.size(), std::size_t{size}));
  value.resize(std::min(value.size(), value.find('\0')));
  return value;
}

}  // namespace moxel

HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, CLSID* lpclsid) try {
  if (lpclsid == nullptr) return E_POINTER;
  *lpclsid = GUID_NULL;
  if (lpszProgID == nullptr) return E_INVALIDARG;
  return moxel::Answer(moxel::FindProgId(lpszProgID), *lpclsid);
} catch (...) {
  return E_OUTOFMEMORY;
}

HRESULT CLSIDFromString(LPCOLESTR lpsz, CLSID* pclsid) try {
  if (pclsid == nullptr) return E_POINTER;
  *pclsid = GUID_NULL;
  if (lpsz == nullptr) return E_INVALIDARG;
  return moxel::Answer(*lpsz == u'{' ? moxel::ParseGuid(lpsz) : moxel::FindProgId(lpsz), *pclsid);
} catch (...) {
  return E_OUTOFMEMORY;
}

INT StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, INT cchMax) {
  using namespace moxel;
  constexpr INT kNeeded = kGuidTextLength + 1;
  if (lpsz == nullptr || cchMax < kNeeded) return 0;
  const std::uint64_t head =
      std::uint64_t{rguid.Data1} << 32 | std::uint64_t{rguid.Data2} << 16 | rguid.Data3;
  const auto nibble = [&](std::size_t i) -> unsigned {
    if (i < 16) return head >> (60 - 4 * i) & 0xF;
    const BYTE byte = rguid.Data4[(i - 16) / 2];
    return i % 2 == 0 ? byte >> 4 : byte & 0xF;
  };
  std::size_t digits = 0;
  std::transform(kGuidPattern, kGuidPattern + kNeeded, lpsz, [&](char16_t place) {
    return place == u'_' ? u"0123456789ABCDEF"[nibble(digits++)] : place;
  });
  return kNeeded;
}
