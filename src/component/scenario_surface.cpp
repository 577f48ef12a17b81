#include "scenarios/scenario.h"

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"

namespace moxel {
namespace component {

const ClassInfo& ScenarioInfo() {
  using I = _Scenario;
  static const ClassInfo info{
      u"Scenario",
      u"_Scenario",
      &CLSID_Scenario,
      &IID__Scenario,
      u"A set of tasks in an order, with users and variables of its own.",
      {
          Get<&I::get_key>(u"key", 0x40030000, {},
                           {u"Name of the scenario. Putting it changes nothing in the configuration."}),
          Put<&I::put_key>(u"key", 0x40030000),
          Function<&I::raw_Initialize>(
              u"Initialize", 0x6003000B, {{u"wMode"}, {u"wWithOutVar"}},
              {u"Resets the run state: wMode says of what (MXScenarioModeInit); exactly 1 for wWithOutVar "
               u"gives the variables their initial values."}),
          Get<&I::get_Mode>(u"Mode", 0x6803000A, {}, {u"Processing mode, as stored."}),
          Get<&I::get_Directory>(u"Directory", 0x68030009, {}, {u"Directory, as stored."}),
          Get<&I::get_UseSocket>(u"UseSocket", 0x68030008, {},
                                 {u"Whether the scenario is driven through a socket."}),
          Get<&I::get_Port>(u"Port", 0x68030007, {}, {u"Number of the socket, read at every call."}),
          Get<&I::get_State>(u"State", 0x68030006, {}, {u"Run state (MXScenarioState), read at every call."}),
          Get<&I::get_Hwnd>(u"Hwnd", 0x68030005, {},
                            {u"Window of the running scenario, read at every call."}),
          Get<&I::get_LastExe>(u"LastExe", 0x68030004, {}, {u"Date of the last run, as stored."}),
          Get<&I::get_Variables>(u"Variables", 0x68030003, {},
                                 {u"Variables of the scenario. Put no object to load them afresh."}),
          PutRef<&I::putref_Variables>(u"Variables", 0x68030003),
          Get<&I::get_Traitements>(u"Traitements", 0x68030002, {},
                                   {u"Tasks of the scenario. Put no object to load them afresh."}),
          PutRef<&I::putref_Traitements>(u"Traitements", 0x68030002),
          Get<&I::get_TraitementsSelected>(
              u"TraitementsSelected", 0x68030001, {},
              {u"Names of the tasks in the order of their run. Put no object to load them afresh."}),
          PutRef<&I::putref_TraitementsSelected>(u"TraitementsSelected", 0x68030001),
          Get<&I::get_Utilisateurs>(u"Utilisateurs", 0x68030000, {},
                                    {u"Users admitted to the scenario. Put no object to load them afresh."}),
          PutRef<&I::putref_Utilisateurs>(u"Utilisateurs", 0x68030000),
      },
  };
  return info;
}

namespace {

class ScenarioSurface final : public Surface<Scenario, _Scenario, ScenarioInfo> {
 public:
  HRESULT get_key(BSTR* result) override { return Forward<&Scenario::key>(result); }
  HRESULT put_key(BSTR value) override { return Assign<&Scenario::key>(value); }
  HRESULT raw_Initialize(SHORT wMode, SHORT wWithOutVar, SHORT* result) override {
    return Forward<&Scenario::Initialize>(result, wMode, wWithOutVar);
  }
  HRESULT get_Mode(SHORT* result) override { return Forward<&Scenario::Mode>(result); }
  HRESULT get_Directory(VARIANT* result) override { return Forward<&Scenario::Directory>(result); }
  HRESULT get_UseSocket(SHORT* result) override { return Forward<&Scenario::UseSocket>(result); }
  HRESULT get_Port(VARIANT* result) override { return Forward<&Scenario::Port>(result); }
  HRESULT get_State(SHORT* result) override { return Forward<&Scenario::State>(result); }
  HRESULT get_Hwnd(LONG* result) override { return Forward<&Scenario::Hwnd>(result); }
  HRESULT get_LastExe(VARIANT* result) override { return Forward<&Scenario::LastExe>(result); }
  HRESULT get_Variables(_Variables** result) override { return Forward<&Scenario::Variables>(result); }
  HRESULT putref_Variables(_Variables* value) override { return Perform<&Scenario::PutVariables>(value); }
  HRESULT get_Traitements(_Traitements** result) override { return Forward<&Scenario::Traitements>(result); }
  HRESULT putref_Traitements(_Traitements* value) override {
    return Perform<&Scenario::PutTraitements>(value);
  }
  HRESULT get_TraitementsSelected(_Collection** result) override {
    return Forward<&Scenario::TraitementsSelected>(result);
  }
  HRESULT putref_TraitementsSelected(_Collection* value) override {
    return Perform<&Scenario::PutTraitementsSelected>(value);
  }
  HRESULT get_Utilisateurs(_Utilisateurs** result) override {
    return Forward<&Scenario::Utilisateurs>(result);
  }
  HRESULT putref_Utilisateurs(_Utilisateurs* value) override {
    return Perform<&Scenario::PutUtilisateurs>(value);
  }
};

}  // namespace
}  // namespace component

ObjectPtr<Scenario> Scenario::Create() { return component::New<component::ScenarioSurface, Scenario>(); }

}  // namespace moxel
