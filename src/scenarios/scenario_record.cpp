#include "scenarios/scenario_record.h"

#include "errors/attempt.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {
namespace {

ObjectPtr<Scenario> ReadScenario(const std::u16string& path, const std::u16string& name) {
  Variant directory = RegReadValue(path, schema::kDir);
  Variant mode = ReadNumberOrZero(path, schema::kTraitement);
  Variant state = ReadNumberOrZero(path, schema::kEtat);
  Variant use_socket = ReadNumberOrZero(path, schema::kUseSock);
  Variant port = RegReadValue(path, schema::kSockNum);
  Variant last_exe = RegReadValue(path, schema::kDateTraitement);
  ObjectPtr<Scenario> scenario = Scenario::Create();
  scenario->key = name;
  scenario->SetDirectory(directory);
  Attempt([&] { scenario->SetMode(mode.ToI2()); });
  Attempt([&] { scenario->SetState(state.ToI2()); });
  Attempt([&] { scenario->SetUseSocket(use_socket.ToI2()); });
  scenario->SetPort(port);
  scenario->SetLastExe(last_exe);
  return scenario;
}

}  // namespace

void LoadScenarioRecords(const std::function<bool(const Variant& domain)>& is_wanted, Scenarios& scenarios) {
  ForEachSubKey(schema::kScenarios, [&](const std::u16string& name) {
    const std::u16string path = schema::Path(schema::kScenarios, name);
    if (!is_wanted(RegReadValue(path, schema::kDomainOfScenario))) return;
    ObjectPtr<Scenario> scenario = ReadScenario(path, name);
    Attempt([&] { scenarios.Add(*scenario); });
  });
}

}  // namespace moxel
