#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/platform/locale/scoped_locale.h"
#include "tests/variables/records.h"
#include "variables/variable.h"

namespace moxel::test {
namespace {

constexpr std::int16_t kAlpha = MXVariableDataType_Alpha;
constexpr std::int16_t kNum = MXVariableDataType_Num;
constexpr std::int16_t kBoolean = MXVariableDataType_Boolean;
constexpr std::int16_t kPassword = MXVariableDataType_Password;
constexpr std::int16_t kDate = MXVariableDataType_Date;
constexpr std::int16_t kReal = MXVariableDataType_Real;

constexpr char16_t kSomeDate[] = u"2024-03-15 08:30:00.000";
constexpr char16_t kOtherDate[] = u"2025-01-01 00:00:00.000";
const std::u16string kTooLong(32768, u'p');

const Failure kInitializeFailed{kApplication + 1507, u"Variable:Initialize"};

class VariablePersistenceTest : public ProductTest {
 protected:
  static ObjectPtr<Variable> Named(const std::u16string& key) {
    ObjectPtr<Variable> variable = Variable::Create();
    variable->key = key;
    return variable;
  }

  // Kind, data type, value and initial value in memory.
  static std::vector<std::string> Fields(const Variable& variable) {
    return {Shown(variable.VarType()), std::to_string(variable.DataType()), Shown(variable.Value()),
            Shown(variable.Init())};
  }

  Owner sales_{{IID__Domaine}, u"Sales"};
  Owner night_{{IID__Scenario}, u"Night"};
};

TEST_F(VariablePersistenceTest, EveryDataTypeHasItsStoredForm) {
  const struct {
    const char16_t* kind;
    std::int16_t type;
    Variant value;
    Variant init;
    Stored stored_value;
    Stored stored_init;
  } cases[] = {
      {u"V", kAlpha, u"caf\u00E9 \u20AC", u"", StoredText("caf\xE9 \x80"), StoredText("")},
      {u"C", kAlpha, {}, 2.5, StoredText(""), StoredText("2.5")},
      {u"V", kAlpha, true, std::int32_t{-7}, StoredText("True"), StoredText("-7")},
      {u"V", kNum, 2.5, u"3.5", StoredNumber(2), StoredNumber(4)},
      {u"V", kNum, u" -12 ", u"", StoredNumber(-12), StoredNumber(0)},
      {u"V", kNum, true, {}, StoredNumber(-1), StoredNumber(0)},
      {u"V", kNum, 2147483647.0, u"-2147483648", StoredNumber(2147483647), StoredNumber(-2147483647 - 1)},
      {u"C", kNum, u"2.5", u"", StoredNumber(2), StoredText("0")},
      {u"C", kNum, u"1", {}, StoredNumber(1), StoredText("0")},
      {u"C", kNum, u"1", u"abc", StoredNumber(1), StoredText("abc")},
      {u"C", kNum, u"1", 3.5, StoredNumber(1), StoredText("3.5")},
      {u"V", kBoolean, u"Vrai", u"Faux", StoredText("1"), StoredText("0")},
      {u"V", kBoolean, u"False", true, StoredText("0"), StoredText("1")},
      {u"V", kBoolean, u"-1", std::int16_t{-1}, StoredText("1"), StoredText("")},
      {u"V", kBoolean, u"0xyz", u"1xyz", StoredText("0"), StoredText("1")},
      {u"V", kBoolean, u"Oui", u" 1", StoredText("1"), StoredText("")},
      {u"C", kBoolean, u"Vrai", u"Vrai", StoredText("1"), StoredText("")},
      {u"C", kBoolean, u"Faux", u"", StoredText("0"), StoredText("")},
      {u"V", kPassword, u"secret", u"opr", StoredPassword("secret"), StoredPassword("opr")},
      {u"C", kPassword, std::int32_t{123}, {}, StoredPassword("123"), StoredText("")},
      {u"V", kDate, kSomeDate, kOtherDate, StoredText("2024-03-15 08:30:00.000"),
       StoredText("2025-01-01 00:00:00.000")},
      {u"C", kDate, kSomeDate, u"never", StoredText("2024-03-15 08:30:00.000"), StoredText("never")},
      {u"V", kReal, 0.1, u"-1e300", StoredReal(0.1), StoredReal(-1e300)},
      {u"V", kReal, {}, u"", StoredReal(0), StoredReal(0)},
      {u"C", kReal, u"2.5", u"", StoredReal(2.5), StoredText("0")},
      {u"C", kReal, u"1e3", u"abc", StoredReal(1000), StoredText("abc")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.type) + " " + Shown(c.value) + " " + Shown(c.init));
    WriteRecord("Domain\\Sales\\Var\\X", {});
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXEL\\Domain\\Sales\\Var\\X");
    ObjectPtr<Variable> variable = Named(u"X");
    EXPECT_EQ(variable->Update(c.kind, c.type, c.value, c.init, &sales_), VARIANT_TRUE);
    Stored kind = StoredText(*c.kind == u'V' ? "V" : "C");
    EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X"), (Record{{"Value", c.stored_value},
                                                           {"Init", c.stored_init},
                                                           {"Type", StoredNumber(c.type)},
                                                           {"V/C", kind}}));
  }
}

TEST_F(VariablePersistenceTest, MemoryKeepsWhatTheSettersMadeOfTheValues) {
  const struct {
    const char16_t* kind;
    std::int16_t type;
    Variant value;
    Variant init;
    std::vector<std::string> fields;
  } cases[] = {
      {u"V", kNum, u" 2.5 ", u"", {"'V'", "1", "' 2.5 '", "I2 0"}},
      {u"C", kNum, u"2", u"", {"'C'", "1", "'2'", "''"}},
      {u"V", kBoolean, u"Vrai", u"Faux", {"'V'", "2", "I2 1", "I2 0"}},
      {u"C", kBoolean, u"Vrai", u"Vrai", {"'C'", "2", "I2 1", "'Vrai'"}},
      {u"V", kPassword, u"pw", u"", {"'V'", "3", "'pw'", "''"}},
  };
  for (const auto& c : cases) {
    ObjectPtr<Variable> variable = Named(u"X");
    variable->Update(c.kind, c.type, c.value, c.init, &sales_);
    EXPECT_EQ(Fields(*variable), c.fields);
  }
}

TEST_F(VariablePersistenceTest, NumbersInTextFollowTheLocale) {
  ScopedLocale french("fr_FR.UTF-8");
  ObjectPtr<Variable> variable = Named(u"X");
  variable->Update(u"V", kReal, u"1\u202F000,5", u"2,5", &sales_);
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X")[0].second, StoredReal(1000.5));
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X")[1].second, StoredReal(2.5));
  variable->Update(u"C", kReal, std::int16_t{1}, 2.5, &sales_);
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X")[1].second, StoredText("2,5"));
}

TEST_F(VariablePersistenceTest, TheOwnersInterfaceDecidesWhereAVariableLies) {
  Owner both({IID__Domaine, IID__Scenario}, u"Both");
  Owner other({IID__User}, u"Bob");
  Owner numbered({IID__Domaine}, std::int32_t{12});
  const struct {
    IDispatch* owner;
    std::string folder;
  } cases[] = {
      {&sales_, "Domain\\Sales\\Var\\"},
      {&night_, "Scenarios\\Night\\Var\\"},
      {&both, "Scenarios\\Both\\Var\\"},
      {&numbered, "Domain\\12\\Var\\"},
      {&other, ""},
      {nullptr, ""},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& [owner, folder] = cases[i];
    SCOPED_TRACE(folder);
    auto key = [&](const char* name) { return folder + name + std::to_string(i); };
    auto name = [&](std::u16string_view base) {
      return std::u16string(base) + static_cast<char16_t>(u'0' + static_cast<char16_t>(i));
    };
    ObjectPtr<Variable> variable = Named(name(u"updated"));
    EXPECT_EQ(variable->Update(u"V", kAlpha, u"value", u"init", owner), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(key("updated")).size(), 4u);
    EXPECT_EQ(variable->Duplicate(name(u"copy"), owner), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(key("copy")), ReadRecord(key("updated")));
    EXPECT_EQ(variable->Initialize(owner), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(key("updated"))[0].second, StoredText("init"));
    variable->key = name(u"new");
    EXPECT_EQ(variable->Validate(owner), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(key("new")), ReadRecord(key("updated")));
    variable->key = name(u"other");
    EXPECT_EQ(variable->Update1(u"C", kAlpha, u"", u"", owner, Variant::Missing()), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(key("other")).size(), 4u);
  }
}

TEST_F(VariablePersistenceTest, Update1TakesTheOwnerFromASuffixedName) {
  const struct {
    Variant owner;
    std::string key;
  } cases[] = {
      {u"Sales_d", "Domain\\Sales\\Var\\"},
      {u"Sales_s", "Scenarios\\Sales\\Var\\"},
      {u"a_s_d", "Domain\\a_s\\Var\\"},
      {u"Sales_D", ""},
      {u"Sales", ""},
      {u"d", ""},
      {u"", ""},
      {Variant(), ""},
      {u"_d", "Domain\\Var\\"},
      {std::int32_t{12}, ""},
  };
  std::u16string name = u"A";
  for (const auto& c : cases) {
    ++name[0];
    Named(name)->Update1(u"V", kAlpha, u"x", u"y", &night_, c.owner);
    EXPECT_EQ(ReadRecord(c.key + static_cast<char>(name[0])).size(), 4u) << Shown(c.owner);
    EXPECT_FALSE(Exists(std::string("Scenarios\\Night\\Var\\") + static_cast<char>(name[0])));
  }
  ObjectPtr<Variable> variable = Named(u"Z");
  auto update = [&] { variable->Update1(u"V", kAlpha, u"x", u"y", &sales_, Variant::Null()); };
  EXPECT_EQ(FailureOf(update), Runtime(94));
  EXPECT_EQ(Shown(variable->VarType()), "empty");
}

TEST_F(VariablePersistenceTest, AnOwnerThatCannotSayItsName) {
  const struct {
    HRESULT result;
    SCODE number;
    Failure seen;
  } cases[] = {
      {DISP_E_EXCEPTION, kApplication + 4711, {kApplication + 4711, u"Owner:key"}},
      {DISP_E_EXCEPTION, static_cast<SCODE>(0x800A0009), {9, u"Owner:key"}},
      {DISP_E_UNKNOWNNAME, 0, {DISP_E_UNKNOWNNAME, u"MOXEL"}},
      {E_FAIL, 0, {E_FAIL, u"MOXEL"}},
  };
  for (const auto& c : cases) {
    sales_.Fail(c.result, c.number);
    ObjectPtr<Variable> variable = Named(u"X");
    variable->SetVarType(u"V");
    variable->SetInit(u"init");
    auto before = Fields(*variable);
    EXPECT_EQ(FailureOf([&] { variable->Update(u"C", 99, {}, {}, &sales_); }), c.seen);
    EXPECT_EQ(FailureOf([&] { variable->Duplicate(u"Y", &sales_); }), c.seen);
    EXPECT_EQ(FailureOf([&] { variable->Validate(&sales_); }), c.seen);
    EXPECT_EQ(FailureOf([&] { variable->Initialize(&sales_); }), kInitializeFailed);
    EXPECT_EQ(DescriptionOf([&] { variable->Initialize(&sales_); }),
              u"Erreur lors de l'initialisation d'une variable");
    EXPECT_EQ(Fields(*variable), before);
    EXPECT_FALSE(Exists(""));
  }
  // The owner is asked before the kind is looked at.
  ObjectPtr<Variable> constant = Named(u"X");
  constant->SetVarType(u"C");
  EXPECT_EQ(FailureOf([&] { constant->Initialize(&sales_); }), kInitializeFailed);
}

TEST_F(VariablePersistenceTest, TheFirstRefusalEndsAnUpdateBeforeAnythingIsWritten) {
  const struct {
    Variant kind;
    std::int16_t type;
    Variant value;
    Variant init;
    std::int32_t id;
    std::vector<std::string> fields;
  } cases[] = {
      {u"v", 5, u"abc", u"abc", 1500, {"empty", "0", "empty", "empty"}},
      {u"V", 5, u"abc", u"abc", 1501, {"'V'", "0", "empty", "empty"}},
      {u"V", kNum, u"abc", u"abc", 1502, {"'V'", "1", "empty", "empty"}},
      {u"V", kNum, u"12", u"abc", 1506, {"'V'", "1", "'12'", "empty"}},
      {u"V", kBoolean, u"Vrai", u"", 1505, {"'V'", "2", "I2 1", "empty"}},
  };
  for (const auto& c : cases) {
    ObjectPtr<Variable> variable = Named(u"X");
    EXPECT_EQ(FailureOf([&] { variable->Update(c.kind, c.type, c.value, c.init, &sales_); }).number,
              kApplication + c.id);
    EXPECT_EQ(Fields(*variable), c.fields) << c.id;
    EXPECT_FALSE(Exists("Domain")) << c.id;
  }
}

TEST_F(VariablePersistenceTest, AWriteThatFailsLeavesWhatWasWrittenBeforeIt) {
  const struct {
    Variant kind;
    std::int16_t type;
    Variant value;
    Variant init;
    std::int32_t number;
    Record record;  // nothing: not even a key
  } cases[] = {
      {u"V", kNum, u"2147483648", u"1", 6, {}},
      {u"V", kNum, 3e9, u"1", 6, {}},
      {u"V", kNum, u"1", u"2147483648", 6, {{"Value", StoredNumber(1)}}},
      {u"C", kNum, u"1", Variant::Null(), 94, {{"Value", StoredNumber(1)}}},
      {u"V", kReal, u"abc", u"1", 13, {}},
      {u"V", kReal, u"", u"1", 13, {}},
      {u"V", kReal, u"1e400", u"1", 6, {}},
      {u"V", kReal, Variant::Null(), u"1", 94, {}},
      {u"V", kReal, u"1", u"1e400", 6, {{"Value", StoredReal(1)}}},
      {u"V", kAlpha, Variant::Null(), u"", 94, {}},
      {u"V", kAlpha, u"x", Variant::Null(), 94, {{"Value", StoredText("x")}}},
      {u"V", kAlpha, Variant::Missing(), u"", 13, {}},
      {u"V", kPassword, kTooLong, u"", 6, {}},
      {u"V", kPassword, Variant::Null(), u"", 94, {}},
      {u"V", kPassword, u"pw", kTooLong, 6, {{"Value", StoredPassword("pw")}}},
      {u"C", kBoolean, u"1", Variant::Null(), 94, {{"Value", StoredText("1")}}},
      {Variant::Null(),
       kAlpha,
       u"x",
       u"y",
       94,
       {{"Value", StoredText("x")}, {"Init", StoredText("y")}, {"Type", StoredNumber(kAlpha)}}},
  };
  for (const auto& c : cases) {
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXEL\\X");
    ObjectPtr<Variable> variable = Named(u"X");
    std::string shown = std::to_string(c.type) + " " + Shown(c.value).substr(0, 40);
    EXPECT_EQ(FailureOf([&] { variable->Update(c.kind, c.type, c.value, c.init, nullptr); }),
              Runtime(c.number))
        << shown;
    EXPECT_EQ(ReadRecord("X"), c.record) << shown;
    EXPECT_EQ(Exists("X"), !c.record.empty()) << shown;
    EXPECT_EQ(Fields(*variable), (std::vector<std::string>{Shown(c.kind), std::to_string(c.type),
                                                           Shown(c.value), Shown(c.init)}));
  }
}

TEST_F(VariablePersistenceTest, AnUnknownDataTypeWritesNothingAtAll) {
  for (auto type : std::initializer_list<std::int16_t>{-1, 5, 7, 32767})
    Variable::WriteVariable(u"X", u"V", type, u"1", u"2");
  EXPECT_FALSE(Exists("X"));
}

TEST_F(VariablePersistenceTest, InitializeResetsTheValueOfVariablesAndWritesNothingElse) {
  const struct {
    const char16_t* kind;
    std::int16_t type;
    Variant value;
    Variant init;
    std::string value_after;
    Stored stored;
  } cases[] = {
      {u"V", kAlpha, u"x", u"abc", "'abc'", StoredText("abc")},
      {u"V", kNum, u"5", u"2.5", "'2.5'", StoredNumber(2)},
      {u"V", kNum, u"5", u"", "I2 0", StoredNumber(0)},
      {u"V", kBoolean, u"Vrai", u"Faux", "I2 0", StoredText("0")},
      {u"V", kBoolean, u"Faux", u"-1", "'-1'", StoredText("1")},
      {u"V", kPassword, u"x", u"pw", "'pw'", StoredPassword("pw")},
      {u"V", kDate, kSomeDate, kOtherDate, "'2025-01-01 00:00:00.000'",
       StoredText("2025-01-01 00:00:00.000")},
      {u"V", kReal, 1.0, u"2.5", "'2.5'", StoredReal(2.5)},
      {u"C", kAlpha, u"x", u"abc", "'x'", {}},
      {u"C", kNum, u"5", u"abc", "'5'", {}},
  };
  for (bool by_path : {false, true}) {
    for (const auto& c : cases) {
      ObjectPtr<Variable> variable = Named(u"X");
      variable->Update(c.kind, c.type, c.value, c.init, nullptr);
      WriteRecord("Scenarios\\Night\\Var", {});
      EXPECT_EQ(by_path ? variable->Initialize1(u"Scenarios\\Night") : variable->Initialize(&night_),
                VARIANT_TRUE);
      EXPECT_EQ(Shown(variable->Value()), c.value_after);
      Record expected;
      if (*c.kind == u'V') expected = {{"Value", c.stored}};
      EXPECT_EQ(ReadRecord("Scenarios\\Night\\Var\\X"), expected) << c.type;
      RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\MOXEL\\Scenarios\\Night\\Var\\X");
    }
  }
}

TEST_F(VariablePersistenceTest, InitializeReportsEveryFailureAsItsOwn) {
  ObjectPtr<Variable> variable = Named(u"X");
  variable->SetVarType(u"V");
  variable->SetDataType(kNum);
  variable->SetValue(u"1");
  variable->SetInit(u"3000000000");
  EXPECT_EQ(FailureOf([&] { variable->Initialize(&sales_); }), kInitializeFailed);
  EXPECT_EQ(Shown(variable->Value()), "'3000000000'") << "the value is reset before it is written";
  EXPECT_FALSE(Exists("Domain"));
  EXPECT_EQ(FailureOf([&] { variable->Initialize1(&sales_); }), kInitializeFailed);
  SetLanguage(StoredNumber(10000));
  EXPECT_EQ(DescriptionOf([&] { variable->Initialize1(u"Domain\\Sales"); }), u"Error during initialization");
  // An initial value set while this was a constant was never tested.
  ObjectPtr<Variable> turned = Named(u"Y");
  turned->Update(u"C", kNum, u"1", u"", &sales_);
  turned->SetVarType(u"V");
  EXPECT_EQ(FailureOf([&] { turned->Initialize(&sales_); }), kInitializeFailed);
}

TEST_F(VariablePersistenceTest, ANameThatExistsIsRefusedAndLeftAlone) {
  const Record record = {{"Comment", StoredText("mine")}};
  WriteRecord("Domain\\Sales\\Var\\Taken", record);
  ObjectPtr<Variable> variable = Named(u"taken");
  variable->SetVarType(u"V");
  auto duplicate = [&] { variable->Duplicate(u"TAKEN", &sales_); };
  auto validate = [&] { variable->Validate(&sales_); };
  EXPECT_EQ(FailureOf(duplicate), (Failure{kApplication + 1503, u"Variable:Duplicate"}));
  EXPECT_EQ(FailureOf(validate), (Failure{kApplication + 1503, u"Variable:Validate"}));
  EXPECT_EQ(DescriptionOf(validate), u"Cette variable est d\u00E9j\u00E0 pr\u00E9sente");
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\Taken"), record);
  // The empty name is the key of all the variables.
  EXPECT_EQ(FailureOf([&] { variable->Duplicate(u"", &sales_); }).number, kApplication + 1503);
  EXPECT_EQ(variable->Duplicate(std::int32_t{12}, &sales_), VARIANT_TRUE);
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\12").size(), 4u);
  EXPECT_EQ(variable->key, u"taken");
}

TEST_F(VariablePersistenceTest, ARegistryThatRefusesToWriteIsNoFailure) {
  const std::string content = "this is no registry";
  std::ofstream(file()) << content;
  ObjectPtr<Variable> variable = Named(u"X");
  EXPECT_EQ(variable->Update(u"V", kAlpha, u"x", u"y", &sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Update1(u"V", kReal, 1.0, 2.0, nullptr, u"A_d"), VARIANT_TRUE);
  EXPECT_EQ(variable->Initialize(&sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Duplicate(u"Y", &sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Validate(&sales_), VARIANT_TRUE);
  EXPECT_EQ(Shown(variable->Value()), "R8 2");
  std::ifstream kept(file());
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), content);
}

TEST_F(VariablePersistenceTest, PasswordsNeverReachTheFilesInClear) {
  const std::string value = "Open-Sesame-4711", init = "Other-Sesame-0815";
  ObjectPtr<Variable> variable = Named(u"Door");
  for (const char16_t* kind : {u"V", u"C"})
    variable->Update(kind, kPassword, u"Open-Sesame-4711", u"Other-Sesame-0815", &sales_);
  variable->Duplicate(u"Copy", &night_);
  auto files = [&] {
    std::string all;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      std::ifstream stream(entry.path(), std::ios::binary);
      all.append(std::istreambuf_iterator<char>(stream), {});
    }
    return all;
  };
  const std::string bytes = files();
  EXPECT_NE(bytes.find(StoredPassword(value).bytes), bytes.npos) << "not looking where it is stored";
  EXPECT_NE(bytes.find(StoredPassword(init).bytes), bytes.npos);
  variable->SetVarType(u"V");
  variable->Initialize(&sales_);
  for (const std::string& text : {bytes, files()}) {
    EXPECT_EQ(text.find(value), text.npos);
    EXPECT_EQ(text.find(init), text.npos);
  }
}

TEST_F(VariablePersistenceTest, ATextOfAMegabyteIsStoredWhole) {
  const std::string text(1 << 20, 'x');
  ObjectPtr<Variable> variable = Named(u"X");
  variable->Update(u"V", kAlpha, std::u16string(text.size(), u'x'), u"", &sales_);
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X")[0].second, StoredText(text));
}

}  // namespace
}  // namespace moxel::test
