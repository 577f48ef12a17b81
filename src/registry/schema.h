// The layout of the registry tree below the product's root: every key and value name in one place.
//
//   Configuration                               settings
//   User\<user>                                 one user
//   Domain\<domain>                             one domain, its variables under Var\<variable>
//   Scenarios\<scenario>                        one scenario: User, Var\<variable>, Taches\<task>, Ordre
//   Scenarios\User\<user>                       the permission of a user in every scenario's list
#pragma once

#include <string>
#include <string_view>

namespace moxel::schema {

// Keys.
inline constexpr std::u16string_view kConfiguration = u"Configuration";
inline constexpr std::u16string_view kDomain = u"Domain";
inline constexpr std::u16string_view kScenarios = u"Scenarios";
inline constexpr std::u16string_view kUser = u"User";
inline constexpr std::u16string_view kVar = u"Var";

// Values of Configuration.
inline constexpr std::u16string_view kLang = u"Lang";

// Values of a user.
inline constexpr std::u16string_view kAccessPerm = u"AccessPerm";
inline constexpr std::u16string_view kPassword = u"Password";

// Values of a variable record.
inline constexpr std::u16string_view kVarType = u"V/C";
inline constexpr std::u16string_view kType = u"Type";
inline constexpr std::u16string_view kValue = u"Value";
inline constexpr std::u16string_view kInit = u"Init";

// The path of `name` below `parent`.
inline std::u16string Below(std::u16string_view parent, std::u16string_view name) {
  std::u16string path;
  path.reserve(parent.size() + 1 + name.size());
  return path.append(parent).append(u"\\").append(name);
}

}  // namespace moxel::schema
