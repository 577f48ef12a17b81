#include "component/dispatch.h"

#include <algorithm>
#include <array>
#include <optional>

#include "component/boundary.h"

namespace moxel::component {
namespace {

const Member* FindMember(const ClassInfo& info, DISPID id, MemberKind kind) {
  for (const Member& member : info.members)
    if (member.id == id && member.kind == kind) return &member;
  return nullptr;
}

// The member that a call means. A property put either way falls back on the other where the class has only
// that.
const Member* ChooseMember(const ClassInfo& info, DISPID id, WORD flags) {
  constexpr MemberKind kAll[] = {MemberKind::kMethod, MemberKind::kGet, MemberKind::kPutRef,
                                 MemberKind::kPut};
  for (MemberKind kind : kAll)
    if (flags & static_cast<WORD>(kind))
      if (const Member* member = FindMember(info, id, kind)) return member;
  if (flags & DISPATCH_PROPERTYPUT) return FindMember(info, id, MemberKind::kPutRef);
  if (flags & DISPATCH_PROPERTYPUTREF) return FindMember(info, id, MemberKind::kPut);
  return nullptr;
}

const VARIANT& MissingArgument() {
  static const Variant missing = Variant::Missing();
  return missing;
}

bool IsWellFormed(const DISPPARAMS* parameters) {
  return parameters && parameters->cNamedArgs <= parameters->cArgs &&
         (parameters->cArgs == 0 || parameters->rgvarg) &&
         (parameters->cNamedArgs == 0 || parameters->rgdispidNamedArgs);
}

// The arguments of a call in the order of a member's parameters.
class ArgumentList {
 public:
  ArgumentList(const Member& member, const DISPPARAMS& parameters)
      : member_(member), given_(parameters), count_(member.parameters.size()) {
    places_.fill(kOmitted);
  }

  // S_OK, or why the arguments do not fit the member; `bad_argument` is an index of rgvarg.
  HRESULT Arrange(UINT& bad_argument) {
    const UINT positional = given_.cArgs - given_.cNamedArgs;
    if (positional > count_) return DISP_E_BADPARAMCOUNT;
    for (UINT i = 0; i < positional; ++i) places_[i] = given_.cArgs - 1 - i;
    for (UINT i = 0; i < given_.cNamedArgs; ++i) {
      std::optional<std::size_t> place = PlaceOf(given_.rgdispidNamedArgs[i]);
      if (!place || places_[*place] != kOmitted) {
        bad_argument = i;
        return DISP_E_PARAMNOTFOUND;
      }
      places_[*place] = i;
    }
    return Complete(bad_argument);
  }

  std::span<const VARIANT* const> values() const { return {values_.data(), count_}; }
  UINT IndexOf(std::size_t place) const {
    return place < count_ && places_[place] != kOmitted ? places_[place] : 0;
  }

 private:
  static constexpr UINT kOmitted = ~UINT{0};

  // A value put is the last parameter, named or not.
  std::optional<std::size_t> PlaceOf(DISPID named) const {
    bool puts = member_.kind == MemberKind::kPut || member_.kind == MemberKind::kPutRef;
    if (puts && named == DISPID_PROPERTYPUT) return count_ - 1;
    if (named < 0 || static_cast<std::size_t>(named) >= count_) return std::nullopt;
    return static_cast<std::size_t>(named);
  }

  std::size_t RequiredCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(member_.parameters, [](const Parameter& each) { return !each.optional; }));
  }

  HRESULT Complete(UINT& bad_argument) {
    for (std::size_t place = 0; place < count_; ++place) {
      const Parameter& parameter = member_.parameters[place];
      if (places_[place] == kOmitted) {
        // Too few arguments, or enough of them but not for this one.
        if (!parameter.optional)
          return given_.cArgs < RequiredCount() ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL;
        values_[place] = &MissingArgument();
        continue;
      }
      const VARIANT* value = &given_.rgvarg[places_[place]];
      bool marked_missing = value->vt == VT_ERROR && value->scode == DISP_E_PARAMNOTFOUND;
      if (marked_missing && parameter.type.tag != VT_VARIANT) {
        bad_argument = places_[place];
        return DISP_E_PARAMNOTOPTIONAL;
      }
      values_[place] = value;
    }
    return S_OK;
  }

  const Member& member_;
  const DISPPARAMS& given_;
  std::size_t count_;
  std::array<UINT, kMostParameters> places_;
  std::array<const VARIANT*, kMostParameters> values_;
};

HRESULT PlatformCode(const AutomationError& error) {
  return error.number() == AutomationError::Overflow().number() ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH;
}

// No argument is to blame.
constexpr UINT kNoArgument = ~UINT{0};

// Moves what a failing member left in the thread's error info into the caller's record as well.
HRESULT Describe(HRESULT failure, EXCEPINFO* exception) {
  ObjectPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.Receive()) != S_OK) return failure;
  if (exception) {
    exception->scode = failure;
    info->GetSource(&exception->bstrSource);
    info->GetDescription(&exception->bstrDescription);
  }
  SetErrorInfo(0, info.get());
  return DISP_E_EXCEPTION;
}

HRESULT CallMember(const Member& member, IDispatch* object, const DISPPARAMS& parameters, VARIANT* result,
                   EXCEPINFO* exception, UINT& bad_argument) {
  ArgumentList arguments(member, parameters);
  if (HRESULT misfit = arguments.Arrange(bad_argument); FAILED(misfit)) return misfit;
  std::size_t place = 0;
  try {
    SetErrorInfo(0, nullptr);
    HRESULT status = member.call(object, arguments.values(), result, place);
    return FAILED(status) ? Describe(status, exception) : S_OK;
  } catch (const AutomationError& error) {
    bad_argument = arguments.IndexOf(place);
    return PlatformCode(error);
  }
}

// root.Domaines("Sales") means root.Domaines.Item("Sales").
HRESULT CallDefaultMember(const Member& getter, IDispatch* object, DISPPARAMS& parameters, VARIANT* result,
                          EXCEPINFO* exception, UINT& bad_argument) {
  Variant collection;
  DISPPARAMS none{};
  HRESULT status = CallMember(getter, object, none, &collection, exception, bad_argument);
  if (FAILED(status)) return status;
  if (collection.vt != VT_DISPATCH || !collection.pdispVal) return DISP_E_BADPARAMCOUNT;
  return collection.pdispVal->Invoke(DISPID_VALUE, GUID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                     &parameters, result, exception, &bad_argument);
}

}  // namespace

bool SameName(std::u16string_view a, std::u16string_view b) {
  auto lower = [](char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

HRESULT FindIds(const ClassInfo& info, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) {
  if (!(reserved == GUID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  if (count == 0) return S_OK;
  if (!names || !ids) return E_POINTER;
  std::fill_n(ids, count, DISPID_UNKNOWN);
  if (!names[0]) return E_POINTER;
  auto member = std::find_if(info.members.begin(), info.members.end(),
                             [&](const Member& each) { return SameName(each.name, names[0]); });
  if (member == info.members.end()) return DISP_E_UNKNOWNNAME;
  ids[0] = member->id;
  HRESULT status = S_OK;
  for (UINT i = 1; i < count; ++i) {
    auto parameter =
        std::find_if(member->parameters.begin(), member->parameters.end(), [&](const Parameter& each) {
          return names[i] && !each.name.empty() && SameName(each.name, names[i]);
        });
    if (parameter != member->parameters.end())
      ids[i] = static_cast<DISPID>(parameter - member->parameters.begin());
    else
      status = DISP_E_UNKNOWNNAME;
  }
  return status;
}

HRESULT Invoke(const ClassInfo& info, IDispatch* object, DISPID id, REFIID reserved, WORD flags,
               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) {
  if (!(reserved == GUID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  if (!IsWellFormed(parameters)) return E_INVALIDARG;
  if (result) VariantInit(result);
  if (exception) *exception = {};
  const Member* member = ChooseMember(info, id, flags);
  if (!member) return DISP_E_MEMBERNOTFOUND;
  UINT bad_index = kNoArgument;
  Variant dropped;
  VARIANT* answer = result ? result : &dropped;
  bool for_default_member = member->kind == MemberKind::kGet && member->parameters.empty() &&
                            parameters->cArgs > 0 && member->result.tag == VT_DISPATCH;
  HRESULT status = E_OUTOFMEMORY;
  try {
    status = for_default_member
                 ? CallDefaultMember(*member, object, *parameters, answer, exception, bad_index)
                 : CallMember(*member, object, *parameters, answer, exception, bad_index);
  } catch (const std::bad_alloc&) {
    // The status says so already.
  }
  if (FAILED(status)) {
    VariantClear(answer);
    if (bad_argument && bad_index != kNoArgument) *bad_argument = bad_index;
  }
  return status;
}

}  // namespace moxel::component
