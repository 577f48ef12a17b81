#include "moxel/typelib_command.h"

#include <memory>

#include "moxel/component_library.h"
#include "moxel/identifiers.h"
#include "moxel/late_bound.h"
#include "moxel/type_texts.h"

namespace moxel::tool {
namespace {

TypeModel ReadComponent(const ComponentLibrary& component) {
  const ObjectPtr<IDispatch> object = component.Create(CLSID_RootVar);
  ObjectPtr<ITypeInfo> info;
  ThrowIfFailed(object->GetTypeInfo(0, 0, info.Receive()));
  ObjectPtr<ITypeLib> library;
  ThrowIfFailed(info->GetContainingTypeLib(library.Receive(), nullptr));
  return ReadTypeModel(library.get());
}

}  // namespace

void AddTypelibCommand(CLI::App& app, Console& console) {
  CLI::App* verb = app.add_subcommand("typelib", "Print the component's type library as IDL");
  auto markdown = std::make_shared<bool>(false);
  verb->add_flag("--markdown", *markdown, "Print it as the reference of the object model, in Markdown");
  verb->footer("Example:\n  moxel typelib > moxel.idl");
  verb->callback([markdown, &console] {
    const TypeModel model = ReadComponent(ComponentLibrary::Find());
    console.out << (*markdown ? MarkdownText(model) : IdlText(model));
  });
}

}  // namespace moxel::tool
