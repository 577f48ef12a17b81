#include "registry/scrambling.h"

#include <limits>
#include <string>
#include <utility>

#include "registry/ansi.h"

namespace moxel {
namespace {

void Complement(Variant& value) {
  const Variant original = std::exchange(value, Variant(u""));
  const std::u16string text = original.ToText();
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max()))
    throw AutomationError::Overflow();
  std::string bytes = ToAnsi(text);
  for (char& byte : bytes) byte = static_cast<char>(byte ^ 0xFF);
  value = FromAnsi(bytes);
}

}  // namespace

void ScrambleText(Variant& value) { Complement(value); }

void UnscrambleText(Variant& value) { Complement(value); }

}  // namespace moxel
