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
inline constexpr std::u16string_view kTaches = u"Taches";
inline constexpr std::u16string_view kOrdre = u"Ordre";

// The keys of a task's four actions, in the order in which their statuses are joined.
inline constexpr std::u16string_view kActions[] = {u"Action\\OnErr", u"Action\\OnDec", u"Action\\ExeIf",
                                                   u"Action\\Goto"};

// Values of Configuration.
inline constexpr std::u16string_view kLang = u"Lang";

// Values of a user.
inline constexpr std::u16string_view kAccessPerm = u"AccessPerm";
inline constexpr std::u16string_view kPassword = u"Password";

// Values of a domain, the second one also of a scenario.
inline constexpr std::u16string_view kComment = u"Comment";
inline constexpr std::u16string_view kAdmin = u"Admin";

// Values of a scenario; the first one names its domain.
inline constexpr std::u16string_view kDomainOfScenario = u"Domain";
inline constexpr std::u16string_view kDir = u"Dir";
inline constexpr std::u16string_view kTraitement = u"Traitement";
inline constexpr std::u16string_view kUseSock = u"UseSock";
inline constexpr std::u16string_view kSockNum = u"SockNum";
inline constexpr std::u16string_view kDateTraitement = u"Date Traitement";
inline constexpr std::u16string_view kHwnd = u"Hwnd";

// The run state of a scenario and of a task.
inline constexpr std::u16string_view kEtat = u"Etat";

// Values of a task, and of each of its actions; "tsk" and a position name the values of the task order.
inline constexpr std::u16string_view kExecuteLe = u"ExecuteLe";
inline constexpr std::u16string_view kStatus = u"Status";
inline constexpr std::u16string_view kOrderPrefix = u"tsk";

// Values of a variable record.
inline constexpr std::u16string_view kVarType = u"V/C";
inline constexpr std::u16string_view kType = u"Type";
inline constexpr std::u16string_view kValue = u"Value";
inline constexpr std::u16string_view kInit = u"Init";

// The path of the levels, from the top one down.
template <class... Levels>
std::u16string Path(std::u16string_view top, const Levels&... levels) {
  std::u16string path(top);
  (path.append(u"\\").append(levels), ...);
  return path;
}

}  // namespace moxel::schema
