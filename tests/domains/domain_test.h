// What the tests of domains share.
#pragma once

#include "domains/domaines.h"
#include "registry/store.h"
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {

// One more than a 16-bit counter holds.
inline constexpr int kTooMany = 32768;

inline ObjectPtr<Domaine> DomainNamed(std::string_view name) {
  ObjectPtr<Domaine> domain = Domaine::Create();
  domain->key = Wide(name);
  return domain;
}

// A collection of new objects named "1", "2", ...
template <class Element, class Objects>
ObjectPtr<Objects> Numbered(int count) {
  ObjectPtr<Objects> objects = Objects::Create();
  for (int i = 1; i <= count; ++i) {
    ObjectPtr<Element> element = Element::Create();
    element->key = Wide(std::to_string(i));
    objects->Add(*element);
  }
  return objects;
}

}  // namespace moxel::test
