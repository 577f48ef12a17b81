// Base of the tests of scenarios and tasks: objects by name, and what collections show as text.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "registry/store.h"
#include "scenarios/scenarios.h"
#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {

inline std::u16string Wide(std::string_view text) { return {text.begin(), text.end()}; }
inline std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

class ScenarioTest : public ProductTest {};

inline ObjectPtr<Scenario> ScenarioNamed(std::string_view name) { return Keyed<Scenario>(Wide(name)); }

inline ObjectPtr<Traitement> TaskNamed(std::string_view name, std::u16string_view source = {}) {
  ObjectPtr<Traitement> task = Keyed<Traitement>(Wide(name));
  task->SetSource(source);
  return task;
}

// The cells of a table in text form from its second line on, between "|" and line breaks.
inline std::vector<std::string> Cells(std::string_view table) {
  std::vector<std::string> cells;
  for (std::size_t at = 1, end; at < table.size(); at = end + 1) {
    end = std::min(table.find_first_of("|\n", at), table.size());
    const std::string_view cell = table.substr(at, end - at);
    const std::size_t begin = std::min(cell.find_first_not_of(' '), cell.size());
    cells.emplace_back(cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin));
  }
  return cells;
}

// What a collection holds, in its order; `show` answers an item as text behind a separating character.
template <class Items, class Show>
std::string Listed(const Items& items, Show&& show) {
  std::string list;
  for (std::int32_t i = 1; i <= items.Count(); ++i) list += show(items.Item(i));
  return list.substr(list.empty() ? 0 : 1);
}

// "A B C": the keys of objects.
template <class Objects>
std::string KeysOf(const Objects& objects) {
  return Listed(objects, [](const auto& object) { return " " + Narrow(object->key); });
}

// "A B C": the texts of a task order by position.
inline std::string NamesIn(const Collection& order) {
  return Listed(order, [](const Variant& name) { return " " + Narrow(name.ToText()); });
}

// "A:2": the tasks with a mark and what it is.
inline std::string MarksOf(const Traitements& tasks) {
  return Listed(tasks, [](const ObjectPtr<Traitement>& task) {
    return task->Selected() == 0 ? "" : " " + Narrow(task->key) + ":" + std::to_string(task->Selected());
  });
}

}  // namespace moxel::test
