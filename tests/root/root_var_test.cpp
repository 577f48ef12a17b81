#include "root/root_var.h"

#include <gtest/gtest.h>

#include "tests/platform/locale/scoped_locale.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

const Stored kVariable = StoredText("V");
const Stored kConstant = StoredText("C");

class RootVarTest : public ProductTest {
 protected:
  ObjectPtr<Variable> Fetch(const Variant& domain, const Variant& scenario, const Variant& name) const {
    return root_var_->RecupVariable(domain, scenario, name);
  }

  // Kind, data type, value and initial value; nothing for no object.
  static std::vector<std::string> Fields(const ObjectPtr<Variable>& variable) {
    if (!variable) return {};
    return {Shown(variable->VarType()), std::to_string(variable->DataType()), Shown(variable->Value()),
            Shown(variable->Init())};
  }

  ObjectPtr<RootVar> root_var_ = RootVar::Create();
};

Record TextRecord(std::string_view value) {
  return {{"Value", StoredText(value)}, {"Init", StoredText("")}, {"V/C", kVariable}};
}

TEST_F(RootVarTest, OnePlaceIsSearchedForTheExactName) {
  WriteRecord("Domain\\D1\\Var\\X", TextRecord("domain"));
  WriteRecord("Scenarios\\S1\\Var\\X", TextRecord("scenario"));
  WriteRecord("Scenarios\\S1\\Var\\12", TextRecord("number"));
  WriteRecord("Scenarios\\S1\\Var\\Only", TextRecord("only"));
  WriteRecord("Domain\\7\\Var\\X", TextRecord("seven"));
  WriteRecord("Scenarios\\Empty", {});
  WriteRecord("Var\\X", TextRecord("root"));
  const struct {
    Variant domain;
    Variant scenario;
    Variant name;
    const char16_t* found;  // null: no object
  } cases[] = {
      {u"D1", u"S1", u"X", u"domain"},
      {u"", u"S1", u"X", u"scenario"},
      {{}, u"S1", u"X", u"scenario"},
      {u"d1", u"", u"X", u"domain"},  // only the variable's own name is compared
      {std::int32_t{7}, u"S1", u"X", u"seven"},
      {7.0, {}, u"X", u"seven"},
      {u"D1", u"S1", u"Only", nullptr},
      {u"D2", u"S1", u"X", nullptr},
      {u" ", u"S1", u"X", nullptr},
      {u"", u"S2", u"X", nullptr},
      {u"", u"Empty", u"X", nullptr},
      {u"", u"", u"X", nullptr},
      {u"D1", u"", u"x", nullptr},
      {u"D1", u"", u"X ", nullptr},
      {u"D1", u"", u"", nullptr},
      {u"D1", u"", {}, nullptr},
      {u"", u"S1", u"12", u"number"},
      {u"", u"S1", std::int32_t{12}, nullptr},  // a number is never equal to a text
      {u"D1", u"S1", Variant::Null(), nullptr},
      {u"D1", Variant::Null(), u"X", u"domain"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.domain) + " " + Shown(c.scenario) + " " + Shown(c.name));
    ObjectPtr<Variable> variable = Fetch(c.domain, c.scenario, c.name);
    EXPECT_EQ(variable ? Shown(variable->Value()) : "no object",
              c.found ? Shown(Variant(c.found)) : "no object");
  }
  EXPECT_EQ(Fetch(u"D1", u"", u"X")->key, u"X");
}

TEST_F(RootVarTest, RecordsAreDecodedByDataType) {
  const struct {
    const char* what;
    Record record;
    std::vector<std::string> fields;
  } cases[] = {
      {"text",
       {{"V/C", kVariable},
        {"Type", StoredNumber(0)},
        {"Value", StoredText("a\x80")},
        {"Init", StoredText("")}},
       {"'V'", "0", "'a\\8364'", "''"}},
      {"no type",
       {{"V/C", kConstant}, {"Value", StoredNumber(7)}, {"Init", StoredText("x")}},
       {"'C'", "0", "I4 7", "'x'"}},
      {"number",
       {{"V/C", kVariable},
        {"Type", StoredText("1")},
        {"Value", StoredNumber(-2)},
        {"Init", StoredNumber(3)}},
       {"'V'", "1", "I4 -2", "I4 3"}},
      {"number constant",
       {{"V/C", kConstant},
        {"Type", StoredNumber(1)},
        {"Value", StoredNumber(2)},
        {"Init", StoredText("abc")}},
       {"'C'", "1", "I4 2", "'abc'"}},
      {"boolean",
       {{"V/C", kVariable},
        {"Type", StoredNumber(2)},
        {"Value", StoredText("1")},
        {"Init", StoredText("Faux")}},
       {"'V'", "2", "'1'", "I2 0"}},
      {"boolean with an empty initial value",
       {{"V/C", kVariable}, {"Type", StoredNumber(2)}, {"Value", StoredText("0")}, {"Init", StoredText("")}},
       {"'V'", "2", "'0'", "empty"}},
      {"password",
       {{"V/C", kVariable},
        {"Type", StoredNumber(3)},
        {"Value", StoredPassword("secret")},
        {"Init", StoredPassword("opr")}},
       {"'V'", "3", "'secret'", "'opr'"}},
      {"password of an empty record",
       {{"V/C", kConstant}, {"Type", StoredNumber(3)}},
       {"'C'", "3", "''", "''"}},
      {"date",
       {{"V/C", kVariable},
        {"Type", StoredNumber(4)},
        {"Value", StoredText("2024-02-29 23:59:59.999")},
        {"Init", StoredText("2023-02-29 00:00:00.000")}},
       {"'V'", "4", "'2024-02-29 23:59:59.999'", "empty"}},
      {"real",
       {{"V/C", kVariable},
        {"Type", StoredNumber(6)},
        {"Value", StoredReal(0.5)},
        {"Init", StoredReal(-1e300)}},
       {"'V'", "6", "R8 0.5", "R8 -1.0000000000000001e+300"}},
      {"real constant",
       {{"V/C", kConstant}, {"Type", StoredNumber(6)}, {"Value", StoredReal(2)}, {"Init", StoredText("5")}},
       {"'C'", "6", "R8 2", "empty"}},
      {"real of four bytes and no initial value",
       {{"V/C", kVariable}, {"Type", StoredNumber(6)}, {"Value", StoredNumber(0)}},
       {"'V'", "6", "R8 0", "R8 0"}},
      {"no record at all", {}, {"empty", "0", "''", "''"}},
      {"a kind in small letters",
       {{"V/C", StoredText("v")},
        {"Type", StoredNumber(1)},
        {"Value", StoredText("x")},
        {"Init", StoredText("y")}},
       {"empty", "1", "empty", "'y'"}},
      {"a type that is no number",
       {{"V/C", kVariable},
        {"Type", StoredText("Num")},
        {"Value", StoredText("x")},
        {"Init", StoredText("y")}},
       {"'V'", "0", "'x'", "'y'"}},
      {"a type of more than 16 bits",
       {{"V/C", kVariable}, {"Type", StoredNumber(65536 + 1)}, {"Value", StoredText("x")}},
       {"'V'", "0", "'x'", "''"}},
      {"the type between the others",
       {{"V/C", kVariable}, {"Type", StoredNumber(5)}, {"Value", StoredText("x")}, {"Init", StoredText("y")}},
       {"'V'", "0", "'x'", "'y'"}},
      {"a number that is none",
       {{"V/C", kVariable}, {"Type", StoredNumber(1)}, {"Value", StoredText("x")}, {"Init", StoredText("")}},
       {"'V'", "1", "empty", "I2 0"}},
      {"a text too long to be read",
       {{"V/C", kVariable}, {"Value", StoredText(std::string(2047, 'x'))}},
       {"'V'", "0", "''", "''"}},
  };
  for (const auto& c : cases) {
    WriteRecord(std::string("Scenarios\\S\\Var\\") + c.what, c.record);
    std::string what = c.what;
    ObjectPtr<Variable> variable = Fetch(u"", u"S", std::u16string(what.begin(), what.end()));
    EXPECT_EQ(Fields(variable), c.fields) << c.what;
  }
}

TEST_F(RootVarTest, WhatAnUpdateWroteComesBack) {
  Owner domain({IID__Domaine}, u"D");
  const struct {
    std::int16_t type;
    Variant value;
    Variant init;
    std::vector<std::string> fields;
  } cases[] = {
      {0, u"o\u00E9p \u20AC", u"~", {"'V'", "0", "'o\\233p \\8364'", "'~'"}},
      {1, u"2.5", u"", {"'V'", "1", "I4 2", "I4 0"}},
      {2, u"Vrai", u"Faux", {"'V'", "2", "'1'", "'0'"}},
      {3, u"oprb~", u"abc", {"'V'", "3", "'oprb~'", "'abc'"}},
      {6, 0.1, u"1e3", {"'V'", "6", "R8 0.10000000000000001", "R8 1000"}},
  };
  for (const auto& c : cases) {
    ObjectPtr<Variable> variable = Variable::Create();
    variable->key = u"X";
    variable->Update(u"V", c.type, c.value, c.init, &domain);
    EXPECT_EQ(Fields(Fetch(u"D", u"", u"X")), c.fields) << c.type;
  }
}

TEST_F(RootVarTest, NumbersInTextsFollowTheLocale) {
  WriteRecord("Domain\\D\\Var\\X",
              {{"V/C", kVariable}, {"Type", StoredNumber(1)}, {"Value", StoredText("1,5")}});
  WriteRecord("Domain\\1,5\\Var\\X", TextRecord("comma"));
  ScopedLocale french("fr_FR.UTF-8");
  EXPECT_EQ(Shown(Fetch(u"D", u"", u"X")->Value()), "'1,5'");
  EXPECT_EQ(Shown(Fetch(1.5, u"", u"X")->Value()), "'comma'");
}

TEST_F(RootVarTest, NothingOfTheLanguageSettingStopsALookUp) {
  WriteRecord(
      "Domain\\D\\Var\\X",
      {{"V/C", kVariable}, {"Type", StoredNumber(2)}, {"Value", StoredText("1")}, {"Init", StoredText("1")}});
  SetLanguage(StoredText("English"));
  EXPECT_EQ(Fields(Fetch(u"D", u"", u"X")), (std::vector<std::string>{"'V'", "2", "empty", "empty"}));
}

TEST_F(RootVarTest, EveryLookUpMakesAnObjectOfItsOwn) {
  WriteRecord("Domain\\D\\Var\\X", TextRecord("old"));
  ObjectPtr<Variable> first = Fetch(u"D", u"", u"X");
  WriteRecord("Domain\\D\\Var\\X", TextRecord("new"));
  ObjectPtr<Variable> second = Fetch(u"D", u"", u"X");
  EXPECT_NE(first.get(), second.get());
  EXPECT_EQ(Shown(first->Value()), "'old'");
  EXPECT_EQ(Shown(second->Value()), "'new'");
}

TEST_F(RootVarTest, AVariableIsFoundAmongMany) {
  for (int i = 0; i < 300; ++i)
    WriteRecord("Scenarios\\S\\Var\\v" + std::to_string(i), TextRecord(std::to_string(i)));
  EXPECT_EQ(Shown(Fetch(u"", u"S", u"v0")->Value()), "'0'");
  EXPECT_EQ(Shown(Fetch(u"", u"S", u"v299")->Value()), "'299'");
  EXPECT_FALSE(Fetch(u"", u"S", u"v300"));
}

}  // namespace
}  // namespace moxel::test
