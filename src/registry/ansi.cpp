#include "registry/ansi.h"

#include "moxel/platform.h"

namespace moxel {

std::string ToAnsi(std::u16string_view text) {
  std::string bytes(text.size(), '\0');
  if (text.empty()) return bytes;
  auto length = static_cast<INT>(text.size());
  INT written = WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(), length, nullptr, nullptr);
  bytes.resize(static_cast<std::size_t>(written));
  return bytes;
}

std::u16string FromAnsi(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  if (bytes.empty()) return text;
  auto length = static_cast<INT>(bytes.size());
  INT written = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), length);
  text.resize(static_cast<std::size_t>(written));
  return text;
}

}  // namespace moxel
