// All domains.
#pragma once

#include <cstdint>
#include <string>

#include "domains/domaine.h"
#include "moxel/interfaces.h"
#include "platform/automation/object_collection.h"
#include "registry/status.h"

namespace moxel {

class Domaines : public ObjectCollection<Domaine, _Domaines> {
 public:
  // A new, empty collection.
  static ObjectPtr<Domaines> Create();

  // Creates a domain, writes it and adds it. 1601, Source "Domaines:NewDomain", without a name; 1600, Source
  // "Domaine:Validate", where the registry has the name. It is written before it is added: a name that only
  // this collection has (457) stays in the registry.
  ObjectPtr<Domaine> NewDomain(const std::u16string& wDom, const Variant& wComment);

  // Deletes a domain's registry key with all below it; true when it is gone. Unless forced (non-zero), a
  // domain with variables or scenarios is refused: 1602, Source "Domaines:DeleteDomain". When forced, its
  // scenarios are deleted first. The collection drops the domain only when the deletion FAILED; after a
  // successful one it keeps it until Remove. Clients rely on that.
  Status DeleteDomain(Domaine& wDomaine, std::int16_t wForce);
};

}  // namespace moxel
