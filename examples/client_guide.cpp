// What docs/clients.md shows of the C++ client, as one program. It changes what examples/configuration.reg
// holds, so run it on a copy; examples/client_guide.py does and prints the same.
#include <moxel/client.h>

#include <iostream>

namespace {

using moxel::MXScenarioModeInit_AfterError;
using moxel::MXTraitementState_Retry;
using moxel::MXVariableDataType_Date;
using moxel::MXVariableDataType_Num;

void Walk(const moxel::client::Root& root) {
  for (const auto& domain : root.Domaines()) {
    std::cout << domain.key() << ": " << domain.Comment().ToUtf8() << '\n';
    for (const auto& scenario : domain.Scenarios())
      std::cout << "  " << scenario.key() << ", state " << scenario.State() << '\n';
  }
}

void Find(const moxel::client::Root& root) {
  const auto domains = root.Domaines();
  const auto sales = domains["sales"];                                 // by key, letter case ignored
  if (sales == domains[domains.Count()]) std::cout << "It is last\n";  // by position, from 1
  if (!domains.Contains("Nowhere")) std::cout << "No Nowhere\n";
}

void ReadAtRunTime() {
  const moxel::client::RootVar variables;
  const auto region = variables.RecupVariable("Sales", {}, "Region");  // of a domain
  if (region) std::cout << region.Value().ToUtf8() << '\n';            // none: there is no such variable
  std::cout << variables.RecupVariable({}, "Night", "Attempts").Value().ToI4() + 1 << '\n';
}

void Reset(const moxel::client::Domaine& sales) {
  const auto night = sales.Scenarios()["Night"];
  night.Initialize(MXScenarioModeInit_AfterError, 0);  // what failed is to be tried again
  for (const auto& name : night.TraitementsSelected())
    std::cout << name.ToUtf8() << ' ' << night.Traitements()[name].State() << '\n';
  night.Traitements()["Extract"].Initialize("Night", MXTraitementState_Retry);  // one task
  sales.Initialize(1, 1);  // everything, with the variables of the domain and of its scenarios
}

void CreateUpdateDelete(const moxel::client::Root& root) {
  const auto domains = root.Domaines();
  const auto archive = domains.NewDomain("Archive", "What is finished");
  archive.Update("Kept for ten years");
  const auto variables = archive.Variables();
  const auto copies = variables.NewVariable("Copies", "V", MXVariableDataType_Num, 3, 1, archive);
  copies.Update("V", MXVariableDataType_Num, 5, 1, archive);
  copies.Duplicate("Spare", archive);
  std::cout << variables.Count() << '\n';     // 1: no collection follows a copy
  variables.DeleteVariable(copies, archive);  // from the registry
  variables.Remove("Copies");                 // from the collection
  domains.DeleteDomain(archive, 1);           // with all in it
  domains.Remove("Archive");
}

void ChangeDate(const moxel::client::Domaine& sales) {
  const auto run_date = sales.Variables()["RunDate"];
  run_date.Update("V", MXVariableDataType_Date, "2024-12-31 23:59:59.000", run_date.Init(), sales);
  std::cout << run_date.Value().ToUtf8() << '\n';
}

void LoadAfresh(const moxel::client::Root& root) {
  root.PutDomaines(nullptr);
  std::cout << root.Domaines()["Sales"].Variables().Count() << '\n';
}

void Refused(const moxel::client::Root& root) {
  try {
    root.Domaines().DeleteDomain(root.Domaines()["Sales"], 0);
  } catch (const moxel::AutomationError& error) {
    if (error.number() != moxel::MXDomainError_ContainElement) throw;
    std::cout << moxel::ToUtf8(error.source()) << ": " << error.what() << '\n';
  }
}

void CallByName(IDispatch* root) {
  const moxel::Variant domains = moxel::GetProperty(root, u"Domaines");
  for (const moxel::Variant& domain : moxel::Elements(domains.pdispVal)) {
    moxel::CallMethod(domain.pdispVal, u"Initialize", {1, 0});
    std::cout << moxel::GetProperty(domain.pdispVal, u"key").ToUtf8() << '\n';
  }
  moxel::PutReference(root, u"Domaines", nullptr);
}

}  // namespace

int main() try {
  const moxel::client::Root root;
  Walk(root);
  Find(root);
  ReadAtRunTime();
  Reset(root.Domaines()["Sales"]);
  CreateUpdateDelete(root);
  ChangeDate(root.Domaines()["Sales"]);
  LoadAfresh(root);
  Refused(root);
  CallByName(root.get());
} catch (const moxel::AutomationError& error) {
  std::cerr << error.number() << ' ' << moxel::ToUtf8(error.source()) << ": " << error.what() << '\n';
  return 1;
}
