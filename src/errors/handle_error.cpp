#include "errors/handle_error.h"

#include <limits>
#include <string>
#include <utility>

#include "errors/messages.h"
#include "moxel/automation_error.h"

namespace moxel {

void HandleError(std::int32_t id, std::u16string_view source) {
  std::u16string text = GetErrorMessage(id);
  std::int64_t number = std::int64_t{kErrorBase} + id;
  if (number < std::numeric_limits<std::int32_t>::min()) throw AutomationError::Overflow();
  throw AutomationError(static_cast<std::int32_t>(number), std::u16string(source), std::move(text));
}

}  // namespace moxel
