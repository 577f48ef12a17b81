#include "root/root_var.h"

#include <gtest/gtest.h>

#include "tests/platform/locale/scoped_locale.h"
#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

class RootVarTest : public ProductTest {
 protected:
  ObjectPtr<Variable> Fetch(const Variant& domain, const Variant& scenario, const Variant& name) const {
    return root_var_->RecupVariable(domain, scenario, name);
  }

  ObjectPtr<RootVar> root_var_ = RootVar::Create();
};

TEST_F(RootVarTest, OnePlaceIsSearchedForTheExactName) {
  Configure(R"(
      Domain\D1\Var\X        Value=domain
      Domain\7\Var\X         Value=seven
      Domain\1,5\Var\X       Value=comma
      Scenarios\S1\Var\X     Value=scenario
      Scenarios\S1\Var\12    Value=number
      Scenarios\S1\Var\Only  Value=only
      Scenarios\Empty
      Var\X                  Value=root)");
  const struct {
    Variant domain, scenario, name;
    const char* found;  // null: no object
  } cases[] = {
      {u"D1", u"S1", u"X", "'domain'"},
      {u"", u"S1", u"X", "'scenario'"},
      {{}, u"S1", u"X", "'scenario'"},
      {u"d1", u"", u"X", "'domain'"},  // only the variable's own name is compared
      {7.0, {}, u"X", "'seven'"},
      {1.5, {}, u"X", "'comma'"},
      {u"D1", Variant::Null(), u"X", "'domain'"},
      {u"D1", u"S1", u"Only", nullptr},
      {u" ", u"S1", u"X", nullptr},
      {u"", u"S2", u"X", nullptr},
      {u"", u"Empty", u"X", nullptr},
      {u"", u"", u"X", nullptr},
      {u"D1", u"", u"x", nullptr},
      {u"D1", u"", u"X ", nullptr},
      {u"D1", u"", {}, nullptr},
      {u"", u"S1", u"12", "'number'"},
      {u"", u"S1", std::int32_t{12}, nullptr},  // a number is never equal to a text
      {u"D1", u"S1", Variant::Null(), nullptr},
  };
  ScopedLocale french("fr_FR.UTF-8");
  for (const auto& c : cases) {
    const ObjectPtr<Variable> variable = Fetch(c.domain, c.scenario, c.name);
    EXPECT_EQ(variable ? Shown(variable->Value()) : "no object", c.found ? c.found : "no object")
        << Shown(c.domain) << " " << Shown(c.scenario) << " " << Shown(c.name);
    EXPECT_EQ(variable ? Shown(Variant(variable->key)) : Shown(c.name), Shown(c.name));
  }
}

TEST_F(RootVarTest, RecordsAreDecodedByDataType) {
  const std::string too_long = "V/C=V  Value=" + std::string(2047, 'x');
  const std::pair<std::string, const char*> cases[] = {
      {"V/C=V  Type=dword:0  Value=a\x80  Init=", "'V' 0 'a\\8364' ''"},
      {"V/C=C  Value=dword:7  Init=x", "'C' 0 I4 7 'x'"},
      {"V/C=V  Type=1  Value=dword:-2  Init=dword:3", "'V' 1 I4 -2 I4 3"},
      {"V/C=C  Type=dword:1  Value=dword:2  Init=abc", "'C' 1 I4 2 'abc'"},
      {"V/C=V  Type=dword:1  Value=x  Init=", "'V' 1 empty I2 0"},
      {"V/C=v  Type=dword:1  Value=x  Init=y", "empty 1 empty 'y'"},
      {"V/C=V  Type=dword:2  Value=1  Init=Faux", "'V' 2 '1' I2 0"},
      {"V/C=V  Type=dword:2  Value=0  Init=", "'V' 2 '0' empty"},
      {"V/C=V  Type=dword:3  Value=hidden:secret  Init=hidden:opr", "'V' 3 'secret' 'opr'"},
      {"V/C=C  Type=dword:3", "'C' 3 '' ''"},
      {"V/C=V  Type=dword:4  Value=2024-02-29 23:59:59.999  Init=2023-02-29 00:00:00.000",
       "'V' 4 '2024-02-29 23:59:59.999' empty"},
      {"V/C=V  Type=dword:6  Value=real:0.5  Init=real:-1e300", "'V' 6 R8 0.5 R8 -1.0000000000000001e+300"},
      {"V/C=C  Type=dword:6  Value=real:2  Init=5", "'C' 6 R8 2 empty"},
      {"V/C=V  Type=dword:6  Value=dword:0", "'V' 6 R8 0 R8 0"},
      {"V/C=V  Type=Num  Value=x  Init=y", "'V' 0 'x' 'y'"},
      {"V/C=V  Type=dword:65537  Value=x", "'V' 0 'x' ''"},
      {"V/C=V  Type=dword:5  Value=x  Init=y", "'V' 0 'x' 'y'"},
      {too_long, "'V' 0 '' ''"},
      {"", "empty 0 '' ''"},
  };
  char16_t name[] = u"A";
  for (const auto& [record, fields] : cases) {
    Configure(std::string("Scenarios\\S\\Var\\") + static_cast<char>(name[0]) + "  " + record);
    const ObjectPtr<Variable> variable = Fetch(u"", u"S", name);
    ASSERT_TRUE(variable);
    EXPECT_EQ(FieldsOf(*variable), fields) << record;
    ++name[0];
  }
  SetLanguage(StoredText("English"));
  EXPECT_EQ(FieldsOf(*Fetch(u"", u"S", u"G")), "'V' 2 empty empty") << "the language stops no look-up";
}

TEST_F(RootVarTest, EveryLookUpMakesAnObjectOfItsOwn) {
  Configure("Domain\\D\\Var\\X  Value=old");
  const ObjectPtr<Variable> first = Fetch(u"D", u"", u"X");
  Configure("Domain\\D\\Var\\X  Value=new");
  EXPECT_EQ(Shown(Fetch(u"D", u"", u"X")->Value()), "'new'");
  EXPECT_EQ(Shown(first->Value()), "'old'");
}

}  // namespace
}  // namespace moxel::test
