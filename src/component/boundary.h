// What happens to values and errors where a call crosses the interface.
#pragma once

#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "moxel/automation_error.h"
#include "moxel/variant.h"

namespace moxel::component {

// A null pointer where one is needed.
class NullPointer : public std::exception {};

// A value as a client passed it, seen with a tag that the object model knows: by-reference variants are
// followed, the other widths of numbers become 16-bit, 32-bit or double. The client's own value is never
// changed.
class Incoming {
 public:
  // Error 13 for a tag that no value of the object model can hold.
  explicit Incoming(const VARIANT& bare);
  Incoming(const Incoming&) = delete;
  Incoming& operator=(const Incoming&) = delete;

  const Variant& value() const { return converted_ ? *converted_ : Variant::View(*bare_); }

 private:
  const VARIANT* bare_;
  std::optional<Variant> converted_;
};

// Puts a value into the variable that a client passed by reference, converted to the variable's type; an
// argument by value has none. Errors 6 and 13 when it does not convert.
void WriteBack(const VARIANT& argument, Variant value);

// The number of an error on the wire: runtime errors get their facility. E_FAIL for a number that would read
// as a success.
HRESULT WireNumber(std::int32_t number);

// Describes an error in the thread's error info and gives its number on the wire.
HRESULT Report(const AutomationError& error, REFIID interface_id) noexcept;

// Runs the body of an interface call; nothing but a result leaves it.
template <class Body>
HRESULT Answer(REFIID interface_id, Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
    return S_OK;
  } catch (const AutomationError& error) {
    return Report(error, interface_id);
  } catch (const NullPointer&) {
    return E_POINTER;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace moxel::component
