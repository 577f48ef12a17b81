// One domain: a named group of scenarios with variables of its own.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "registry/status.h"
#include "scenarios/scenarios.h"
#include "variables/variables.h"

namespace moxel {

// Its two collections are loaded when they are first read; putting none makes the next read load afresh. The
// scenarios are objects of this domain alone.
class Domaine : public _Domaine {
 public:
  // A new, empty domain.
  static ObjectPtr<Domaine> Create();

  // Its name, its key in collections and the name of its registry key. Assigning it has no other effect.
  std::u16string key;

  // Resets the domain before a new run: its flag "Admin", then all its scenarios, and, when `wWithOutDomVar`
  // is exactly 1, whatever its name says, its variables. `wWithOutScenVar` goes to each scenario, where it
  // means the same. Always true. An error of a scenario or a variable ends it, and what was reset stays
  // reset; 6 for more than a 16-bit counter holds.
  Status Initialize(std::int16_t wWithOutDomVar, std::int16_t wWithOutScenVar);

  const Variant& Comment() const { return comment_; }
  // Writes the comment's text and keeps the comment as given. Always true. Error 94 or 13 for one without a
  // text.
  Status Update(const Variant& wComment);

  ObjectPtr<moxel::Variables> Variables();
  ObjectPtr<moxel::Scenarios> Scenarios();
  // Keep a collection as it is, or none.
  void PutVariables(moxel::Variables* variables) { variables_ = ObjectPtr(variables); }
  void PutScenarios(moxel::Scenarios* scenarios) { scenarios_ = ObjectPtr(scenarios); }

  void SetComment(const Variant& wComment) { comment_ = wComment; }
  // Writes this domain as a new one. Always true. 1600, Source "Domaine:Validate", where the registry has the
  // name.
  Status Validate() const;

 private:
  std::u16string Path() const;
  void WriteComment(const Variant& comment) const;
  void LoadVariables(moxel::Variables& variables) const;
  void LoadScenarios(moxel::Scenarios& scenarios) const;

  Variant comment_;
  ObjectPtr<moxel::Variables> variables_;
  ObjectPtr<moxel::Scenarios> scenarios_;
};

}  // namespace moxel
