// The enumerator that clients walk a collection with.
#pragma once

#include <atomic>
#include <new>

#include "moxel/object_ptr.h"
#include "platform/automation/keyed_collection.h"

namespace moxel {

// What an element is to a client.
inline Variant ToVariant(const Variant& value) { return value; }
template <class T>
Variant ToVariant(const ObjectPtr<T>& object) {
  return Variant(static_cast<IDispatch*>(object.get()));
}

// IEnumVARIANT over a keyed collection inside an object, which it keeps alive. It goes on over what is there
// when elements are added or removed meanwhile.
template <class Element>
class Enumerator final : public IEnumVARIANT {
 public:
  // An enumerator before the first element.
  static ObjectPtr<IUnknown> Create(ObjectPtr<IUnknown> owner, const KeyedCollection<Element>& collection) {
    return ObjectPtr<IUnknown>::Adopt(
        new Enumerator(std::move(owner), collection, typename KeyedCollection<Element>::Walk(collection)));
  }

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (!ppvObject) return E_POINTER;
    *ppvObject = nullptr;
    if (!(riid == IID_IUnknown || riid == IID_IEnumVARIANT)) return E_NOINTERFACE;
    *ppvObject = static_cast<IEnumVARIANT*>(this);
    AddRef();
    return S_OK;
  }

  ULONG AddRef() override { return references_.fetch_add(1) + 1; }

  ULONG Release() override {
    ULONG left = references_.fetch_sub(1) - 1;
    if (left == 0) delete this;
    return left;
  }

  // S_FALSE when fewer than asked for are left.
  HRESULT Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) override {
    if (pCeltFetched) *pCeltFetched = 0;
    if (!rgVar && celt != 0) return E_POINTER;
    ULONG fetched = 0;
    try {
      for (; fetched < celt; ++fetched) {
        const Element* element = walk_.Next();
        if (!element) break;
        rgVar[fetched] = ToVariant(*element).Detach();
      }
    } catch (const std::bad_alloc&) {
      while (fetched > 0) VariantClear(&rgVar[--fetched]);
      return E_OUTOFMEMORY;
    }
    if (pCeltFetched) *pCeltFetched = fetched;
    return fetched == celt ? S_OK : S_FALSE;
  }

  HRESULT Skip(ULONG celt) override {
    for (; celt > 0; --celt)
      if (!walk_.Next()) return S_FALSE;
    return S_OK;
  }

  HRESULT Reset() override {
    walk_ = typename KeyedCollection<Element>::Walk(collection_);
    return S_OK;
  }

  HRESULT Clone(IEnumVARIANT** ppEnum) override {
    if (!ppEnum) return E_POINTER;
    *ppEnum = new (std::nothrow) Enumerator(owner_, collection_, walk_);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
  }

 private:
  Enumerator(ObjectPtr<IUnknown> owner, const KeyedCollection<Element>& collection,
             typename KeyedCollection<Element>::Walk walk)
      : owner_(std::move(owner)), collection_(collection), walk_(walk) {}

  ObjectPtr<IUnknown> owner_;
  const KeyedCollection<Element>& collection_;
  typename KeyedCollection<Element>::Walk walk_;
  std::atomic<ULONG> references_{1};
};

}  // namespace moxel
