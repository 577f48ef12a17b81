// One scenario: a named, ordered set of tasks with its own users and variables.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "platform/automation/collection.h"
#include "registry/status.h"
#include "scenarios/traitements.h"
#include "users/utilisateurs.h"
#include "variables/variables.h"

namespace moxel {

// Attributes are as they were loaded, but for the live ones: State, Hwnd and Port read the registry at every
// call, because the product's execution engine changes them while the scenario runs. The four collections are
// loaded when they are first read; putting none makes the next read load afresh.
class Scenario : public _Scenario {
 public:
  // A new, empty scenario.
  static ObjectPtr<Scenario> Create();
  ~Scenario();

  // Its name, its key in collections and the name of its registry key. Assigning it has no other effect.
  std::u16string key;

  // Resets the run state before a new run: of the tasks in the order (mode 0: all become 0; mode 2: those
  // with an error or processing become 4; mode 1: none) and then of the scenario; any other mode resets
  // neither. When `wWithOutVar` is exactly 1, whatever its name says, the variables are reset too. Always
  // true. An error on the way ends it, and what was reset stays reset: 5 for an order that names no task, 13
  // or 6 for a state that is no number, 1507 from a variable, 6 for more entries than a 16-bit counter holds,
  // before any is touched.
  Status Initialize(std::int16_t wMode, std::int16_t wWithOutVar);

  std::int16_t Mode() const { return mode_; }
  const Variant& Directory() const { return directory_; }
  std::int16_t UseSocket() const { return use_socket_; }
  const Variant& LastExe() const { return last_exe_; }

  // Read now. A state or window that is missing is 0, a port that is missing the empty text. Error 13 or 6
  // for a state or a window that is no number of its width.
  std::int16_t State();
  std::int32_t Hwnd();
  const Variant& Port();

  ObjectPtr<moxel::Variables> Variables();
  ObjectPtr<moxel::Traitements> Traitements();
  // The names of the tasks in their order, each under the key of its position plus one.
  ObjectPtr<Collection> TraitementsSelected();
  ObjectPtr<moxel::Utilisateurs> Utilisateurs();

  // Keep a collection as it is, or none.
  void PutVariables(moxel::Variables* variables) { variables_ = ObjectPtr(variables); }
  void PutTraitements(moxel::Traitements* tasks) { tasks_ = ObjectPtr(tasks); }
  void PutTraitementsSelected(Collection* order) { order_ = ObjectPtr(order); }
  void PutUtilisateurs(moxel::Utilisateurs* users) { users_ = ObjectPtr(users); }

  void SetMode(std::int16_t wMode) { mode_ = wMode; }
  void SetDirectory(const Variant& wDirectory) { directory_ = wDirectory; }
  void SetUseSocket(std::int16_t wUseSocket) { use_socket_ = wUseSocket; }
  void SetPort(const Variant& wPort) { port_ = wPort; }
  void SetState(std::int16_t wState) { state_ = wState; }
  void SetHwnd(std::int32_t wHwnd) { hwnd_ = wHwnd; }
  void SetLastExe(const Variant& wLastExe) { last_exe_ = wLastExe; }

 private:
  std::u16string Path() const;
  ObjectPtr<Traitement> SelectedTask(std::int16_t position);
  void ResetAllTasks();
  void ResetFailedTasks();
  void ResetRunState();
  void ResetVariables();

  void LoadUsers(moxel::Utilisateurs& users) const;
  void LoadVariables(moxel::Variables& variables) const;
  void LoadTasks(moxel::Traitements& tasks) const;
  void LoadTaskOrder(moxel::Traitements* tasks);

  Variant directory_;
  std::int16_t mode_ = 0;
  Variant last_exe_;
  std::int16_t use_socket_ = 0;
  Variant port_;
  std::int16_t state_ = 0;
  std::int32_t hwnd_ = 0;
  ObjectPtr<moxel::Traitements> tasks_;
  ObjectPtr<Collection> order_;
  ObjectPtr<moxel::Variables> variables_;
  ObjectPtr<moxel::Utilisateurs> users_;
};

}  // namespace moxel
