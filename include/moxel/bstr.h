// Owner of an automation text.
#pragma once

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "moxel/platform.h"

namespace moxel {

inline std::u16string_view ViewOf(BSTR text) {
  return text ? std::u16string_view(text, SysStringLen(text)) : u"";
}

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(std::u16string_view text)
      : text_(SysAllocStringLen(text.data() ? text.data() : u"", static_cast<UINT>(text.size()))) {
    if (!text_) throw std::bad_alloc();
  }
  Bstr(Bstr&& other) noexcept : text_(other.Detach()) {}
  Bstr& operator=(Bstr&& other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~Bstr() { SysFreeString(text_); }

  BSTR get() const { return text_; }
  std::u16string_view view() const { return ViewOf(text_); }
  BSTR Detach() { return std::exchange(text_, nullptr); }
  BSTR* Receive() {
    SysFreeString(Detach());
    return &text_;
  }

 private:
  BSTR text_ = nullptr;
};

}  // namespace moxel
