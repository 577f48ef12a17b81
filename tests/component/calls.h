// Calling an object by number as a script engine does, with everything that comes back; the component
// loaded as a client does it.
#pragma once

#include <dlfcn.h>

#include <string>
#include <utility>
#include <vector>

#include "moxel/interfaces.h"
#include "tests/tools/shell.h"
#include "tests/variables/records.h"

namespace moxel::test {

inline constexpr DISPID kKey = 0x40030000, kDuplicate = 0x60030005, kUpdate = 0x60030006,
                        kUpdate1 = 0x60030007, kInitialize1 = 0x60030009, kValue = 0x68030002,
                        kInit = 0x68030001;

inline constexpr UINT kUntouched = 99;

struct Reply {
  HRESULT result = S_OK;
  Variant value = {};
  SCODE number = 0;
  std::u16string source = {};
  std::u16string description = {};
  UINT bad_argument = kUntouched;
};

using Named = std::vector<std::pair<DISPID, VARIANT>>;

// Positional arguments first to last; the caller keeps what they hold.
inline Reply Call(IDispatch* object, DISPID id, WORD flags, const std::vector<VARIANT>& positional = {},
                  const Named& named = {}) {
  std::vector<VARIANT> arguments;
  std::vector<DISPID> names;
  for (const auto& [name, argument] : named) {
    names.push_back(name);
    arguments.push_back(argument);
  }
  arguments.insert(arguments.end(), positional.rbegin(), positional.rend());
  DISPPARAMS parameters{arguments.data(), names.data(), static_cast<UINT>(arguments.size()),
                        static_cast<UINT>(names.size())};
  Reply reply;
  EXCEPINFO exception{};
  reply.result =
      object->Invoke(id, GUID_NULL, 0, flags, &parameters, &reply.value, &exception, &reply.bad_argument);
  auto take = [](BSTR text) {
    std::u16string taken(ViewOf(text));
    SysFreeString(text);
    return taken;
  };
  reply.number = exception.scode;
  reply.source = take(exception.bstrSource);
  reply.description = take(exception.bstrDescription);
  return reply;
}

inline Reply GetOf(IDispatch* object, DISPID id) { return Call(object, id, DISPATCH_PROPERTYGET); }

// The thread's error info, which is none afterwards.
struct ErrorText {
  bool present = false;
  std::u16string source = {};
  std::u16string description = {};
  bool operator==(const ErrorText&) const = default;
};

inline ErrorText TakeErrorInfo() {
  ObjectPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.Receive()) != S_OK) return {};
  Bstr source, description;
  info->GetSource(source.Receive());
  info->GetDescription(description.Receive());
  return {true, std::u16string(source.view()), std::u16string(description.view())};
}

inline std::string LibraryPath(const char* name) { return BuildFolder() / "lib" / name; }

// The component as a client has it: the shared library of this build.
class LibraryTest : public RegistryTest {
 protected:
  ~LibraryTest() override {
    if (library_) ::dlclose(library_);
  }

  HRESULT CallExport(const char* name) const {
    auto* entry = reinterpret_cast<HRESULT (*)()>(library_ ? ::dlsym(library_, name) : nullptr);
    return entry ? entry() : E_FAIL;
  }

 private:
  void* library_ = ::dlopen(LibraryPath("libmoxel.so").c_str(), RTLD_NOW | RTLD_LOCAL);
};

inline VARIANT Bare(VARTYPE tag) {
  VARIANT value{};
  value.vt = tag;
  return value;
}

template <class T>
VARIANT ByReference(VARTYPE tag, T* target) {
  VARIANT value = Bare(static_cast<VARTYPE>(tag | VT_BYREF));
  value.byref = target;
  return value;
}

}  // namespace moxel::test
