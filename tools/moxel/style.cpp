#include "moxel/style.h"

namespace moxel::tool {
namespace {

const char* Code(Style style) {
  switch (style) {
    case Style::kHeading: return "1";
    case Style::kFailed: return "31";
    case Style::kDone: return "32";
    case Style::kRunning: return "33";
    case Style::kPlain: break;
  }
  return "0";
}

}  // namespace

std::string Painted(const std::string& text, Style style, bool colors) {
  if (!colors || text.empty() || style == Style::kPlain) return text;
  return std::string("\x1B[") + Code(style) + 'm' + text + "\x1B[0m";
}

}  // namespace moxel::tool
