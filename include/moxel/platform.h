// The one door to the platform. Everything in this repository that names a platform type or entry point
// includes this header and no other, so building for the real platform means changing this page only.
#pragma once

#ifdef _WIN32
#include <oleauto.h>
#include <windows.h>
#else
#include "moxel/platform/automation.h"
#include "moxel/platform/locale.h"
#include "moxel/platform/registry.h"
#include "moxel/platform/type_info.h"
#include "moxel/platform/types.h"
#endif
