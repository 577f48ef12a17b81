#include "scenarios/scenario.h"

#include <map>

#include "errors/attempt.h"
#include "moxel/enumerations.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "variables/variable_record.h"

namespace moxel {
namespace {

// The statuses of a task's actions in one text; a blank marks an action without status.
std::u16string ReadStatuses(std::u16string_view task_path) {
  std::u16string statuses;
  for (std::u16string_view action : schema::kActions) {
    Variant status = RegReadValue(schema::Path(task_path, action), schema::kStatus);
    statuses += status.Equals(u"") ? u" " : status.ToText();
  }
  return statuses;
}

std::u16string WithoutPrefix(std::u16string name) {
  for (std::size_t at = 0; (at = name.find(schema::kOrderPrefix, at)) != std::u16string::npos;)
    name.erase(at, schema::kOrderPrefix.size());
  return name;
}

// The task order as the registry has it: names by position, and the data that was read last.
struct TaskOrder {
  std::map<std::int32_t, std::u16string> names;  // positions from 1 on
  std::u16string last_data;
};

// A value whose name holds no position lands on that of the value before it, a later value of a position
// replaces the earlier one, and positions below 1 take no place in the order.
TaskOrder ReadTaskOrder(std::u16string_view path) {
  TaskOrder order;
  std::int32_t position = 0;
  ForEachValue(path, KEY_QUERY_VALUE, [&](const std::u16string& name, const std::u16string& data) {
    order.last_data = data;
    Attempt([&] { position = Variant(WithoutPrefix(name)).ToI4(); });
    if (position > 0) order.names[position] = data;
  });
  return order;
}

}  // namespace

Scenario::~Scenario() {
  variables_ = nullptr;
  tasks_ = nullptr;
  order_ = nullptr;
}

std::u16string Scenario::Path() const { return schema::Path(schema::kScenarios, key); }

Status Scenario::Initialize(std::int16_t wMode, std::int16_t wWithOutVar) {
  switch (wMode) {
    case MXScenarioModeInit_All:
      ResetAllTasks();
      ResetRunState();
      break;
    case MXScenarioModeInit_Scenario: ResetRunState(); break;
    case MXScenarioModeInit_AfterError:
      ResetFailedTasks();
      ResetRunState();
      break;
    default: break;
  }
  // The flag asks for the reset that its name denies, and only its value 1 does.
  if (wWithOutVar == 1) ResetVariables();
  return VARIANT_TRUE;
}

ObjectPtr<Traitement> Scenario::SelectedTask(std::int16_t position) {
  return Traitements()->Item(TraitementsSelected()->Item(position));
}

// The counters of the resets are 16-bit: more entries than fit are refused.
void Scenario::ResetAllTasks() {
  const std::int16_t count = Variant(TraitementsSelected()->Count()).ToI2();
  for (std::int32_t i = 1; i <= count; ++i)
    SelectedTask(static_cast<std::int16_t>(i))->Initialize(key, MXTraitementState_NotProcessed);
}

void Scenario::ResetFailedTasks() {
  const std::int16_t count = Variant(TraitementsSelected()->Count()).ToI2();
  for (std::int32_t i = 1; i <= count; ++i) {
    ObjectPtr<Traitement> task = SelectedTask(static_cast<std::int16_t>(i));
    const bool failed = task->State() == MXTraitementState_WithError;
    const bool processing = task->State() == MXTraitementState_Processing;
    if (failed || processing) task->Initialize(key, MXTraitementState_Retry);
  }
}

void Scenario::ResetRunState() {
  RegWriteValue(Path(), schema::kEtat, REG_DWORD, u"0");
  RegWriteValue(Path(), schema::kAdmin, REG_DWORD, u"0");
  state_ = MXScenarioState_NotProcessed;
}

void Scenario::ResetVariables() {
  const std::int16_t count = Variant(Variables()->Count()).ToI2();
  for (std::int32_t i = 1; i <= count; ++i) Variables()->Item(i)->Initialize(this);
}

std::int16_t Scenario::State() {
  state_ = ReadNumberOrZero(Path(), schema::kEtat).ToI2();
  return state_;
}

std::int32_t Scenario::Hwnd() {
  hwnd_ = ReadNumberOrZero(Path(), schema::kHwnd).ToI4();
  return hwnd_;
}

const Variant& Scenario::Port() {
  port_ = RegReadValue(Path(), schema::kSockNum);
  return port_;
}

ObjectPtr<Variables> Scenario::Variables() {
  if (!variables_) {
    variables_ = moxel::Variables::Create();
    LoadVariables(*variables_);
  }
  return variables_;
}

ObjectPtr<Traitements> Scenario::Traitements() {
  if (!tasks_) {
    tasks_ = moxel::Traitements::Create();
    LoadTasks(*tasks_);
  }
  return tasks_;
}

// The tasks are not loaded for it: only tasks loaded before get their mark.
ObjectPtr<Collection> Scenario::TraitementsSelected() {
  if (!order_) {
    order_ = Collection::Create();
    LoadTaskOrder(tasks_.get());
  }
  return order_;
}

ObjectPtr<Utilisateurs> Scenario::Utilisateurs() {
  if (!users_) {
    users_ = moxel::Utilisateurs::Create();
    LoadUsers(*users_);
  }
  return users_;
}

// Full rights are asked for on purpose: for an account that may not write the tree the list stays empty. The
// permission lies directly below "Scenarios", so it is the same in every scenario.
void Scenario::LoadUsers(moxel::Utilisateurs& users) const {
  ForEachValue(schema::Path(Path(), schema::kUser), KEY_ALL_ACCESS,
               [&](const std::u16string&, const std::u16string& name) {
                 Variant permission = ReadNumberOrZero(schema::Path(schema::kScenarios, schema::kUser, name),
                                                       schema::kAccessPerm);
                 ObjectPtr<User> user = User::Create();
                 user->key = name;
                 Attempt([&] { user->SetPermission(permission.ToI2()); });
                 Attempt([&] { users.Add(*user); });
               });
}

void Scenario::LoadVariables(moxel::Variables& variables) const { LoadVariableRecords(Path(), variables); }

void Scenario::LoadTasks(moxel::Traitements& tasks) const {
  const std::u16string tasks_path = schema::Path(Path(), schema::kTaches);
  ForEachSubKey(tasks_path, [&](const std::u16string& name) {
    const std::u16string path = schema::Path(tasks_path, name);
    Variant state = ReadNumberOrZero(path, schema::kEtat);
    Variant type = RegReadValue(path, schema::kType);
    Variant last_exe = RegReadValue(path, schema::kExecuteLe);
    std::u16string statuses = ReadStatuses(path);
    ObjectPtr<Traitement> task = Traitement::Create();
    task->key = name;
    task->SetSource(key);
    Attempt([&] { task->SetState(state.ToI2()); });
    Attempt([&] { task->SetTypeTask(type.ToI2()); });
    task->SetLastExe(last_exe);
    task->SetStatusAct(statuses);
    task->SetSelected(0);
    Attempt([&] { tasks.Add(*task); });
  });
}

// The product's other programs know two things: a name's key is its position plus one, and that number marks
// not the task at the position but the one that the value read last names, so that in the end one task
// carries the highest.
void Scenario::LoadTaskOrder(moxel::Traitements* tasks) {
  const TaskOrder order = ReadTaskOrder(schema::Path(Path(), schema::kOrdre));
  for (const auto& entry : order.names) {
    const std::u16string& name = entry.second;
    if (name.empty()) continue;
    const Variant mark = static_cast<double>(entry.first) + 1;
    Attempt([&] { order_->Add(name, Variant(mark.ToI4()).ToText()); });
    if (tasks) Attempt([&] { tasks->Item(order.last_data)->SetSelected(mark.ToI2()); });
  }
}

}  // namespace moxel
