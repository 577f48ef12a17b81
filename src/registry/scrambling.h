// Passwords are never stored as typed: each character is replaced by its complement in the single-byte code
// page. The operation is its own inverse; both names exist so that call sites say which direction they mean.
#pragma once

#include "moxel/variant.h"

namespace moxel {

// Replaces a value by its scrambled, respectively unscrambled, text of the same length. Nothing gives "".
// Error 94 on null and 6 on more than 32767 characters; the value is "" by then.
void ScrambleText(Variant& value);
void UnscrambleText(Variant& value);

}  // namespace moxel
