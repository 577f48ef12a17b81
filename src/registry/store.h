// The registry store: the only way from the object model to the registry. Paths are relative to the product's
// root, levels separated by backslashes. Nothing is cached: every read goes to the registry. Missing keys and
// values are no errors; only RegWriteValue raises any.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "moxel/variant.h"
#include "registry/status.h"

namespace moxel {

// An opaque key handle; whoever got it from RegOpenKeyPath passes it to RegCloseKeyHandle.
using StoreHandle = HKEY;

// Read and write, for creation and deletion.
inline constexpr REGSAM kReadWrite = 0x2001F;

Status RegOpenKeyPath(std::u16string_view path, StoreHandle& handle, REGSAM access);

// Always false; callers ignore it.
Status RegCloseKeyHandle(StoreHandle& handle);

// True and the name of the subkey at a zero-based index; false at the end, the name unchanged.
Status RegEnumSubKeys(StoreHandle handle, std::int32_t index, std::u16string& name);

// True and the value at a zero-based index as text; false at the end, and at a value whose data exceeds 2047
// bytes or whose name does not fit. An empty name and empty data leave the arguments unchanged; the type is
// always set.
Status RegEnumValues(StoreHandle handle, std::int32_t index, std::u16string& data,
                     std::u16string* name = nullptr, std::int32_t* type = nullptr);

// Text of a REG_SZ, 32-bit integer of a REG_DWORD, the empty variant for a value of another type without
// data, else "" (also for data of more than 2047 bytes). The type is 0 for a missing value.
Variant RegReadValue(std::u16string_view key_path, std::u16string_view value_name,
                     std::int32_t* type = nullptr);

// The same, with the number 0 in the place of "".
Variant ReadNumberOrZero(std::u16string_view key_path, std::u16string_view value_name);

// Writes a text as REG_SZ (1) or as REG_DWORD (4) and creates the path; of any other type nothing but the
// path. Error 13 or 6 when a text for REG_DWORD is not a number that fits; the path is there by then.
Status RegWriteValue(std::u16string_view key_path, std::u16string_view value_name, DWORD value_type,
                     std::u16string_view value);

// A double stored as its 8 bytes under the type code of REG_DWORD; 0.0 when missing.
double RegReadRawValue(std::u16string_view key_path, std::u16string_view value_name);
Status RegWriteRawValue(std::u16string_view key_path, std::u16string_view value_name, double value);

// Deletes a subkey that has no subkeys of its own.
Status RegDeleteKeyPath(std::u16string_view parent_path, std::u16string_view subkey);

// Deletes a subkey with everything below it. Does not end while a child cannot be deleted.
Status RegDeleteKeyTree(std::u16string_view parent_path, std::u16string_view subkey);

}  // namespace moxel
