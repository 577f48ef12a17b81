// The surfaces of the component's classes.
#pragma once

#include <span>

#include "component/class_info.h"
#include "moxel/object_ptr.h"

namespace moxel::component {

const ClassInfo& RootInfo();
const ClassInfo& RootVarInfo();
const ClassInfo& DomainesInfo();
const ClassInfo& DomaineInfo();
const ClassInfo& ScenariosInfo();
const ClassInfo& ScenarioInfo();
const ClassInfo& TraitementsInfo();
const ClassInfo& TraitementInfo();
const ClassInfo& VariableInfo();
const ClassInfo& VariablesInfo();
const ClassInfo& UserInfo();
const ClassInfo& UtilisateursInfo();
const ClassInfo& CollectionInfo();

// A class that clients can create.
struct CreatableClass {
  const ClassInfo& (*info)();
  const char* prog_id;
  ObjectPtr<IUnknown> (*create)();
};

std::span<const CreatableClass> CreatableClasses();

// Every interface of the type library, with the class that has it.
std::span<const ClassInfo& (*const)()> AllInterfaces();

}  // namespace moxel::component
