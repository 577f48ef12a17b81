#include "component/type_description.h"

#include <algorithm>

#include "component/classes.h"
#include "component/enumerations.h"
#include "component/library.h"

namespace moxel::component {
namespace {

constexpr std::size_t kSlotSize = sizeof(void*);
constexpr std::size_t kUnknownSlots = 3;
constexpr std::size_t kDispatchSlots = 7;

// The two views of a dual interface: the members as a call by name sees them, and the slots as they are.
enum class View { kByName, kSlots };

// Where each kind of type begins in the list.
struct Layout {
  HREFTYPE by_name = static_cast<HREFTYPE>(Enumerations().size());
  HREFTYPE classes = by_name + static_cast<HREFTYPE>(AllInterfaces().size());
  HREFTYPE slots = classes + static_cast<HREFTYPE>(std::ranges::count_if(
                                 AllInterfaces(), [](auto info) { return info().clsid != nullptr; }));
  HREFTYPE unknown = slots + static_cast<HREFTYPE>(AllInterfaces().size());
  HREFTYPE dispatch = unknown + 1;

  HREFTYPE Of(const IID& interface_id, View view) const {
    HREFTYPE reference = view == View::kByName ? by_name : slots;
    for (auto info : AllInterfaces()) {
      if (*info().iid == interface_id) break;
      ++reference;
    }
    return reference;
  }
};

TypeDescription NewType(TYPEKIND kind, const GUID& id, std::u16string_view name, std::u16string_view help) {
  TypeDescription type;
  type.attributes.guid = id;
  type.attributes.memidConstructor = MEMBERID_NIL;
  type.attributes.memidDestructor = MEMBERID_NIL;
  type.attributes.cbSizeInstance = kSlotSize;
  type.attributes.cbAlignment = kSlotSize;
  type.attributes.typekind = kind;
  type.attributes.wMajorVerNum = kMajorVersion;
  type.attributes.wMinorVerNum = kMinorVersion;
  type.name = name;
  type.help = help;
  return type;
}

// ---- enumerations

TypeDescription DescribeEnumeration(const EnumerationInfo& info) {
  TypeDescription type = NewType(TKIND_ENUM, GUID_NULL, info.name, info.help);
  type.attributes.cbSizeInstance = type.attributes.cbAlignment = sizeof(std::int32_t);
  type.constants.resize(info.constants.size());
  for (std::size_t i = 0; i < info.constants.size(); ++i) {
    ConstantDescription& constant = type.constants[i];
    constant.name = info.constants[i].name;
    constant.value = info.constants[i].value;
    constant.record.memid = static_cast<MEMBERID>(0x40000000 + i);
    constant.record.varkind = VAR_CONST;
    constant.record.elemdescVar.tdesc.vt = VT_I4;
    constant.record.lpvarValue = &constant.value;
  }
  return type;
}

// ---- members

class FunctionDescriber {
 public:
  FunctionDescriber(const Member& member, const Layout& layout, View view)
      : member_(member), layout_(layout), view_(view) {}

  FunctionDescription Describe(std::size_t slot) {
    FUNCDESC& record = function_.record;
    record.memid = member_.id;
    record.invkind = static_cast<INVOKEKIND>(member_.kind);
    record.funckind = view_ == View::kByName ? FUNC_DISPATCH : FUNC_PUREVIRTUAL;
    record.callconv = CC_STDCALL;
    record.oVft = static_cast<SHORT>((kDispatchSlots + slot) * kSlotSize);
    record.wFuncFlags = member_.hidden ? FUNCFLAG_FHIDDEN : WORD{0};
    AddParameters();
    AddResult();
    record.cParams = static_cast<SHORT>(function_.parameters.size());
    record.lprgelemdescParam = function_.parameters.data();
    function_.help = member_.help;
    return std::move(function_);
  }

 private:
  void AddParameters() {
    function_.names.push_back(member_.name);
    for (const Parameter& parameter : member_.parameters) {
      if (!parameter.name.empty()) function_.names.push_back(parameter.name);
      TYPEDESC type = TypeOf(parameter.type);
      USHORT flags = PARAMFLAG_FIN;
      if (parameter.by_reference) {
        type = PointerTo(type);
        flags |= PARAMFLAG_FOUT;
      }
      if (parameter.optional) {
        flags |= PARAMFLAG_FOPT;
        ++function_.record.cParamsOpt;
      }
      Add(type, flags);
    }
  }

  // By name a member answers its result; a slot answers its success, and puts the result where it is told.
  void AddResult() {
    TYPEDESC& answer = function_.record.elemdescFunc.tdesc;
    const bool has_result = member_.result.tag != VT_EMPTY;
    if (view_ == View::kByName) {
      answer = has_result ? TypeOf(member_.result) : Plain(VT_VOID);
    } else {
      answer = Plain(VT_HRESULT);
      if (has_result) Add(PointerTo(TypeOf(member_.result)), PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
    }
  }

  void Add(TYPEDESC type, int flags) {
    ELEMDESC& parameter = function_.parameters.emplace_back();
    parameter.tdesc = type;
    parameter.paramdesc = {nullptr, static_cast<USHORT>(flags)};
  }

  static TYPEDESC Plain(VARTYPE tag) {
    TYPEDESC type{};
    type.vt = tag;
    return type;
  }

  TYPEDESC TypeOf(const ValueType& type) {
    if (!type.interface_id) return Plain(type.tag);
    TYPEDESC interface_type = Plain(VT_USERDEFINED);
    interface_type.hreftype = layout_.Of(*type.interface_id, view_);
    return PointerTo(interface_type);
  }

  TYPEDESC PointerTo(TYPEDESC target) {
    TYPEDESC pointer = Plain(VT_PTR);
    pointer.lptdesc = function_.targets.emplace_back(std::make_unique<TYPEDESC>(target)).get();
    return pointer;
  }

  const Member& member_;
  const Layout& layout_;
  View view_;
  FunctionDescription function_;
};

// ---- interfaces and classes

TypeDescription DescribeInterface(const ClassInfo& info, const Layout& layout, View view) {
  const bool by_name = view == View::kByName;
  TypeDescription type =
      NewType(by_name ? TKIND_DISPATCH : TKIND_INTERFACE, *info.iid, info.interface_name, info.help);
  type.info = &info;
  type.attributes.wTypeFlags =
      TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDISPATCHABLE | TYPEFLAG_FNONEXTENSIBLE;
  type.attributes.cbSizeVft =
      static_cast<WORD>((kDispatchSlots + (by_name ? 0 : info.members.size())) * kSlotSize);
  for (std::size_t slot = 0; slot < info.members.size(); ++slot)
    type.functions.push_back(FunctionDescriber(info.members[slot], layout, view).Describe(slot));
  type.implemented = {layout.dispatch};
  type.other_view = layout.Of(*info.iid, by_name ? View::kSlots : View::kByName);
  return type;
}

TypeDescription DescribeClass(const ClassInfo& info, const Layout& layout) {
  TypeDescription type = NewType(TKIND_COCLASS, *info.clsid, info.name, info.help);
  type.info = &info;
  if (std::ranges::any_of(CreatableClasses(), [&](const auto& each) { return &each.info() == &info; }))
    type.attributes.wTypeFlags = TYPEFLAG_FCANCREATE;
  type.implemented = {layout.Of(*info.iid, View::kByName)};
  return type;
}

TypeDescription NamePlatformInterface(const IID& id, std::u16string_view name, std::size_t slots,
                                      std::vector<HREFTYPE> base) {
  TypeDescription type = NewType(TKIND_INTERFACE, id, name, u"");
  type.attributes.wTypeFlags = TYPEFLAG_FOLEAUTOMATION;
  type.attributes.cbSizeVft = static_cast<WORD>(slots * kSlotSize);
  type.implemented = std::move(base);
  return type;
}

void Count(TypeDescription& type) {
  type.attributes.cFuncs = static_cast<WORD>(type.functions.size());
  type.attributes.cVars = static_cast<WORD>(type.constants.size());
  type.attributes.cImplTypes = static_cast<WORD>(type.implemented.size());
}

}  // namespace

TypeDescriptions DescribeTypes() {
  const Layout layout;
  TypeDescriptions all{{}, layout.slots};
  for (const EnumerationInfo& info : Enumerations()) all.types.push_back(DescribeEnumeration(info));
  for (auto info : AllInterfaces()) all.types.push_back(DescribeInterface(info(), layout, View::kByName));
  for (auto info : AllInterfaces())
    if (info().clsid) all.types.push_back(DescribeClass(info(), layout));
  for (auto info : AllInterfaces()) all.types.push_back(DescribeInterface(info(), layout, View::kSlots));
  all.types.push_back(NamePlatformInterface(IID_IUnknown, u"IUnknown", kUnknownSlots, {}));
  all.types.push_back(NamePlatformInterface(IID_IDispatch, u"IDispatch", kDispatchSlots, {layout.unknown}));
  for (TypeDescription& type : all.types) Count(type);
  return all;
}

}  // namespace moxel::component
