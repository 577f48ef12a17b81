#include "variables/variables.h"

#include <gtest/gtest.h>

#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

constexpr std::int16_t kNum = MXVariableDataType_Num;

class VariablesTest : public ProductTest {
 protected:
  ObjectPtr<Variable> New(const std::u16string& name, IDispatch* owner, const Variant& init = {}) {
    return variables_->NewVariable(name, u"V", kNum, u"7", init, owner);
  }

  Owner sales_{{IID__Domaine}, u"Sales"};
  Owner night_{{IID__Scenario}, u"Night"};
  ObjectPtr<Variables> variables_ = Variables::Create();
};

TEST_F(VariablesTest, ANewVariableIsWrittenAddedAndReturned) {
  ObjectPtr<Variable> first = New(u"Limit", &sales_), second = New(u"A\\B", &night_);
  EXPECT_EQ(ConfigurationAt("Domain\\Sales\\Var\\Limit"),
            Tidy("Domain\\Sales\\Var\\Limit  Value=dword:7  Init=dword:0  Type=dword:1  V/C=V"));
  EXPECT_TRUE(Exists("Scenarios\\Night\\Var\\A\\B"));
  EXPECT_EQ(Shown(first->Init()), "I2 0");
  EXPECT_EQ(variables_->Item(u"LIMIT").get(), first.get());
  EXPECT_EQ(variables_->Item(u"a\\b").get(), second.get());
  variables_->Remove(u"limit");
  EXPECT_EQ(variables_->Count(), 1);
  EXPECT_TRUE(Exists("Domain\\Sales\\Var\\Limit")) << "removing is for the collection alone";
}

TEST_F(VariablesTest, RefusalsComeInOrderAndWriteNothing) {
  Configure("Domain\\Sales\\Var\\Taken");
  const std::string before = ConfigurationAt("Domain");
  const Failure name{MXVariableError_VariableRequired, u"Variables:NewVariable"};
  const struct {
    const char16_t* name;
    Variant kind;
    std::int16_t type;
    Variant value, init;
    Failure failure;
  } cases[] = {
      {u"", u"X", 5, u"x", u"x", name},
      {u"Total)", u"X", 5, u"x", u"x", name},
      {u"(", u"X", 5, u"x", u"x", name},
      {u"Taken", u"v", 5, u"x", u"x", {MXVariableError_BadVarType, u"Variable:VarType Property Let"}},
      {u"Taken", u"V", 5, u"x", u"x", {MXVariableError_BadDataType, u"Variable:DataType Property Let"}},
      {u"Taken", u"V", kNum, u"x", u"x", {MXVariableError_IllegalValue, u"Variable:Value Property Let"}},
      {u"Taken", u"V", kNum, u"1", u"x", {MXVariableError_IllegalInitValue, u"Variable:Init Property Let"}},
      {u"TAKEN", u"V", kNum, u"1", u"1", {MXVariableError_VariableAlreadyExist, u"Variable:Validate"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FailureOf([&] { variables_->NewVariable(c.name, c.kind, c.type, c.value, c.init, &sales_); }),
              c.failure);
    EXPECT_EQ(variables_->Count(), 0) << c.failure;
    EXPECT_EQ(ConfigurationAt("Domain"), before) << c.failure;
  }
  EXPECT_NO_THROW(New(u"Taken", &night_)) << "another owner's name is free";
}

TEST_F(VariablesTest, WhatFailsAfterTheFirstWriteLeavesItsKey) {
  ObjectPtr<Variable> first = New(u"Twice", &night_);
  EXPECT_EQ(FailureOf([&] { New(u"TWICE", &sales_); }), Runtime(457));
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\Twice").size(), 4u);
  EXPECT_EQ(FailureOf([&] { New(u"Big", &sales_, 3e9); }), Runtime(6));
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\Big"), (Record{{"Value", StoredNumber(7)}}));
  EXPECT_EQ(variables_->Count(), 1);
  EXPECT_EQ(variables_->Item(u"Twice").get(), first.get());
}

TEST_F(VariablesTest, DeletingDependsOnTheKindOfTheOwner) {
  Owner domain({IID__Domaine}, u"X"), scenario({IID__Scenario}, u"X"), neither({}, u"X"),
      both({IID__Domaine, IID__Scenario}, u"X");
  ObjectPtr<Variable> variable = New(u"V", &sales_);
  auto deleting = [&](IDispatch* owner, const char* there) {
    Configure(there);
    std::string left = variables_->DeleteVariable(*variable, owner) ? "deleted" : "none";
    for (const char* level : {"Domain", "Scenarios"})
      if (Exists(level + std::string("\\X\\Var\\V"))) left += std::string(" ") + level;
    return left;
  };
  const char *all = "Domain\\X\\Var\\v  Scenarios\\X\\Var\\v", *domains = "Domain\\X\\Var\\v";
  EXPECT_EQ(deleting(nullptr, all), "none Domain Scenarios");
  EXPECT_EQ(deleting(&neither, all), "none Domain Scenarios");
  EXPECT_EQ(deleting(&domain, all), "deleted Scenarios");
  EXPECT_EQ(deleting(&scenario, all), "deleted Domain");
  EXPECT_EQ(deleting(&both, all), "deleted");
  EXPECT_EQ(deleting(&both, domains), "none") << "the second decides";
  EXPECT_EQ(deleting(&domain, "Domain\\X\\Var\\v\\below"), "none Domain") << "a key with subkeys stays";
  both.Fail(DISP_E_EXCEPTION, kApplication + 4711);
  EXPECT_EQ(FailureOf([&] { deleting(&both, all); }).number, kApplication + 4711);
  EXPECT_EQ(variables_->Item(u"V").get(), variable.get()) << "the collection stays as it is";
}

}  // namespace
}  // namespace moxel::test
