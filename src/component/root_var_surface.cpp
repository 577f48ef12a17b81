#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"
#include "root/root_var.h"

namespace moxel {
namespace component {

const ClassInfo& RootVarInfo() {
  static const ClassInfo info{
      u"RootVar",
      u"_RootVar",
      &CLSID_RootVar,
      &IID__RootVar,
      u"Finds one variable without loading anything else.",
      {
          Function<&_RootVar::raw_RecupVariable>(
              u"RecupVariable", 0x60030000, {{u"wDom"}, {u"wScen"}, {u"wVar"}},
              {u"The variable wVar of the domain wDom or, when that is empty, of the scenario wScen; no "
               u"object when there is none."}),
      },
  };
  return info;
}

namespace {

class RootVarSurface final : public Surface<RootVar, _RootVar, RootVarInfo> {
 public:
  HRESULT raw_RecupVariable(VARIANT* wDom, VARIANT* wScen, VARIANT* wVar, _Variable** result) override {
    return Forward<&RootVar::RecupVariable>(result, wDom, wScen, wVar);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<RootVar> RootVar::Create() { return component::New<component::RootVarSurface, RootVar>(); }

}  // namespace moxel
