#include "moxel/object_model.h"

#include <utility>

#include "moxel/ansi_text.h"

namespace moxel::tool {
namespace {

std::vector<PlacedScenario> Placed(const Object& collection, const std::string& domain) {
  std::vector<PlacedScenario> placed;
  for (Object& scenario : ObjectsOf(collection)) placed.push_back({std::move(scenario), collection, domain});
  return placed;
}

}  // namespace

std::string Named(const std::string& what, const std::string& name) { return what + " \"" + name + "\""; }

Variant TextArgument(const std::string& argument) {
  if (!IsUtf8(argument)) throw ToolError("\"" + argument + "\" is not UTF-8");
  return FromUtf8(argument);
}

Variant StoredArgument(const std::string& argument) {
  Variant text = TextArgument(argument);
  try {
    AnsiFromUtf16(text.text());
  } catch (const CodePageError& error) {
    throw ToolError("\"" + argument + "\": " + error.what());
  }
  return text;
}

std::string TextOf(const Variant& value) { return ToUtf8(value.ToText()); }

std::string TextProperty(IDispatch* object, std::u16string name) {
  return TextOf(GetProperty(object, std::move(name)));
}

std::string NameOf(const Object& object) { return TextProperty(object.get(), u"key"); }

Object ObjectOf(const Variant& value) { return value.vt == VT_DISPATCH ? Object(value.pdispVal) : Object(); }

Object ObjectProperty(const Object& object, std::u16string name) {
  return ObjectOf(GetProperty(object.get(), std::move(name)));
}

std::vector<Object> ObjectsOf(const Object& collection) {
  std::vector<Object> objects;
  for (const Variant& element : Elements(collection.get())) objects.push_back(ObjectOf(element));
  return objects;
}

Object Find(const Object& collection, const std::string& name) {
  const Variant key = TextArgument(name);
  try {
    return ObjectOf(CallByName(collection.get(), u"Item", DISPATCH_PROPERTYGET, {key}));
  } catch (const AutomationError& error) {
    if (error.number() != AutomationError::InvalidProcedureCall().number()) throw;
    return {};
  }
}

Object Require(const Object& collection, const std::string& what, const std::string& name) {
  Object found = Find(collection, name);
  if (!found) throw ToolError(Named(what, name) + ": not found");
  return found;
}

ComponentLibrary FindComponent() {
  RegistryKey::Open({HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXEL"}, KEY_READ);
  return ComponentLibrary::Find();
}

ObjectModel::ObjectModel() : component_(FindComponent()), root_(component_.Create(CLSID_Root)) {}

void ObjectModel::Reload() {
  for (const char16_t* collection : {u"Utilisateurs", u"Domaines", u"Scenarios"})
    PutReference(root_.get(), collection, nullptr);
}

PlacedScenario ObjectModel::Scenario(const std::string& name) const {
  const Object free_ones = ObjectProperty(root_, u"Scenarios");
  if (Object found = Find(free_ones, name)) return {found, free_ones, ""};
  for (const Object& domain : ObjectsOf(Domains())) {
    const Object scenarios = ObjectProperty(domain, u"Scenarios");
    if (Object found = Find(scenarios, name)) return {found, scenarios, NameOf(domain)};
  }
  throw ToolError(Named("scenario", name) + ": not found");
}

std::vector<PlacedScenario> ObjectModel::ScenariosOfDomain(const Object& domain) const {
  return Placed(ObjectProperty(domain, u"Scenarios"), NameOf(domain));
}

std::vector<PlacedScenario> ObjectModel::ScenariosOfNoDomain() const {
  return Placed(ObjectProperty(root_, u"Scenarios"), "");
}

std::vector<PlacedScenario> ObjectModel::AllScenarios() const {
  std::vector<PlacedScenario> all;
  for (const Object& domain : ObjectsOf(Domains()))
    for (PlacedScenario& placed : ScenariosOfDomain(domain)) all.push_back(std::move(placed));
  for (PlacedScenario& placed : ScenariosOfNoDomain()) all.push_back(std::move(placed));
  return all;
}

}  // namespace moxel::tool
