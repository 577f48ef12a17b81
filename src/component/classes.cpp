#include "component/classes.h"

#include "root/root.h"
#include "root/root_var.h"

namespace moxel::component {

std::span<const CreatableClass> CreatableClasses() {
  static const CreatableClass classes[] = {
      {RootInfo, "MOXEL.Root", [] { return ObjectPtr<IUnknown>(Root::Create()); }},
      {RootVarInfo, "MOXEL.RootVar", [] { return ObjectPtr<IUnknown>(RootVar::Create()); }},
  };
  return classes;
}

std::span<const ClassInfo& (*const)()> AllInterfaces() {
  static constexpr const ClassInfo& (*kInterfaces[])() = {
      RootInfo,      RootVarInfo,     DomainesInfo,   DomaineInfo,      ScenariosInfo,
      ScenarioInfo,  TraitementsInfo, TraitementInfo, UtilisateursInfo, UserInfo,
      VariablesInfo, VariableInfo,    CollectionInfo};
  return kInterfaces;
}

}  // namespace moxel::component
