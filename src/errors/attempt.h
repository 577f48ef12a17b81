// For loaders and look-ups, which ignore every error step by step.
#pragma once

#include <utility>

#include "moxel/automation_error.h"

namespace moxel {

// Runs one step; where it fails, what it had not done yet stays undone and the caller goes on with the next.
template <class Step>
void Attempt(Step&& step) {
  try {
    std::forward<Step>(step)();
  } catch (const AutomationError&) {
    // The next step goes on with what there is.
  }
}

}  // namespace moxel
