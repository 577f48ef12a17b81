#include "registry/settings.h"

#include <utility>

#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {
namespace {

constexpr const char16_t* kProductRoot = u"SOFTWARE\\MOXEL\\";

void SetProductRoot() {
  Settings().RootHive = HKEY_LOCAL_MACHINE;
  Settings().RootPath = kProductRoot;
}

}  // namespace

StoreSettings& Settings() {
  thread_local StoreSettings settings;
  return settings;
}

void Main() {
  SetProductRoot();
  GetLanguage();
}

void GetLanguage() {
  StoreSettings saved = Settings();
  SetProductRoot();
  Variant language = RegReadValue(schema::kConfiguration, schema::kLang);
  if (language.Equals(u"")) language = std::int32_t{0};
  // A language that is not a number leaves the settings at the product's root: the failure comes before they
  // are restored.
  std::int32_t offset = language.ToI4();
  Settings() = std::move(saved);
  Settings().LanguageOffset = offset;
}

}  // namespace moxel
