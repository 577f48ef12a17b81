// Helpers over the platform's counted text.
#pragma once

#include <memory>
#include <string_view>

#include "moxel/platform.h"

namespace moxel {

struct BstrDeleter {
  void operator()(OLECHAR* text) const { SysFreeString(text); }
};
using OwnedBstr = std::unique_ptr<OLECHAR, BstrDeleter>;

inline std::u16string_view View(const OLECHAR* text) {
  return {text, text == nullptr ? 0 : SysStringLen(const_cast<BSTR>(text))};
}

// A copy byte for byte, odd lengths and inner NULs included; null on lack of memory, and of null.
inline BSTR CopyBstr(BSTR text) {
  if (text == nullptr) return nullptr;
  return SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
}

inline BSTR MakeBstr(std::u16string_view text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

}  // namespace moxel
