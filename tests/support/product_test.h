// Base of the tests of the object model: an empty registry, the thread started up.
#pragma once

#include "component/module.h"
#include "registry/settings.h"
#include "tests/support/temp_registry.h"

namespace moxel::test {

class ProductTest : public RegistryTest {
 protected:
  ProductTest() { Main(); }
  ~ProductTest() override { EXPECT_FALSE(component::IsModuleInUse()) << "an object was left behind"; }
};

}  // namespace moxel::test
