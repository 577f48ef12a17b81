// The error that a call raises, as a value to compare.
#pragma once

#include <optional>
#include <utility>

#include "moxel/automation_error.h"

namespace moxel::test {

template <class Call>
std::optional<AutomationError> RaisedBy(Call&& call) {
  try {
    std::forward<Call>(call)();
  } catch (const AutomationError& error) {
    return error;
  }
  return std::nullopt;
}

// Its number; 0 where nothing is raised.
template <class Call>
std::int32_t NumberRaisedBy(Call&& call) {
  auto error = RaisedBy(std::forward<Call>(call));
  return error ? error->number() : 0;
}

}  // namespace moxel::test
