// What clients can rely on at the interfaces of scenarios and tasks.
#include <cstring>
#include <sstream>

#include "component/classes.h"
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

// "Count 2 68030000 () 3" for each member in the order of the slots: its name, how it is called, its id, its
// parameters and its result (types in hexadecimal, "&" by reference).
template <class... Slots>
std::vector<std::string> Published(const component::ClassInfo& info, Slots... slots) {
  std::vector<std::size_t> offsets;  // into the table of slots, plus one
  (std::memcpy(&offsets.emplace_back(), &slots, sizeof(std::size_t)), ...);
  std::vector<std::string> lines;
  for (const component::Member& member : info.members) {
    std::ostringstream line;
    line << std::hex << std::uppercase << Narrow(member.name) << " " << static_cast<WORD>(member.kind) << " "
         << member.id << " (";
    for (const component::Parameter& parameter : member.parameters)
      line << " " << Narrow(parameter.name) << (parameter.name.empty() ? "" : " ") << parameter.type.tag
           << (parameter.by_reference ? "&" : "");
    line << ") " << member.result.tag << (member.hidden ? " hidden" : "");
    const std::size_t place = lines.size() + 7;  // behind the slots of IDispatch
    if (place - 7 >= offsets.size() || offsets[place - 7] != place * sizeof(void*) + 1) line << " misplaced";
    lines.push_back(line.str());
  }
  return lines;
}

constexpr const char* kTask = R"(
    key 2 40030000 () 8 | key 4 40030000 ( 8) 0 | Initialize 1 60030006 ( wScenarioName C wState 2) 2
    TypeTask 2 68030005 () 2 | State 2 68030004 () 2 | Selected 2 68030003 () 2 | Selected 4 68030003 ( 2) 0
    LastExe 2 68030002 () C | StatusAct 2 68030001 () C | Source 2 68030000 () C)";
constexpr const char* kTasks = R"(
    Add 1 60030001 ( wTraitement 9&) 0 hidden   | Item 2 0 ( vntIndexKey C) 9
    DeleteTraitement 1 60030002 ( wTraitement 9& wScenarioName 8) 2 | Count 2 68030000 () 3
    Remove 1 60030003 ( vntIndexKey C) 0 hidden | NewEnum 2 FFFFFFFC () D hidden)";
constexpr const char* kScenario = R"(
    key 2 40030000 () 8   | key 4 40030000 ( 8) 0     | Initialize 1 6003000B ( wMode 2 wWithOutVar 2) 2
    Mode 2 6803000A () 2  | Directory 2 68030009 () C | UseSocket 2 68030008 () 2 | Port 2 68030007 () C
    State 2 68030006 () 2 | Hwnd 2 68030005 () 3      | LastExe 2 68030004 () C
    Variables 2 68030003 () 9           | Variables 8 68030003 ( 9) 0
    Traitements 2 68030002 () 9         | Traitements 8 68030002 ( 9) 0
    TraitementsSelected 2 68030001 () 9 | TraitementsSelected 8 68030001 ( 9) 0
    Utilisateurs 2 68030000 () 9        | Utilisateurs 8 68030000 ( 9) 0)";
constexpr const char* kScenarios = R"(
    DeleteScenario 1 60030001 ( wScenario 9& wForce 2) 2 | Add 1 60030002 ( wScen 9&) 0 hidden
    Item 2 0 ( vntIndexKey C) 9 | Count 2 68030000 () 3 | Remove 1 60030003 ( vntIndexKey C) 0 hidden
    NewEnum 2 FFFFFFFC () D hidden)";

TEST(ScenarioSurfaceTest, MembersArePublishedInTheOrderOfTheirSlots) {
  using T = _Traitement;
  using Ts = _Traitements;
  using S = _Scenario;
  using Ss = _Scenarios;
  EXPECT_EQ(Published(component::TraitementInfo(), &T::get_key, &T::put_key, &T::raw_Initialize,
                      &T::get_TypeTask, &T::get_State, &T::get_Selected, &T::put_Selected, &T::get_LastExe,
                      &T::get_StatusAct, &T::get_Source),
            Cells(kTask));
  EXPECT_EQ(Published(component::TraitementsInfo(), &Ts::raw_Add, &Ts::get_Item, &Ts::raw_DeleteTraitement,
                      &Ts::get_Count, &Ts::raw_Remove, &Ts::get_NewEnum),
            Cells(kTasks));
  EXPECT_EQ(Published(component::ScenarioInfo(), &S::get_key, &S::put_key, &S::raw_Initialize, &S::get_Mode,
                      &S::get_Directory, &S::get_UseSocket, &S::get_Port, &S::get_State, &S::get_Hwnd,
                      &S::get_LastExe, &S::get_Variables, &S::putref_Variables, &S::get_Traitements,
                      &S::putref_Traitements, &S::get_TraitementsSelected, &S::putref_TraitementsSelected,
                      &S::get_Utilisateurs, &S::putref_Utilisateurs),
            Cells(kScenario));
  EXPECT_EQ(Published(component::ScenariosInfo(), &Ss::raw_DeleteScenario, &Ss::raw_Add, &Ss::get_Item,
                      &Ss::get_Count, &Ss::raw_Remove, &Ss::get_NewEnum),
            Cells(kScenarios));
}

}  // namespace
}  // namespace moxel::test
