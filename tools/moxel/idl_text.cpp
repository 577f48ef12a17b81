#include <cstdio>

#include "moxel/type_texts.h"

namespace moxel::tool {
namespace {

constexpr const char* kPlatform = R"(// The platform's own types.
typedef wchar_t* BSTR;
typedef long HRESULT;
typedef struct GUID {
  unsigned long Data1;
  unsigned short Data2;
  unsigned short Data3;
  unsigned char Data4[8];
} GUID;
typedef struct VARIANT {
  unsigned short vt;
  unsigned short wReserved[3];
  hyper value[2];
} VARIANT;

[local, object, uuid(00000000-0000-0000-C000-000000000046)]
interface IUnknown
{
  HRESULT QueryInterface([in] GUID* riid, [out] void** ppvObject);
  unsigned long AddRef();
  unsigned long Release();
};

[local, object, uuid(00020400-0000-0000-C000-000000000046)]
interface IDispatch : IUnknown
{
  HRESULT GetTypeInfoCount([out] unsigned int* pctinfo);
  HRESULT GetTypeInfo([in] unsigned int iTInfo, [in] unsigned long lcid, [out] void** ppTInfo);
  HRESULT GetIDsOfNames([in] GUID* riid, [in] wchar_t** rgszNames, [in] unsigned int cNames,
                        [in] unsigned long lcid, [out] long* rgDispId);
  HRESULT Invoke([in] long dispIdMember, [in] GUID* riid, [in] unsigned long lcid, [in] unsigned short wFlags,
                 [in] void* pDispParams, [out] VARIANT* pVarResult, [out] void* pExcepInfo,
                 [out] unsigned int* puArgErr);
};
)";

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string HelpAttribute(const std::string& help) {
  return help.empty() ? "" : ", helpstring(" + Quoted(help) + ")";
}

std::string BaseName(const TypeName& type) {
  switch (type.tag) {
    case VT_I2: return "short";
    case VT_I4: return "long";
    case VT_BSTR: return "BSTR";
    case VT_VARIANT: return "VARIANT";
    case VT_DISPATCH: return "IDispatch*";
    case VT_UNKNOWN: return "IUnknown*";
    default: return type.interface_name;
  }
}

std::string Declared(const TypeName& type, int more_references, const std::string& name) {
  return BaseName(type) + std::string(static_cast<std::size_t>(type.references + more_references), '*') +
         " " + name;
}

std::string ParameterText(const TypeParameter& parameter) {
  std::string attributes = "in";
  if (parameter.flags & PARAMFLAG_FOUT) attributes += ", out";
  if (parameter.flags & PARAMFLAG_FOPT) attributes += ", optional";
  return "[" + attributes + "] " +
         Declared(parameter.type, 0, parameter.name.empty() ? "value" : parameter.name);
}

const char* KindAttribute(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_PROPERTYGET: return ", propget";
    case INVOKE_PROPERTYPUT: return ", propput";
    case INVOKE_PROPERTYPUTREF: return ", propputref";
    default: return "";
  }
}

std::string MemberText(const TypeMember& member) {
  std::string parameters;
  auto add = [&](const std::string& parameter) {
    parameters += (parameters.empty() ? "" : ", ") + parameter;
  };
  for (const TypeParameter& parameter : member.parameters) add(ParameterText(parameter));
  if (member.result.tag != VT_VOID) add("[out, retval] " + Declared(member.result, 1, "result"));
  return "    [id(" + IdText(member.id) + ")" + KindAttribute(member.kind) +
         (member.hidden ? ", hidden" : "") + HelpAttribute(member.help) + "]\n    HRESULT " + member.name +
         "(" + parameters + ");\n";
}

std::string EnumerationText(const TypeEnumeration& enumeration) {
  std::string text = "  typedef [v1_enum, public" + HelpAttribute(enumeration.help) + "] enum " +
                     enumeration.name + "\n  {\n";
  for (const TypeConstant& constant : enumeration.constants)
    text += "    " + constant.name + " = " + std::to_string(constant.value) +
            (&constant == &enumeration.constants.back() ? "\n" : ",\n");
  return text + "  } " + enumeration.name + ";\n";
}

std::string InterfaceText(const TypeInterface& each) {
  std::string text = "  [object, uuid(" + each.id + "), dual, oleautomation, nonextensible" +
                     HelpAttribute(each.help) + "]\n  interface " + each.name + " : IDispatch\n  {\n";
  for (const TypeMember& member : each.members) text += MemberText(member);
  return text + "  };\n";
}

std::string ClassText(const TypeClass& each) {
  return "  [uuid(" + each.id + ")" + (each.creatable ? "" : ", noncreatable") + HelpAttribute(each.help) +
         "]\n  coclass " + each.name + "\n  {\n    [default] interface " + each.interface_name + ";\n  };\n";
}

}  // namespace

std::string IdText(MEMBERID id) {
  if (id > -100 && id < 100) return std::to_string(id);
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(id));
  return text;
}

std::string IdlText(const TypeModel& model) {
  std::string text = "// " + model.title + ": written by \"moxel typelib\".\n\n" + kPlatform + "\n[uuid(" +
                     model.id + "), version(" + std::to_string(model.major_version) + "." +
                     std::to_string(model.minor_version) + ")" + HelpAttribute(model.title) + "]\nlibrary " +
                     model.name + "\n{\n";
  for (const TypeInterface& each : model.interfaces) text += "  interface " + each.name + ";\n";
  for (const TypeEnumeration& each : model.enumerations) text += "\n" + EnumerationText(each);
  for (const TypeInterface& each : model.interfaces) text += "\n" + InterfaceText(each);
  for (const TypeClass& each : model.classes) text += "\n" + ClassText(each);
  return text + "};\n";
}

}  // namespace moxel::tool
