#include "root/root.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "errors/attempt.h"
#include "errors/handle_error.h"
#include "platform/automation/own_object.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "scenarios/scenario_record.h"

namespace moxel {
namespace {

// The id that the setters report: it has no message.
constexpr std::int32_t kUnknownError = 9999;

// The collection held, created and loaded where there is none. It is held before it is loaded.
template <class Collection, class Load>
ObjectPtr<Collection> GetLoaded(ObjectPtr<Collection>& held, std::u16string_view source, Load&& load) {
  try {
    if (!held) {
      held = Collection::Create();
      load(*held);
    }
    return held;
  } catch (const AutomationError& error) {
    // The comparison is signed: runtime errors and the component's own pass, what lies at or below the base
    // overflows.
    if (error.number() > kErrorBase) throw;
    HandleError(error.number(), source);
  }
}

template <class Collection>
void Put(ObjectPtr<Collection>& held, IUnknown* collection, std::u16string_view source) {
  try {
    held = OwnObject<Collection>(collection);
  } catch (const AutomationError&) {
    HandleError(kUnknownError, source);
  }
}

}  // namespace

Root::~Root() {
  users_ = nullptr;
  scenarios_ = nullptr;
  domains_ = nullptr;
}

ObjectPtr<Utilisateurs> Root::Utilisateurs() {
  return GetLoaded(users_, u"MOXEL:Utilisateurs Property Get", [this](auto& users) { LoadUsers(users); });
}

ObjectPtr<Scenarios> Root::Scenarios() {
  return GetLoaded(scenarios_, u"MOXEL:Scenarios Property Get",
                   [this](auto& scenarios) { LoadScenarios(scenarios); });
}

ObjectPtr<Domaines> Root::Domaines() {
  return GetLoaded(domains_, u"MOXEL:Domaines Property Get", [this](auto& domains) { LoadDomains(domains); });
}

void Root::PutUtilisateurs(_Utilisateurs* users) { Put(users_, users, u"MOXEL:Utilisateurs Property Set"); }

void Root::PutScenarios(_Scenarios* scenarios) {
  Put(scenarios_, scenarios, u"MOXEL:Scenarios Property Set");
}

void Root::PutDomaines(_Domaines* domains) { Put(domains_, domains, u"MOXEL:Domaines Property Set"); }

void Root::LoadUsers(moxel::Utilisateurs& users) const {
  ForEachSubKey(schema::kUser, [&](const std::u16string& name) {
    const std::u16string path = schema::Path(schema::kUser, name);
    Variant permission = RegReadValue(path, schema::kAccessPerm);
    ObjectPtr<User> user = User::Create();
    user->key = name;
    user->SetPasswordCrypted(RegReadValue(path, schema::kPassword));
    Attempt([&] { user->SetPermission(permission.ToI2()); });
    Attempt([&] { users.Add(*user); });
  });
}

void Root::LoadDomains(moxel::Domaines& domains) const {
  ForEachSubKey(schema::kDomain, [&](const std::u16string& name) {
    ObjectPtr<Domaine> domain = Domaine::Create();
    domain->key = name;
    domain->SetComment(RegReadValue(schema::Path(schema::kDomain, name), schema::kComment));
    Attempt([&] { domains.Add(*domain); });
  });
}

// The domains are asked for, and so loaded, when the first scenario is examined. Their names are gathered
// once, which finds what a search from the first position for each scenario would.
void Root::LoadScenarios(moxel::Scenarios& scenarios) {
  std::optional<std::unordered_set<std::u16string>> known;
  auto is_known = [&](const Variant& domain) {
    if (!known) {
      known.emplace();
      ObjectPtr<moxel::Domaines> domains = Domaines();
      for (std::int32_t i = 1; i <= domains->Count(); ++i) known->insert(domains->Item(i)->key);
    }
    return domain.is_text() && known->contains(std::u16string(domain.text()));
  };
  LoadScenarioRecords(
      [&](const Variant& domain) {
        const bool found = is_known(domain);
        return domain.Equals(u"") || !found;
      },
      scenarios);
}

}  // namespace moxel
