// How a class of the object model gets its collection: derive the collection's class from
// ObjectCollection<Element, Interface>, which brings the mechanical members, and add what also acts on the
// registry. Its surface derives from component::CollectionSurface, which forwards their slots.
#pragma once

#include <cstdint>

#include "platform/automation/enumerator.h"
#include "platform/automation/keyed_collection.h"

namespace moxel {

// Objects in the order added, each filed under the `key` that it has at that moment. Errors are those of
// KeyedCollection.
template <class Element, class Interface>
class ObjectCollection : public Interface {
 public:
  // Files an object under its key, at the end.
  void Add(Element& element) { elements_.Add(ObjectPtr<Element>(&element), element.key); }
  // The object at a 1-based position or under a key.
  ObjectPtr<Element> Item(const Variant& index) const { return elements_.Item(index); }
  std::int32_t Count() const { return elements_.Count(); }
  // Takes an object out of the collection; the registry is not touched.
  void Remove(const Variant& index) { elements_.Remove(index); }
  ObjectPtr<IUnknown> NewEnum() {
    return Enumerator<ObjectPtr<Element>>::Create(ObjectPtr<IUnknown>(this), elements_);
  }

 private:
  KeyedCollection<ObjectPtr<Element>> elements_;
};

}  // namespace moxel
