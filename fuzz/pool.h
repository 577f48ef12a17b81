// The objects that a hostile client holds, and what it knows about them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "moxel/component.h"
#include "moxel/interfaces.h"
#include "moxel/variant.h"

namespace moxel::fuzz {

inline ObjectPtr<IDispatch> Create(REFCLSID class_id) {
  ObjectPtr<IClassFactory> factory;
  ObjectPtr<IDispatch> object;
  DllGetClassObject(class_id, IID_IClassFactory, factory.ReceiveAny());
  factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveAny());
  return object;
}

// The names that the type library publishes, and the numbers of each type's members.
struct Vocabulary {
  Vocabulary() {
    ObjectPtr<ITypeInfo> type;
    ObjectPtr<ITypeLib> library;
    Create(CLSID_Root)->GetTypeInfo(0, 0, type.Receive());
    type->GetContainingTypeLib(library.Receive(), nullptr);
    for (UINT index = 0; SUCCEEDED(library->GetTypeInfo(index, type.Receive())); ++index) {
      Bstr name;
      type->GetDocumentation(MEMBERID_NIL, name.Receive(), nullptr, nullptr, nullptr);
      names.emplace_back(name.view());
      AddMembers(*type);
    }
  }

  void AddMembers(ITypeInfo& type) {
    FUNCDESC* function = nullptr;
    for (UINT index = 0; SUCCEEDED(type.GetFuncDesc(index, &function)); ++index) {
      BSTR found[8]{};
      UINT count = 0;
      type.GetNames(function->memid, found, 8, &count);
      for (UINT i = 0; i < count; ++i) names.emplace_back(ViewOf(found[i]));
      for (BSTR name : found) SysFreeString(name);
      members[&type].push_back(function->memid);
      type.ReleaseFuncDesc(function);
    }
  }

  std::vector<std::u16string> names;
  std::map<const ITypeInfo*, std::vector<MEMBERID>> members;  // types live as long as the library
};

class Pool {
 public:
  explicit Pool(Input& input) : input_(input) {
    Keep(Create(CLSID_Root));
    Keep(Create(CLSID_RootVar));
  }

  // What takes any value may have been given its own holder, as with any reference counting.
  ~Pool() {
    for (const auto& holder : holders_) Empty(holder.get());
  }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  // Adds an object, in the place of another one where there are many.
  void Keep(ObjectPtr<IUnknown> object) {
    if (!object) return;
    if (TakesAnyValue(object.get())) holders_.push_back(object);
    if (objects_.size() == kMost)
      input_.Pick(objects_) = std::move(object);
    else
      objects_.push_back(std::move(object));
  }
  void Keep(const VARIANT& value) {
    if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) Keep(ObjectPtr<IUnknown>(value.punkVal));
  }

  void Drop() { input_.Pick(objects_) = nullptr; }

  // An object's interface, or none where the choice falls on an object without it.
  template <class I>
  ObjectPtr<I> Take() {
    return ObjectPtr<I>::Query(input_.Pick(objects_).get());
  }

 private:
  static constexpr std::size_t kMost = 20;

  static bool TakesAnyValue(IUnknown* object) {
    return ObjectPtr<_Collection>::Query(object) || ObjectPtr<_User>::Query(object) ||
           ObjectPtr<_Variable>::Query(object);
  }

  static void Empty(IUnknown* holder) {
    if (auto collection = ObjectPtr<_Collection>::Query(holder))
      for (Variant first(std::int32_t{1}); SUCCEEDED(collection->raw_Remove(&first));) continue;
    if (auto user = ObjectPtr<_User>::Query(holder)) user->put_PasswordCrypted(Variant());
    SHORT updated = 0;
    if (auto variable = ObjectPtr<_Variable>::Query(holder))
      variable->raw_Update(Variant(u"V"), 0, Variant(), Variant(), nullptr, &updated);
  }

  Input& input_;
  std::vector<ObjectPtr<IUnknown>> objects_;
  std::vector<ObjectPtr<IUnknown>> holders_;
};

}  // namespace moxel::fuzz
