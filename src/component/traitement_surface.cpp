#include "scenarios/traitement.h"

#include "component/classes.h"
#include "component/members.h"
#include "component/surface.h"

namespace moxel {
namespace component {

const ClassInfo& TraitementInfo() {
  using I = _Traitement;
  static const ClassInfo info{
      u"Traitement",
      u"_Traitement",
      &CLSID_Traitement,
      &IID__Traitement,
      u"One task of a scenario.",
      {
          Get<&I::get_key>(u"key", 0x40030000, {},
                           {u"Name of the task. Putting it changes nothing in the configuration."}),
          Put<&I::put_key>(u"key", 0x40030000),
          Function<&I::raw_Initialize>(
              u"Initialize", 0x60030006, {{u"wScenarioName"}, {u"wState"}},
              {u"Writes the run state of the task in the scenario wScenarioName: 0 not processed, 2 "
               u"processed or 4 retry; any other wState writes nothing."}),
          Get<&I::get_TypeTask>(u"TypeTask", 0x68030005, {}, {u"Type code, as stored."}),
          Get<&I::get_State>(u"State", 0x68030004, {},
                             {u"Run state (MXTraitementState), read at every call."}),
          Get<&I::get_Selected>(u"Selected", 0x68030003, {}, {u"Mark of the task, kept in memory only."}),
          Put<&I::put_Selected>(u"Selected", 0x68030003),
          Get<&I::get_LastExe>(u"LastExe", 0x68030002, {}, {u"Date of the last run, as stored."}),
          Get<&I::get_StatusAct>(
              u"StatusAct", 0x68030001, {},
              {u"Statuses of the actions OnErr, OnDec, ExeIf and Goto in one text, a blank for none."}),
          Get<&I::get_Source>(u"Source", 0x68030000, {}, {u"Name of the scenario that the task belongs to."}),
      },
  };
  return info;
}

namespace {

class TraitementSurface final : public Surface<Traitement, _Traitement, TraitementInfo> {
 public:
  HRESULT get_key(BSTR* result) override { return Forward<&Traitement::key>(result); }
  HRESULT put_key(BSTR value) override { return Assign<&Traitement::key>(value); }
  HRESULT raw_Initialize(VARIANT wScenarioName, SHORT wState, SHORT* result) override {
    return Forward<&Traitement::Initialize>(result, wScenarioName, wState);
  }
  HRESULT get_TypeTask(SHORT* result) override { return Forward<&Traitement::TypeTask>(result); }
  HRESULT get_State(SHORT* result) override { return Forward<&Traitement::State>(result); }
  HRESULT get_Selected(SHORT* result) override { return Forward<&Traitement::Selected>(result); }
  HRESULT put_Selected(SHORT value) override { return Perform<&Traitement::SetSelected>(value); }
  HRESULT get_LastExe(VARIANT* result) override { return Forward<&Traitement::LastExe>(result); }
  HRESULT get_StatusAct(VARIANT* result) override { return Forward<&Traitement::StatusAct>(result); }
  HRESULT get_Source(VARIANT* result) override { return Forward<&Traitement::Source>(result); }
};

}  // namespace
}  // namespace component

ObjectPtr<Traitement> Traitement::Create() {
  return component::New<component::TraitementSurface, Traitement>();
}

}  // namespace moxel
