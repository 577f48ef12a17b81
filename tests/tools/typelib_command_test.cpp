#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "moxel/files.h"
#include "tests/support/temp_registry.h"
#include "tests/tools/run_tool.h"

namespace moxel::test {
namespace {

class TypelibCommand : public RegistryTest {};

TEST_F(TypelibCommand, TheIdlCompilesAsItIs) {
  const std::string text = Do({"typelib"});
  const std::string compiler = "x86_64-w64-mingw32-widl";
  if (std::system(("command -v " + compiler + " > /dev/null").c_str()) != 0)
    GTEST_SKIP() << "the compiler of interface definitions is not installed";
  const std::filesystem::path idl = folder() / "moxel.idl", library = folder() / "moxel.tlb",
                              header = folder() / "moxel.h";
  std::ofstream(idl) << text;
  const std::string quiet = " " + idl.string() + " 2> " + (folder() / "messages").string();
  EXPECT_EQ(std::system((compiler + " -t -o " + library.string() + quiet).c_str()), 0)
      << tool::ReadFile(folder() / "messages");
  EXPECT_EQ(std::system((compiler + " -h -o " + header.string() + quiet).c_str()), 0);
  // What the compiler understood of it.
  const std::string understood = tool::ReadFile(header);
  for (const char* line : {"MXDomainError_ContainElement = -2147219902",
                           "_User_Update(_User* This,short *wPermission,VARIANT wOldPwd,VARIANT "
                           "*wNewPwd,VARIANT *wConfPwd,short *result)",
                           "_Root_putref_Domaines(_Root* This,_Domaines *value)"})
    EXPECT_NE(understood.find(line), std::string::npos) << line;
  EXPECT_NE(tool::ReadFile(library).find("RecupVariable"), std::string::npos);
}

TEST_F(TypelibCommand, TheReferenceInTheDocumentationIsUpToDate) {
  EXPECT_EQ(Do({"typelib", "--markdown"}), tool::ReadFile(MOXEL_DOCS "/reference.md"))
      << "write it anew: moxel typelib --markdown > docs/reference.md";
}

}  // namespace
}  // namespace moxel::test
