#include "platform/automation/bstr.h"

#include <cstdlib>
#include <limits>
#include <string>

namespace moxel {
namespace {

// The byte count takes the last four bytes before the text; eight are kept free so that the text stays
// aligned.
constexpr std::size_t kPrefix = 8;
// A NUL of one character, one byte further where the count is odd.
constexpr std::size_t kTerminator = 3;
constexpr std::size_t kMaxBytes = std::numeric_limits<UINT>::max() - kPrefix - kTerminator;

BSTR Allocate(const void* content, std::size_t bytes) {
  if (bytes > kMaxBytes) return nullptr;
  const std::size_t size = kPrefix + bytes + kTerminator;
  auto* block = static_cast<char*>(content == nullptr ? std::calloc(1, size) : std::malloc(size));
  if (block == nullptr) return nullptr;
  const auto count = static_cast<UINT>(bytes);
  std::memcpy(block + kPrefix - sizeof count, &count, sizeof count);
  if (content != nullptr) {
    std::memcpy(block + kPrefix, content, bytes);
    std::memset(block + kPrefix + bytes, 0, kTerminator);
  }
  return reinterpret_cast<BSTR>(block + kPrefix);
}

}  // namespace
}  // namespace moxel

BSTR SysAllocString(const OLECHAR* psz) {
  if (psz == nullptr) return nullptr;
  return moxel::Allocate(psz, std::char_traits<OLECHAR>::length(psz) * sizeof(OLECHAR));
}

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) { return moxel::Allocate(strIn, ui * sizeof(OLECHAR)); }

BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) { return moxel::Allocate(psz, len); }

UINT SysStringLen(BSTR pbstr) { return SysStringByteLen(pbstr) / UINT{sizeof(OLECHAR)}; }

UINT SysStringByteLen(BSTR bstr) {
  if (bstr == nullptr) return 0;
  UINT count = 0;
  std::memcpy(&count, reinterpret_cast<const char*>(bstr) - sizeof count, sizeof count);
  return count;
}

void SysFreeString(BSTR bstrString) {
  if (bstrString != nullptr) std::free(reinterpret_cast<char*>(bstrString) - moxel::kPrefix);
}
