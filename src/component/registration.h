// The keys by which clients find the component.
#pragma once

namespace moxel::component {

// Writes, respectively removes, the keys of the classes, interfaces and the type library. False when the
// registry refused.
bool Register();
bool Unregister();

}  // namespace moxel::component
