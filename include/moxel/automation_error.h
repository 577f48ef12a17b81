// The one exception of the object model, and of the C++ client.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "moxel/text.h"

namespace moxel {

// A failure with the three things a client sees: its number, the operation that refused (Source) and the
// message.
//
// Refusals of the object model carry 0x80040000 + message id. Runtime errors carry their plain number and the
// Source "MOXEL"; on the wire they become 0x800A0000 + number.
class AutomationError : public std::exception {
 public:
  AutomationError(std::int32_t number, std::u16string source, std::u16string description)
      : number_(number),
        source_(std::move(source)),
        description_(std::move(description)),
        what_(ToUtf8(description_)) {}

  static AutomationError InvalidProcedureCall() { return Runtime(5, u"Invalid procedure call or argument"); }
  static AutomationError Overflow() { return Runtime(6, u"Overflow"); }
  static AutomationError SubscriptOutOfRange() { return Runtime(9, u"Subscript out of range"); }
  static AutomationError TypeMismatch() { return Runtime(13, u"Type mismatch"); }
  static AutomationError InvalidUseOfNull() { return Runtime(94, u"Invalid use of Null"); }
  static AutomationError ResourceNotFound(std::int32_t id);
  static AutomationError DuplicateKey() {
    return Runtime(457, u"This key is already associated with an element of this collection");
  }

  std::int32_t number() const { return number_; }
  const std::u16string& source() const { return source_; }
  const std::u16string& description() const { return description_; }
  // The description in UTF-8.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  static AutomationError Runtime(std::int32_t number, std::u16string description) {
    return {number, u"MOXEL", std::move(description)};
  }

  std::int32_t number_;
  std::u16string source_;
  std::u16string description_;
  std::string what_;
};

inline AutomationError AutomationError::ResourceNotFound(std::int32_t id) {
  std::u16string number;
  for (char digit : std::to_string(id)) number.push_back(static_cast<char16_t>(digit));
  return Runtime(326, u"Resource with identifier '" + number + u"' not found");
}

}  // namespace moxel
