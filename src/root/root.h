// The entry to the object model.
#pragma once

#include "domains/domaines.h"
#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "scenarios/scenarios.h"
#include "users/utilisateurs.h"

namespace moxel {

// One of the two classes that clients can create. Its three collections are loaded when they are first read
// and kept; putting none makes the next read load afresh.
class Root : public _Root {
 public:
  static ObjectPtr<Root> Create();
  ~Root();

  // All users, all domains, and the scenarios that name no domain, or one that does not exist. An error that
  // escapes the loading (none does) passes unchanged when its number is above 0x80040000, else ends in 6.
  ObjectPtr<moxel::Utilisateurs> Utilisateurs();
  ObjectPtr<moxel::Scenarios> Scenarios();
  ObjectPtr<moxel::Domaines> Domaines();

  // Keep a collection as it is, or none. Anything that is not the component's own collection: 9999, Source
  // "MOXEL:Utilisateurs Property Set" and likewise.
  void PutUtilisateurs(_Utilisateurs* users);
  void PutScenarios(_Scenarios* scenarios);
  void PutDomaines(_Domaines* domains);

 private:
  void LoadUsers(moxel::Utilisateurs& users) const;
  void LoadDomains(moxel::Domaines& domains) const;
  void LoadScenarios(moxel::Scenarios& scenarios);

  ObjectPtr<moxel::Domaines> domains_;
  ObjectPtr<moxel::Scenarios> scenarios_;
  ObjectPtr<moxel::Utilisateurs> users_;
};

}  // namespace moxel
