// The frame of every entry point: failures become codes, and the cause of a failure in the file is kept for
// RegFileCause.
#pragma once

#include <new>
#include <string>

#include "platform/registry/failure.h"

namespace moxel::platform {

// Why the calling thread's last failing call failed in the file; empty when it did not.
std::string& LastCause();

template <class Call>
LSTATUS Answer(Call&& call) noexcept {
  try {
    LastCause().clear();
    return call();
  } catch (const RegistryFailure& failure) {
    try {
      LastCause() = failure.what();
    } catch (const std::bad_alloc&) {
      // The code alone must do.
    }
    return failure.code();
  } catch (const std::bad_alloc&) {
    return ERROR_OUTOFMEMORY;
  }
}

}  // namespace moxel::platform
