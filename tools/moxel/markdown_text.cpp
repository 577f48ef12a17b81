#include <algorithm>

#include "moxel/type_texts.h"

namespace moxel::tool {
namespace {

// Interfaces are shown under the name of their class; the plain collection has none.
std::string ClassNameOf(const TypeModel& model, const std::string& interface_name) {
  for (const TypeClass& each : model.classes)
    if (each.interface_name == interface_name) return each.name;
  return interface_name;
}

std::string TypeText(const TypeModel& model, const TypeName& type) {
  switch (type.tag) {
    case VT_I2: return "16-bit integer";
    case VT_I4: return "32-bit integer";
    case VT_BSTR: return "text";
    case VT_VARIANT: return "variant";
    case VT_DISPATCH: return "object";
    case VT_UNKNOWN: return "enumerator";
    default: return ClassNameOf(model, type.interface_name);
  }
}

std::string Signature(const TypeModel& model, const TypeMember& member) {
  std::string parameters;
  for (const TypeParameter& parameter : member.parameters) {
    if (parameter.name.empty()) continue;
    const bool optional = (parameter.flags & PARAMFLAG_FOPT) != 0;
    parameters.append(parameters.empty() ? "" : ", ").append(optional ? "[" : "");
    parameters.append(parameter.name).append(": ").append(TypeText(model, parameter.type));
    if (parameter.flags & PARAMFLAG_FOUT) parameters += " by reference";
    if (optional) parameters += "]";
  }
  std::string text = member.name;
  if (member.kind == INVOKE_FUNC || !parameters.empty()) text += "(" + parameters + ")";
  if (member.result.tag != VT_VOID) text += ": " + TypeText(model, member.result);
  return text;
}

const char* KindText(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_PROPERTYGET: return "get";
    case INVOKE_PROPERTYPUT: return "put";
    case INVOKE_PROPERTYPUTREF: return "put by reference";
    default: return "method";
  }
}

// One row a name: what can be done with a property stands together.
std::string MemberRow(const TypeModel& model, const TypeInterface& each, const TypeMember& member) {
  std::string kinds;
  for (const TypeMember& other : each.members)
    if (other.id == member.id) kinds += (kinds.empty() ? "" : ", ") + std::string(KindText(other.kind));
  auto getter = std::ranges::find_if(each.members, [&](const TypeMember& other) {
    return other.id == member.id && other.kind == INVOKE_PROPERTYGET;
  });
  const TypeMember& shown = getter == each.members.end() ? member : *getter;
  std::string help = member.help;
  if (member.id == DISPID_VALUE) help += " The default member.";
  if (member.hidden) help += " Hidden from browsers.";
  return "| `" + Signature(model, shown) + "` | " + kinds + " | " + IdText(member.id) + " | " + help + " |\n";
}

std::string MemberTable(const TypeModel& model, const TypeInterface& each) {
  std::string text = "| member | kind | id | |\n|---|---|---|---|\n";
  std::vector<MEMBERID> shown;
  for (const TypeMember& member : each.members) {
    if (std::ranges::find(shown, member.id) != shown.end()) continue;
    shown.push_back(member.id);
    text += MemberRow(model, each, member);
  }
  return text;
}

std::string InterfaceSection(const TypeModel& model, const TypeInterface& each) {
  std::string text = "\n## " + ClassNameOf(model, each.name) + "\n\n" + each.help + "\n\n";
  text += "Interface `" + each.name + "` {" + each.id + "}";
  for (const TypeClass& owner : model.classes) {
    if (owner.interface_name != each.name) continue;
    text += ", class {" + owner.id + "}";
    if (owner.creatable) text += ", created as `" + model.name + "." + owner.name + "`";
  }
  return text + ".\n\n" + MemberTable(model, each);
}

std::string EnumerationSection(const TypeEnumeration& each) {
  std::string text = "\n### " + each.name + "\n\n" + each.help + "\n\n| constant | value |\n|---|---|\n";
  for (const TypeConstant& constant : each.constants)
    text += "| `" + constant.name + "` | " + std::to_string(constant.value) + " |\n";
  return text;
}

}  // namespace

std::string MarkdownText(const TypeModel& model) {
  std::string text =
      "# " + model.title + ": the object model\n\nWritten by `moxel typelib --markdown`. Library `" +
      model.name + "` {" + model.id + "}, version " + std::to_string(model.major_version) + "." +
      std::to_string(model.minor_version) +
      ".\nMembers stand in slot order, behind the seven slots of `IDispatch`. A parameter in square "
      "brackets may be omitted.\n";
  for (const TypeInterface& each : model.interfaces) text += InterfaceSection(model, each);
  text += "\n## Enumerations\n";
  for (const TypeEnumeration& each : model.enumerations) text += EnumerationSection(each);
  return text;
}

}  // namespace moxel::tool
