#include "moxel/component_commands.h"

#include "moxel/component_library.h"

namespace moxel::tool {

void AddComponentCommands(CLI::App& app, Console&) {
  app.add_subcommand("register", "Register the component's classes and type library")
      ->footer("Example:\n  moxel register")
      ->callback([] { ComponentLibrary::Find().Call("DllRegisterServer"); });
  app.add_subcommand("unregister", "Remove the component's registration")
      ->footer("Example:\n  moxel unregister")
      ->callback([] { ComponentLibrary::Find().Call("DllUnregisterServer"); });
}

}  // namespace moxel::tool
