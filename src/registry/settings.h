// Start-up and the settings of the store, kept per thread.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/platform.h"

namespace moxel {

struct StoreSettings {
  HKEY RootHive = 0;
  std::u16string RootPath;          // ends with a backslash
  std::int32_t LanguageOffset = 0;  // added to every message id: 0 French, 10000 English
};

// The calling thread's settings.
StoreSettings& Settings();

// Points the thread's store at the product's root and reads the language. To run on each thread before the
// first object is created there. Error 13 or 6 when the language is not a number that fits.
void Main();

// Reads the language offset from "Configuration" / "Lang"; 0 when it is missing or empty.
// Error 13 or 6 when it is not a number that fits.
void GetLanguage();

}  // namespace moxel
