// Calls on the type information of the pool's objects.
#pragma once

#include "fuzz/argument.h"
#include "fuzz/pool.h"

namespace moxel::fuzz {

class TypeCalls {
 public:
  TypeCalls(Input& input, const Vocabulary& vocabulary, Pool& pool)
      : input_(input), vocabulary_(vocabulary), pool_(pool) {}

  // One call, on whatever kind of type information the choice falls on.
  void CallOne() {
    if (auto type = pool_.Take<ITypeInfo>()) return CallType(*type);
    if (auto library = pool_.Take<ITypeLib>()) return CallLibrary(*library);
    ObjectPtr<ITypeInfo> type;
    if (auto object = pool_.Take<IDispatch>())
      object->GetTypeInfo(input_.Rarely(8) ? 1 : 0, 0, type.Receive());
    pool_.Keep(type);
  }

  // A name that some type has, in any letter case, or that none has.
  std::u16string TakeName() {
    if (input_.Rarely(8)) return TakeText(input_);
    std::u16string name = vocabulary_.names[input_.Raw<std::uint8_t>() % vocabulary_.names.size()];
    const std::size_t flipped = input_.Choose(8);
    if (flipped < name.size()) name[flipped] = static_cast<char16_t>(name[flipped] ^ 0x20);
    return name;
  }

  MEMBERID TakeMember(const ITypeInfo* type) {
    const auto found = vocabulary_.members.find(type);
    const bool unknown = found == vocabulary_.members.end() || input_.Rarely(20);
    return unknown ? input_.Raw<MEMBERID>() : input_.Pick(found->second);
  }

 private:
  UINT TakeIndex() { return input_.Rarely(10) ? input_.Raw<UINT>() : static_cast<UINT>(input_.Choose(40)); }

  // Keeps what a call answered; a failing one leaves no result.
  template <class T>
  void Keep(HRESULT answer, const ObjectPtr<T>& result) {
    Require(SUCCEEDED(answer) || !result, "a failing call leaves no result");
    pool_.Keep(result);
  }

  void CallType(ITypeInfo& type) {
    const MEMBERID member = TakeMember(&type);
    const UINT index = TakeIndex();
    switch (input_.Choose(8)) {
      case 0: return ReadRecords(type, index);
      case 1: return ReadNames(type, member);
      case 2: return FollowReference(type, index);
      case 3: {
        ObjectPtr<IUnknown> object;
        const HRESULT answer = type.CreateInstance(nullptr, IID_IUnknown, object.ReceiveAny());
        return Keep(answer, object);
      }
      case 4: {
        ObjectPtr<ITypeLib> library;
        type.GetContainingTypeLib(library.Receive(), nullptr);
        return pool_.Keep(library);
      }
      case 5: {
        std::u16string names[] = {TakeName(), TakeName()};
        LPOLESTR pointers[] = {names[0].data(), names[1].data()};
        MEMBERID ids[2]{};
        type.GetIDsOfNames(pointers, static_cast<UINT>(input_.Choose(3)), ids);
        return;
      }
      default: return Bind(type);
    }
  }

  static void ReadRecords(ITypeInfo& type, UINT index) {
    TYPEATTR* attributes = nullptr;
    Require(type.GetTypeAttr(&attributes) == S_OK, "a type has attributes");
    FUNCDESC* function = nullptr;
    const HRESULT has_function = type.GetFuncDesc(index, &function);
    RequireEqual(SUCCEEDED(has_function), index < attributes->cFuncs, "function at an index");
    RequireEqual(SUCCEEDED(has_function), function != nullptr, "function given");
    if (function != nullptr) type.ReleaseFuncDesc(function);
    VARDESC* variable = nullptr;
    const HRESULT has_variable = type.GetVarDesc(index, &variable);
    RequireEqual(SUCCEEDED(has_variable), index < attributes->cVars, "variable at an index");
    RequireEqual(SUCCEEDED(has_variable), variable != nullptr, "variable given");
    if (variable != nullptr) type.ReleaseVarDesc(variable);
    type.ReleaseTypeAttr(attributes);
  }

  void ReadNames(ITypeInfo& type, MEMBERID member) {
    const auto room = static_cast<UINT>(input_.Choose(8));
    std::vector<BSTR> names(room + 1, nullptr);
    UINT count = 0;
    type.GetNames(member, names.data(), room, &count);
    Require(count <= room && names[room] == nullptr, "names stay in their room");
    for (BSTR name : names) SysFreeString(name);
    Bstr name, help;
    type.GetDocumentation(member, input_.Rarely(3) ? nullptr : name.Receive(), help.Receive(), nullptr,
                          nullptr);
  }

  void FollowReference(ITypeInfo& type, UINT index) {
    HREFTYPE reference = input_.Raw<HREFTYPE>();
    INT flags = 0;
    type.GetImplTypeFlags(index, &flags);
    if (input_.Rarely(3)) type.GetRefTypeOfImplType(input_.Rarely(2) ? ~UINT{0} : index, &reference);
    ObjectPtr<ITypeInfo> referred;
    const HRESULT answer = type.GetRefTypeInfo(reference, referred.Receive());
    Keep(answer, referred);
  }

  template <class Information>
  void Bind(Information& information) {
    ObjectPtr<ITypeComp> compiler, nested;
    ObjectPtr<ITypeInfo> type;
    information.GetTypeComp(compiler.Receive());
    std::u16string name = TakeName();
    DESCKIND kind = DESCKIND_NONE;
    BINDPTR bound{};
    const auto flags = static_cast<WORD>(input_.Choose(16));
    const HRESULT answer = compiler->Bind(name.data(), 0, flags, type.Receive(), &kind, &bound);
    const bool is_member = kind == DESCKIND_FUNCDESC || kind == DESCKIND_VARDESC;
    RequireEqual(bool(type), is_member, "a member is bound in a type");
    RequireEqual(bound.lptcomp != nullptr, kind != DESCKIND_NONE, "what is bound is given");
    if (kind == DESCKIND_TYPECOMP) pool_.Keep(ObjectPtr<ITypeComp>::Adopt(bound.lptcomp));
    Keep(answer, type);
    compiler->BindType(name.data(), 0, type.Receive(), nested.Receive());
    pool_.Keep(type);
    pool_.Keep(nested);
  }

  void CallLibrary(ITypeLib& library) {
    const UINT index = TakeIndex();
    const bool exists = index < library.GetTypeInfoCount();
    std::u16string name = TakeName();
    switch (input_.Choose(5)) {
      case 0: {
        ObjectPtr<ITypeInfo> type;
        TYPEKIND kind{};
        RequireEqual(SUCCEEDED(library.GetTypeInfo(index, type.Receive())), exists, "type at an index");
        RequireEqual(SUCCEEDED(library.GetTypeInfoType(index, &kind)), exists, "kind at an index");
        return pool_.Keep(type);
      }
      case 1: {
        Bstr title, help;
        library.GetDocumentation(static_cast<INT>(index), title.Receive(), help.Receive(), nullptr, nullptr);
        return;
      }
      case 2: {
        BOOL known = 0;
        library.IsName(name.data(), 0, &known);
        return;
      }
      case 3: return Find(library, name);
      default: return Bind(library);
    }
  }

  void Find(ITypeLib& library, std::u16string& name) {
    const auto room = static_cast<USHORT>(input_.Choose(6));
    std::vector<ITypeInfo*> types(room + 1u, nullptr);
    std::vector<MEMBERID> members(room + 1u, 77);
    USHORT found = room;
    library.FindName(name.data(), 0, types.data(), members.data(), &found);
    Require(found <= room && types[room] == nullptr && members[room] == 77,
            "what is found stays in its room");
    for (ITypeInfo* type : types) pool_.Keep(ObjectPtr<IUnknown>(ObjectPtr<ITypeInfo>::Adopt(type)));
  }

  Input& input_;
  const Vocabulary& vocabulary_;
  Pool& pool_;
};

}  // namespace moxel::fuzz
