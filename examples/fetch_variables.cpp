// Fetches single variables through the component, as a job does at run time.
//
//   fetch_variables domain Sales Region        a variable of a domain
//   fetch_variables scenario Night Greeting    a variable of a scenario
//
// The component is found by its program id, so it must be registered (moxel register).
#include <cstdio>
#include <cstring>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/text.h"
#include "moxel/variant.h"

namespace {

moxel::ObjectPtr<moxel::_RootVar> CreateRootVar() {
  CLSID class_id;
  moxel::ObjectPtr<moxel::_RootVar> root;
  HRESULT status = CLSIDFromProgID(u"MOXEL.RootVar", &class_id);
  if (SUCCEEDED(status))
    status =
        CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, moxel::IID__RootVar, root.ReceiveAny());
  if (FAILED(status))
    std::fprintf(stderr, "MOXEL.RootVar cannot be created: 0x%08X\n", static_cast<unsigned>(status));
  return root;
}

}  // namespace

int main(int argc, char** argv) {
  bool domain = argc == 4 && std::strcmp(argv[1], "domain") == 0;
  bool scenario = argc == 4 && std::strcmp(argv[1], "scenario") == 0;
  if (!domain && !scenario) {
    std::fprintf(stderr, "usage: fetch_variables domain|scenario OWNER VARIABLE\n");
    return 2;
  }
  auto root = CreateRootVar();
  if (!root) return 1;

  moxel::Variant no_owner;
  moxel::Variant owner = moxel::FromUtf8(argv[2]);
  moxel::Variant name = moxel::FromUtf8(argv[3]);
  moxel::ObjectPtr<moxel::_Variable> variable;
  HRESULT status = root->raw_RecupVariable(domain ? &owner : &no_owner, &owner, &name, variable.Receive());
  if (FAILED(status)) {
    std::fprintf(stderr, "RecupVariable failed: 0x%08X\n", static_cast<unsigned>(status));
    return 1;
  }
  if (!variable) {
    std::printf("%-8s %-8s %-14s not there\n", argv[1], argv[2], argv[3]);
    return 0;
  }

  static const char* const kDataTypes[] = {"text", "number", "boolean", "password", "date", "?", "real"};
  moxel::Variant value;
  moxel::Variant initial;
  SHORT data_type = 0;
  variable->get_Value(&value);
  variable->get_Init(&initial);
  variable->get_DataType(&data_type);
  std::printf("%-8s %-8s %-14s %-8s = %s (initially %s)\n", argv[1], argv[2], argv[3], kDataTypes[data_type],
              moxel::ToUtf8(value.ToText()).c_str(), moxel::ToUtf8(initial.ToText()).c_str());
}
