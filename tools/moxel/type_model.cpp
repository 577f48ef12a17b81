#include "moxel/type_model.h"

#include "moxel/late_bound.h"
#include "moxel/text.h"

namespace moxel::tool {
namespace {

std::string GuidText(const GUID& guid) {
  OLECHAR text[39];
  StringFromGUID2(guid, text, 39);
  return ToUtf8(std::u16string_view(text).substr(1, 36));  // without its braces
}

struct Documentation {
  std::string name;
  std::string help;
};

// Of a type or a library, as `give` fills it in.
template <class Give>
Documentation Document(Give give) {
  Bstr name;
  Bstr help;
  ThrowIfFailed(give(name.Receive(), help.Receive()));
  return {ToUtf8(name.view()), ToUtf8(help.view())};
}

class TypeReader {
 public:
  explicit TypeReader(ITypeInfo* info) : info_(info) {
    TYPEATTR* attributes = nullptr;
    ThrowIfFailed(info->GetTypeAttr(&attributes));
    attributes_ = *attributes;
    info->ReleaseTypeAttr(attributes);
  }

  TYPEKIND kind() const { return attributes_.typekind; }

  TypeEnumeration Enumeration() const {
    const Documentation own = DocumentationOf(MEMBERID_NIL);
    TypeEnumeration result{own.name, own.help, {}};
    for (UINT i = 0; i < attributes_.cVars; ++i) {
      VARDESC* record = nullptr;
      ThrowIfFailed(info_->GetVarDesc(i, &record));
      result.constants.push_back({DocumentationOf(record->memid).name, record->lpvarValue->lVal});
      info_->ReleaseVarDesc(record);
    }
    return result;
  }

  TypeInterface Interface() const {
    const Documentation own = DocumentationOf(MEMBERID_NIL);
    TypeInterface result{own.name, own.help, GuidText(attributes_.guid), {}};
    for (UINT i = 0; i < attributes_.cFuncs; ++i) {
      FUNCDESC* record = nullptr;
      ThrowIfFailed(info_->GetFuncDesc(i, &record));
      result.members.push_back(Member(*record));
      info_->ReleaseFuncDesc(record);
    }
    return result;
  }

  TypeClass Class() const {
    const Documentation own = DocumentationOf(MEMBERID_NIL);
    HREFTYPE reference = 0;
    ThrowIfFailed(info_->GetRefTypeOfImplType(0, &reference));
    return {own.name, own.help, GuidText(attributes_.guid),
            (attributes_.wTypeFlags & TYPEFLAG_FCANCREATE) != 0, NameOf(reference)};
  }

 private:
  Documentation DocumentationOf(MEMBERID member) const {
    return Document([&](BSTR* name, BSTR* help) {
      return info_->GetDocumentation(member, name, help, nullptr, nullptr);
    });
  }

  std::string NameOf(HREFTYPE reference) const {
    ObjectPtr<ITypeInfo> referred;
    ThrowIfFailed(info_->GetRefTypeInfo(reference, referred.Receive()));
    return Document([&](BSTR* name, BSTR* help) {
             return referred->GetDocumentation(MEMBERID_NIL, name, help, nullptr, nullptr);
           })
        .name;
  }

  TypeMember Member(const FUNCDESC& record) const {
    const Documentation own = DocumentationOf(record.memid);
    TypeMember member{own.name,
                      own.help,
                      record.memid,
                      record.invkind,
                      (record.wFuncFlags & FUNCFLAG_FHIDDEN) != 0,
                      {},
                      TypeOf(record.elemdescFunc.tdesc)};
    std::vector<BSTR> names(static_cast<std::size_t>(record.cParams) + 1);
    UINT count = 0;
    ThrowIfFailed(info_->GetNames(record.memid, names.data(), static_cast<UINT>(names.size()), &count));
    for (std::size_t i = 0; i < names.size(); ++i) {
      Bstr name;
      *name.Receive() = names[i];
      if (i == 0) continue;
      const ELEMDESC& parameter = record.lprgelemdescParam[i - 1];
      member.parameters.push_back(
          {ToUtf8(name.view()), TypeOf(parameter.tdesc), parameter.paramdesc.wParamFlags});
    }
    return member;
  }

  TypeName TypeOf(const TYPEDESC& type) const {
    TypeName name;
    const TYPEDESC* target = &type;
    for (; target->vt == VT_PTR; target = target->lptdesc) ++name.references;
    name.tag = target->vt;
    if (target->vt == VT_USERDEFINED) name.interface_name = NameOf(target->hreftype);
    return name;
  }

  ITypeInfo* info_;
  TYPEATTR attributes_;
};

}  // namespace

TypeModel ReadTypeModel(ITypeLib* library) {
  TLIBATTR* attributes = nullptr;
  ThrowIfFailed(library->GetLibAttr(&attributes));
  TypeModel model;
  model.id = GuidText(attributes->guid);
  model.major_version = attributes->wMajorVerNum;
  model.minor_version = attributes->wMinorVerNum;
  library->ReleaseTLibAttr(attributes);
  const Documentation own = Document(
      [&](BSTR* name, BSTR* help) { return library->GetDocumentation(-1, name, help, nullptr, nullptr); });
  model.name = own.name;
  model.title = own.help;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ObjectPtr<ITypeInfo> info;
    ThrowIfFailed(library->GetTypeInfo(i, info.Receive()));
    const TypeReader reader(info.get());
    if (reader.kind() == TKIND_ENUM) model.enumerations.push_back(reader.Enumeration());
    if (reader.kind() == TKIND_DISPATCH) model.interfaces.push_back(reader.Interface());
    if (reader.kind() == TKIND_COCLASS) model.classes.push_back(reader.Class());
  }
  return model;
}

}  // namespace moxel::tool
