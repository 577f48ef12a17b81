#pragma once

#include <string>

namespace moxel::tool {

// How a text stands out on a terminal with colours.
enum class Style { kPlain, kHeading, kFailed, kDone, kRunning };

// The text between the escape sequences of its style; the bare text where `colors` is false.
std::string Painted(const std::string& text, Style style, bool colors);

}  // namespace moxel::tool
