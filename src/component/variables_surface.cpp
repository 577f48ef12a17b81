#include "variables/variables.h"

#include "component/classes.h"
#include "component/collection_surface.h"

namespace moxel {
namespace component {

const ClassInfo& VariablesInfo() {
  using I = _Variables;
  static const ClassInfo info{
      u"Variables",
      u"_Variables",
      &CLSID_Variables,
      &IID__Variables,
      u"The variables of one domain or scenario.",
      {
          Function<&I::raw_NewVariable>(
              u"NewVariable", 0x60030001,
              {{u"wVar"}, {u"wVarType"}, {u"wDataType"}, {u"wValue"}, {u"wInit"}, {u"wObj"}},
              {u"Creates a variable of the owner wObj, in the configuration and here."}),
          Method<&I::raw_Add>(u"Add", 0x60030002, {{u"wVar"}},
                              {u"Appends a variable in memory, under its key."}),
          ItemMember<I>(),
          CountMember<I>(),
          Method<&I::raw_Remove>(u"Remove", 0x60030003, {{u"vntIndexKey"}},
                                 {u"Removes a variable from memory only."}),
          Function<&I::raw_DeleteVariable>(u"DeleteVariable", 0x60030004, {{u"wVariable"}, {u"wObj"}},
                                           {u"Deletes a variable of the owner wObj from the configuration."}),
          NewEnumMember<I>(),
      },
  };
  return info;
}

namespace {

class VariablesSurface final
    : public CollectionSurface<Variables, _Variables, VariablesInfo, _Variable, VARIANT, _Variable*> {
 public:
  HRESULT raw_NewVariable(BSTR wVar, VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit,
                          IDispatch* wObj, _Variable** result) override {
    return Forward<&Variables::NewVariable>(result, wVar, wVarType, wDataType, wValue, wInit, wObj);
  }
  HRESULT raw_DeleteVariable(_Variable* wVariable, IDispatch* wObj, SHORT* result) override {
    return Forward<&Variables::DeleteVariable>(result, wVariable, wObj);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Variables> Variables::Create() { return component::New<component::VariablesSurface, Variables>(); }

}  // namespace moxel
