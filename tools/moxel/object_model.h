// The component's object model as the commands use it: late bound, objects found by name or refused by name.
#pragma once

#include <string>
#include <vector>

#include "moxel/component_library.h"
#include "moxel/late_bound.h"
#include "moxel/registry_key.h"

namespace moxel::tool {

using Object = ObjectPtr<IDispatch>;

// `domain "Sales"`, for messages.
std::string Named(const std::string& what, const std::string& name);

// A text of the command line. Throws ToolError when it is not UTF-8.
Variant TextArgument(const std::string& argument);
// The same for what will be stored; throws ToolError also when the registry cannot hold a character of it.
Variant StoredArgument(const std::string& argument);

// In UTF-8.
std::string TextOf(const Variant& value);
std::string TextProperty(IDispatch* object, std::u16string name);
std::string NameOf(const Object& object);

// The object in a value or a property; null where there is none.
Object ObjectOf(const Variant& value);
Object ObjectProperty(const Object& object, std::u16string name);
std::vector<Object> ObjectsOf(const Object& collection);

// An element of a collection by its name, letter case aside; null where there is none.
Object Find(const Object& collection, const std::string& name);
// The same; throws ToolError naming it as `what` where there is none.
Object Require(const Object& collection, const std::string& what, const std::string& name);

// A scenario, the collection that it was found in, and its domain's name, empty where it has none.
struct PlacedScenario {
  Object scenario;
  Object collection;
  std::string domain;
};

// One root of the component with all below it, loaded on first use. Outlives every object taken from it.
class ObjectModel {
 public:
  ObjectModel();

  // Drops what was loaded: the next look sees the registry as it is then.
  void Reload();

  Object Users() const { return ObjectProperty(root_, u"Utilisateurs"); }
  Object Domains() const { return ObjectProperty(root_, u"Domaines"); }

  // Throw ToolError with the name where there is none.
  Object User(const std::string& name) const { return Require(Users(), "user", name); }
  Object Domain(const std::string& name) const { return Require(Domains(), "domain", name); }
  PlacedScenario Scenario(const std::string& name) const;

  std::vector<PlacedScenario> ScenariosOfDomain(const Object& domain) const;
  std::vector<PlacedScenario> ScenariosOfNoDomain() const;
  // Those of every domain, then those of none.
  std::vector<PlacedScenario> AllScenarios() const;

 private:
  ComponentLibrary component_;
  Object root_;
};

// The component, for commands on the configuration. It takes what it cannot read for what is not there, so
// the failure of a file that cannot be read at all is told here: ToolError.
ComponentLibrary FindComponent();

// Runs a change of the registry: done as a whole or, when it throws, not at all. The component does not
// notice a write that fails; the transaction does.
template <class Function>
void Change(Function change) {
  RegistryTransaction transaction;
  change();
  transaction.Commit();
}

}  // namespace moxel::tool
