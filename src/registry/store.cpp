#include "registry/store.h"

#include <array>
#include <cstring>

#include "registry/ansi.h"
#include "registry/schema.h"
#include "registry/settings.h"

namespace moxel {
namespace {

constexpr DWORD kSubkeyNameCapacity = 255;
constexpr DWORD kValueNameCapacity = 1024;
constexpr DWORD kTextCapacity = 2047;
constexpr DWORD kNumberCapacity = 255;
constexpr DWORD kRawCapacity = 5000;

std::string AbsolutePath(std::u16string_view path) {
  return ToAnsi(std::u16string(Settings().RootPath).append(path));
}

// The root path with exactly one backslash at its end, as the raw reads and writes take it.
std::string SeparatedPath(std::u16string_view path) {
  std::u16string root = Settings().RootPath;
  if (!root.ends_with(u'\\')) root += u'\\';
  return ToAnsi(root.append(path));
}

LSTATUS Open(const std::string& path, REGSAM access, HKEY& handle) {
  return RegOpenKeyExA(Settings().RootHive, path.c_str(), 0, access, &handle);
}

LSTATUS Create(const std::string& path, HKEY& handle) {
  char no_class[] = "";
  DWORD disposition = 0;
  return RegCreateKeyExA(Settings().RootHive, path.c_str(), 0, no_class, REG_OPTION_NON_VOLATILE, kReadWrite,
                         nullptr, &handle, &disposition);
}

LSTATUS Set(HKEY handle, std::u16string_view name, DWORD type, const void* data, std::size_t size) {
  return RegSetValueExA(handle, ToAnsi(name).c_str(), 0, type, static_cast<const BYTE*>(data),
                        static_cast<DWORD>(size));
}

// The number in the low four bytes of a value's data; shorter data fills the low ones.
std::int32_t NumberIn(const BYTE* data) {
  std::int32_t number;
  std::memcpy(&number, data, sizeof number);
  return number;
}

std::u16string DecimalText(std::int32_t number) {
  std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

// All but the last byte: the text without its terminator.
std::u16string WithoutTerminator(const BYTE* data, DWORD length) {
  return FromAnsi({reinterpret_cast<const char*>(data), length - 1});
}

}  // namespace

Status RegOpenKeyPath(std::u16string_view path, StoreHandle& handle, REGSAM access) {
  return StatusOf(Open(AbsolutePath(path), access, handle) == ERROR_SUCCESS);
}

Status RegCloseKeyHandle(StoreHandle& handle) {
  RegCloseKey(handle);
  return VARIANT_FALSE;
}

Status RegEnumSubKeys(StoreHandle handle, std::int32_t index, std::u16string& name) {
  std::array<char, kSubkeyNameCapacity> name_buffer;
  std::array<char, kSubkeyNameCapacity> class_buffer;
  DWORD name_length = kSubkeyNameCapacity;
  DWORD class_length = kSubkeyNameCapacity;
  FILETIME written;
  LSTATUS result = RegEnumKeyExA(handle, static_cast<DWORD>(index), name_buffer.data(), &name_length, nullptr,
                                 class_buffer.data(), &class_length, &written);
  if (result != ERROR_SUCCESS) return VARIANT_FALSE;
  name = FromAnsi({name_buffer.data(), name_length});
  return VARIANT_TRUE;
}

Status RegEnumValues(StoreHandle handle, std::int32_t index, std::u16string& data, std::u16string* name,
                     std::int32_t* type) {
  std::array<char, kValueNameCapacity> name_buffer;
  std::array<BYTE, kTextCapacity> data_buffer{};
  DWORD name_length = kValueNameCapacity;
  DWORD data_length = kTextCapacity;
  DWORD type_code = REG_NONE;
  LSTATUS result = RegEnumValueA(handle, static_cast<DWORD>(index), name_buffer.data(), &name_length, nullptr,
                                 &type_code, data_buffer.data(), &data_length);
  if (type) *type = static_cast<std::int32_t>(type_code);
  if (type_code == REG_DWORD) {
    // A number is read again under tighter limits: one with a longer name ends the enumeration, as it always
    // has.
    name_length = kNumberCapacity;
    data_length = kNumberCapacity;
    data_buffer = {};
    result = RegEnumValueA(handle, static_cast<DWORD>(index), name_buffer.data(), &name_length, nullptr,
                           &type_code, data_buffer.data(), &data_length);
  }
  if (result != ERROR_SUCCESS) return VARIANT_FALSE;
  if (name && name_length != 0) *name = FromAnsi({name_buffer.data(), name_length});
  if (data_length != 0)
    data = type_code == REG_DWORD ? DecimalText(NumberIn(data_buffer.data()))
                                  : WithoutTerminator(data_buffer.data(), data_length);
  return VARIANT_TRUE;
}

Variant RegReadValue(std::u16string_view key_path, std::u16string_view value_name, std::int32_t* type) {
  HKEY handle = 0;
  Open(AbsolutePath(key_path), KEY_QUERY_VALUE, handle);
  std::string name = ToAnsi(value_name);
  DWORD type_code = REG_NONE;
  BYTE no_area = 0;
  DWORD no_length = 0;
  LSTATUS status = RegQueryValueExA(handle, name.c_str(), nullptr, &type_code, &no_area, &no_length);
  if (type) *type = static_cast<std::int32_t>(type_code);
  // Only this query, made for texts and numbers alone, sets the length that decides below.
  std::array<BYTE, kTextCapacity> data{};
  DWORD length = kTextCapacity;
  if (type_code == REG_SZ || type_code == REG_DWORD)
    status = RegQueryValueExA(handle, name.c_str(), nullptr, &type_code, data.data(), &length);
  RegCloseKey(handle);
  if (status != ERROR_SUCCESS || length == 0) return u"";
  if (type_code == REG_SZ) return WithoutTerminator(data.data(), length);
  if (type_code == REG_DWORD) return NumberIn(data.data());
  return {};
}

Variant ReadNumberOrZero(std::u16string_view key_path, std::u16string_view value_name) {
  Variant value = RegReadValue(key_path, value_name);
  return value.Equals(u"") ? Variant(std::int32_t{0}) : value;
}

Status RegWriteValue(std::u16string_view key_path, std::u16string_view value_name, DWORD value_type,
                     std::u16string_view value) {
  HKEY handle = 0;
  LSTATUS result = Create(AbsolutePath(key_path) + '\\', handle);
  if (value_type == REG_SZ) {
    // The empty text is one NUL. Any other is handed over without its terminator, which the registry appends.
    std::string bytes = value.empty() ? std::string(1, '\0') : ToAnsi(value);
    result = Set(handle, value_name, REG_SZ, bytes.data(), bytes.size());
  } else if (value_type == REG_DWORD) {
    // A text that is no number leaves the handle open, as it always has; the path stays.
    std::int32_t number = Variant(value).ToI4();
    result = Set(handle, value_name, REG_DWORD, &number, sizeof number);
  }
  RegCloseKey(handle);
  return StatusOf(result == ERROR_SUCCESS);
}

double RegReadRawValue(std::u16string_view key_path, std::u16string_view value_name) {
  HKEY handle = 0;
  Open(SeparatedPath(key_path), KEY_QUERY_VALUE, handle);
  std::string name = ToAnsi(value_name);
  DWORD type_code = REG_NONE;
  // The capacity of 5000 bytes is part of the format: longer data than a double is accepted, and only its
  // start is kept.
  std::array<BYTE, kRawCapacity> data{};
  DWORD length = kRawCapacity;
  LSTATUS status = RegQueryValueExA(handle, name.c_str(), nullptr, &type_code, data.data(), &length);
  RegCloseKey(handle);
  if (status != ERROR_SUCCESS || length == 0) return 0.0;
  double value;
  std::memcpy(&value, data.data(), sizeof value);
  return value;
}

Status RegWriteRawValue(std::u16string_view key_path, std::u16string_view value_name, double value) {
  HKEY handle = 0;
  Create(SeparatedPath(key_path) + '\\', handle);
  // The product's other programs expect eight bytes under the type code of a 32-bit number.
  LSTATUS result = Set(handle, value_name, REG_DWORD, &value, sizeof value);
  RegCloseKey(handle);
  return StatusOf(result == ERROR_SUCCESS);
}

Status RegDeleteKeyPath(std::u16string_view parent_path, std::u16string_view subkey) {
  HKEY handle = 0;
  Open(AbsolutePath(parent_path), kReadWrite, handle);
  // The parent stays open on purpose.
  return StatusOf(RegDeleteKeyA(handle, ToAnsi(subkey).c_str()) == ERROR_SUCCESS);
}

Status RegDeleteKeyTree(std::u16string_view parent_path, std::u16string_view subkey) {
  HKEY handle = 0;
  const std::string name = ToAnsi(subkey);
  auto delete_subkey = [&] {
    Open(AbsolutePath(parent_path), kReadWrite, handle);
    LSTATUS result = RegDeleteKeyA(handle, name.c_str());
    RegCloseKey(handle);
    return result == ERROR_SUCCESS;
  };
  if (delete_subkey()) return VARIANT_TRUE;
  const std::u16string path = schema::Path(parent_path, subkey);
  if (Open(AbsolutePath(path), kReadWrite, handle) == ERROR_SUCCESS) {
    // Each pass deletes the first child, so that the next one is first in the next pass.
    for (std::u16string child; RegEnumSubKeys(handle, 0, child);) RegDeleteKeyTree(path, child);
    RegCloseKey(handle);
  }
  return StatusOf(delete_subkey());
}

}  // namespace moxel
