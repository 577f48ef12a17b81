// The keyed collection as an automation object: a list of values of any kind.
#pragma once

#include <cstdint>

#include "moxel/interfaces.h"
#include "platform/automation/enumerator.h"
#include "platform/automation/keyed_collection.h"

namespace moxel {

class Collection : public _Collection {
 public:
  // A new, empty collection.
  static ObjectPtr<Collection> Create();

  // Errors as for KeyedCollection::Item.
  const Variant& Item(const Variant& index) const { return items_.Item(index); }

  // Appends a value; the key may be omitted. Error 457 for a key that is there already, 13 for one that is
  // not a text.
  void Add(const Variant& item, const Variant& key) {
    if (key.is_missing()) return items_.Add(item);
    if (!key.is_text()) throw AutomationError::TypeMismatch();
    items_.Add(item, key.text());
  }

  std::int32_t Count() const { return items_.Count(); }
  void Remove(const Variant& index) { items_.Remove(index); }
  ObjectPtr<IUnknown> NewEnum() { return Enumerator<Variant>::Create(ObjectPtr<IUnknown>(this), items_); }

 private:
  KeyedCollection<Variant> items_;
};

}  // namespace moxel
