#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"
#include "variables/variable.h"

namespace moxel {
namespace component {

const ClassInfo& VariableInfo() {
  using I = _Variable;
  static const ClassInfo info{
      u"Variable",
      u"_Variable",
      &CLSID_Variable,
      &IID__Variable,
      u"One typed value of a domain or a scenario, with an initial value.",
      {
          Get<&I::get_key>(u"key", 0x40030000, {},
                           {u"Name of the variable. Putting it changes nothing in the configuration."}),
          Put<&I::put_key>(u"key", 0x40030000),
          Function<&I::raw_Duplicate>(
              u"Duplicate", 0x60030005, {{u"wVarName"}, {u"wObj"}},
              {u"Writes the variable once more, under the name wVarName, for the owner wObj."}),
          Function<&I::raw_Update>(
              u"Update", 0x60030006, {{u"wVarType"}, {u"wDataType"}, {u"wValue"}, {u"wInit"}, {u"wObj"}},
              {u"Changes kind, data type, value and initial value, and writes them for the owner wObj."}),
          Function<&I::raw_Update1>(
              u"Update1", 0x60030007,
              {{u"wVarType"}, {u"wDataType"}, {u"wValue"}, {u"wInit"}, {u"wObj"}, {u"wDomScen", true}},
              {u"The same for the owner that wDomScen names, where it is given."}),
          Function<&I::raw_Initialize>(
              u"Initialize", 0x60030008, {{u"wObj"}},
              {u"Gives a variable, but no constant, its initial value, and writes it for the owner wObj."}),
          Function<&I::raw_Initialize1>(
              u"Initialize1", 0x60030009, {{u"wKey"}},
              {u"The same for the owner at the registry path wKey, such as Domain\\Sales."}),
          Get<&I::get_VarType>(u"VarType", 0x68030003, {}, {u"Kind: \"V\" a variable, \"C\" a constant."}),
          Get<&I::get_Value>(u"Value", 0x68030002, {}, {u"Value."}),
          Get<&I::get_Init>(u"Init", 0x68030001, {}, {u"Initial value."}),
          Get<&I::get_DataType>(u"DataType", 0x68030000, {}, {u"Data type (MXVariableDataType)."}),
      },
  };
  return info;
}

namespace {

class VariableSurface final : public Surface<Variable, _Variable, VariableInfo> {
 public:
  HRESULT get_key(BSTR* result) override { return Forward<&Variable::key>(result); }
  HRESULT put_key(BSTR value) override { return Assign<&Variable::key>(value); }
  HRESULT raw_Duplicate(VARIANT wVarName, IDispatch* wObj, SHORT* result) override {
    return Forward<&Variable::Duplicate>(result, wVarName, wObj);
  }
  HRESULT raw_Update(VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit, IDispatch* wObj,
                     SHORT* result) override {
    return Forward<&Variable::Update>(result, wVarType, wDataType, wValue, wInit, wObj);
  }
  HRESULT raw_Update1(VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit, IDispatch* wObj,
                      VARIANT wDomScen, SHORT* result) override {
    return Forward<&Variable::Update1>(result, wVarType, wDataType, wValue, wInit, wObj, wDomScen);
  }
  HRESULT raw_Initialize(IDispatch* wObj, SHORT* result) override {
    return Forward<&Variable::Initialize>(result, wObj);
  }
  HRESULT raw_Initialize1(VARIANT wKey, SHORT* result) override {
    return Forward<&Variable::Initialize1>(result, wKey);
  }
  HRESULT get_VarType(VARIANT* result) override { return Forward<&Variable::VarType>(result); }
  HRESULT get_Value(VARIANT* result) override { return Forward<&Variable::Value>(result); }
  HRESULT get_Init(VARIANT* result) override { return Forward<&Variable::Init>(result); }
  HRESULT get_DataType(SHORT* result) override { return Forward<&Variable::DataType>(result); }
};

}  // namespace
}  // namespace component

ObjectPtr<Variable> Variable::Create() { return component::New<component::VariableSurface, Variable>(); }

}  // namespace moxel
