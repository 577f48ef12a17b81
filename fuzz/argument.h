// An argument of a hostile client's call: a value of any tag, by value or by reference, sound or not.
#pragma once

#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "moxel/variant.h"

namespace moxel::fuzz {

// Names, numbers and texts that mean something to the component, and some that do not.
inline std::u16string TakeText(Input& input) {
  static const std::u16string kLong(300, u'x');
  static const std::u16string kTexts[] = {u"",     u"Sales", u"Night",  u"alice",  u"Region",
                                          u"Load", u"V",     u"C",      u"1",      u"0",
                                          u"42",   u"1e9",   u"-1,5",   u"True",   u"NEW",
                                          u"a\\b", u"()",    u"secret", u"\x2603", u"2024-02-29 23:59:59.999",
                                          kLong};
  if (!input.Rarely(8)) return input.Pick(kTexts);
  const std::string bytes = input.Text(20);
  return std::u16string(bytes.begin(), bytes.end());
}

class Argument {
 public:
  // `object` is what it holds where it holds one.
  Argument(Input& input, const ObjectPtr<IDispatch>& object) {
    TakeHeld(input, object);
    text_ = held_.text();
    switch (input.Choose(10)) {
      case 0: passed_ = Reference(held_.vt, &held_.llVal); break;
      case 1: passed_ = Reference(VT_VARIANT, &held_); break;
      case 2: PassOdd(input); break;
      default: passed_ = held_; by_value_ = true;
    }
  }
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;

  // What the call is given; it owns nothing.
  const VARIANT& passed() const { return passed_; }

  // What a call may change is only what is passed by reference.
  bool IsUntouched(const VARIANT& now) const {
    return BytesOf(now) == BytesOf(passed_) && (!by_value_ || held_.text() == text_);
  }

 private:
  static std::string_view BytesOf(const VARIANT& variant) {
    return {reinterpret_cast<const char*>(&variant), sizeof variant};
  }

  static VARIANT Reference(int tag, void* target) {
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(tag | VT_BYREF);
    reference.byref = target;
    return reference;
  }

  void TakeHeld(Input& input, const ObjectPtr<IDispatch>& object) {
    switch (input.Choose(9)) {
      case 0: held_ = TakeText(input); break;
      case 1: held_ = static_cast<std::int16_t>(input.Choose(62) - 1); break;
      case 2: held_ = object.get(); break;
      case 3: held_ = Variant::Missing(); break;
      case 4: held_ = input.Raw<std::int32_t>(); break;
      case 5: held_ = input.Rarely(2); break;
      case 6: held_ = Variant::Null(); break;
      case 7:
        held_ = object.get();
        held_.vt = VT_UNKNOWN;
        break;
      default: TakeAnyTag(input);
    }
  }

  // Plain bytes under whatever tag; pointers are null.
  void TakeAnyTag(Input& input) {
    const auto tag = static_cast<VARTYPE>(input.Choose(40));
    const bool pointer = tag == VT_BSTR || tag == VT_DISPATCH || tag == VT_UNKNOWN;
    if (!pointer) held_.llVal = input.Raw<LONGLONG>();
    held_.vt = tag == VT_VARIANT ? VARTYPE{VT_EMPTY} : tag;
  }

  void PassOdd(Input& input) {
    inner_ = input.Rarely(2) ? Reference(VT_VARIANT, &held_) : Reference(held_.vt, &held_.llVal);
    switch (input.Choose(4)) {
      case 0: passed_ = Reference(held_.vt, nullptr); break;
      case 1: passed_ = Reference(VT_VARIANT, nullptr); break;
      case 2: passed_ = Reference(VT_VARIANT, &inner_); break;
      default:
        passed_ = Reference(0, &inner_);
        passed_.vt = static_cast<VARTYPE>(input.Raw<VARTYPE>() | VT_ARRAY);
    }
  }

  Variant held_;     // what is passed, or what is referred to
  VARIANT inner_{};  // a reference between the two
  VARIANT passed_{};
  bool by_value_ = false;
  std::u16string text_;
};

}  // namespace moxel::fuzz
