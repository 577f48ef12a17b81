#include "variables/variable.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/platform/locale/scoped_locale.h"
#include "tests/support/configuration.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

constexpr std::int16_t kAlpha = MXVariableDataType_Alpha, kNum = MXVariableDataType_Num,
                       kBoolean = MXVariableDataType_Boolean, kPassword = MXVariableDataType_Password,
                       kDate = MXVariableDataType_Date, kReal = MXVariableDataType_Real;

const Failure kBadKind{kApplication + 1500, u"Variable:VarType Property Let"};
const Failure kBadType{kApplication + 1501, u"Variable:DataType Property Let"};
const Failure kBadValue{kApplication + 1502, u"Variable:Value Property Let"};
const Failure kNoInit{kApplication + 1505, u"Variable:Init Property Let"};
const Failure kBadInit{kApplication + 1506, u"Variable:Init Property Let"};
const Failure kInitializeFailed{kApplication + 1507, u"Variable:Initialize"};

class VariableTest : public ProductTest {
 protected:
  static void Forget(const std::string& path) {
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath(path).c_str());
  }

  Owner sales_{{IID__Domaine}, u"Sales"};
  Owner night_{{IID__Scenario}, u"Night"};
};

// ---- What the setters take

using Values = std::vector<Variant>;
using Types = std::vector<std::int16_t>;

struct Field {
  void (Variable::*set)(const Variant&);
  const Variant& (Variable::*get)() const;
  Values kinds;  // of the variables that are tried
};

// Values that data types treat alike: refused, or stored, as given unless told otherwise.
void Check(const Field& field, const Types& types, const Values& all_given, const Failure& failure = {},
           const char* stored = nullptr) {
  for (const Variant& kind : field.kinds)
    for (std::int16_t type : types)
      for (const Variant& given : all_given) {
        SCOPED_TRACE("kind " + Shown(kind) + ", type " + std::to_string(type) + ", given " + Shown(given));
        const ObjectPtr<Variable> variable = Variable::Create();
        if (!kind.is_empty()) variable->SetVarType(kind);
        (variable.get()->*field.set)(u"C");
        variable->SetDataType(type);
        EXPECT_EQ(FailureOf([&] { (variable.get()->*field.set)(given); }), failure);
        EXPECT_EQ(Shown((variable.get()->*field.get)()), failure.number ? "'C'"
                                                         : stored       ? stored
                                                                        : Shown(given));
      }
}

const Field kKindField{&Variable::SetVarType, &Variable::VarType, {u"C"}};
const Field kValueField{&Variable::SetValue, &Variable::Value, {u"V", u"C", {}}};
const Field kInitField{&Variable::SetInit, &Variable::Init, {u"V"}};
const Field kOtherInits{&Variable::SetInit, &Variable::Init, {u"C", {}, Variant::Null()}};

TEST_F(VariableTest, KindsAreTwoLettersAndDataTypesHaveAGap) {
  EXPECT_EQ(FieldsOf(*Variable::Create()), "empty 0 empty empty");
  Check(kKindField, {kAlpha}, {u"V", u"C", Variant::Null()});
  Check(kKindField, {kAlpha}, {u"v", u"c", u"", u"V ", u"VC", std::int16_t{0}, true, {}}, kBadKind);
  const ObjectPtr<Variable> variable = Variable::Create();
  for (std::int16_t type : Types{0, 1, 2, 3, 4, 6}) {
    variable->SetDataType(type);
    for (std::int16_t unknown : Types{-32768, -1, 5, 7, 256})
      EXPECT_EQ(FailureOf([&] { variable->SetDataType(unknown); }), kBadType) << unknown;
    EXPECT_EQ(variable->DataType(), type);
  }
}

TEST_F(VariableTest, EveryDataTypeTestsItsValues) {
  Owner object({}, u"");
  const Variant null = Variant::Null(), missing = Variant::Missing(), date = Variant::Date(45366.5);
  const Variant with_zero = std::u16string(u"12\0", 3);
  for (std::int32_t language : {0, 10000}) {
    SetLanguage(StoredNumber(language));
    Check(kValueField, {kAlpha, kPassword, kReal}, {u"", u"12,5 \u20AC", {}, null, 2.5, &object});
    Check(kValueField, {kNum}, {u"12", u" -1.5E+3 ", u"1e400", std::int16_t{-3}, 2.5, true});
    Check(kValueField, {kNum}, {u"abc", u"", u"  ", with_zero, {}, missing, &object}, kBadValue);
    Check(kValueField, {kBoolean}, {u"Vrai", u"True", true}, {}, "I2 1");
    Check(kValueField, {kBoolean}, {u"Faux", u"False", false}, {}, "I2 0");
    Check(kValueField, {kBoolean}, {u"vrai", u"TRUE", u" ", u"0", std::int32_t{-1}, 0.0});
    Check(kValueField, {kBoolean}, {u"", {}}, kBadValue);
    Check(kValueField, {kBoolean, kDate}, {missing, &object}, Runtime(13));
    Check(kValueField, {kDate}, {u"", {}, std::int32_t{20240315}, date}, kBadValue);
    Check(kInitField, {kAlpha, kPassword}, {u"", u"abc", {}});
    Check(kInitField, {kNum, kReal}, {u"", {}}, {}, "I2 0");
    Check(kInitField, {kNum, kReal}, {u"12.5", u"-.5", 1e300, false});
    Check(kInitField, {kNum, kReal}, {u"abc", u" ", date}, kBadInit);
    Check(kInitField, {kBoolean}, {u"Vrai", u"True", true}, {}, "I2 1");
    Check(kInitField, {kBoolean}, {u"Faux", u"False", false}, {}, "I2 0");
    Check(kInitField, {kBoolean}, {u"faux", u"2"});
    Check(kInitField, {kBoolean}, {u"", {}}, kNoInit);
    Check(kInitField, {kDate}, {u"", {}, u"tomorrow"}, kBadInit);
    Check(kOtherInits, {kAlpha, kNum, kBoolean, kPassword, kDate, kReal},
          {u"abc", u"Vrai", u"", {}, true, null, 2.5});
  }
}

TEST_F(VariableTest, DatesHaveOneForm) {
  const Values accepted{u"2024-02-29 23:59:59.999", u"2000-02-29 00:00:00.000", u"1601-01-01 00:00:00.000",

                        // Fields are numbers, not digits.
                        u"2024- 1- 5 08:00:00.000", u"2024-1 -5  8 : 0: 0.  7", u"2024-+1-+5 08:00:00.1e2",
                        u"2e3 -01-01 00:00:00.2.5"};
  const Values refused{u"2023-02-29 00:00:00.000", u"1900-02-29 00:00:00.000", u"1600-12-31 00:00:00.000",
                       u"2024-13-01 00:00:00.000", u"2024-04-31 00:00:00.000", u"2024-01-00 00:00:00.000",
                       u"2024-01-01 24:00:00.000", u"2024-01-01 00:60:00.000", u"2024-01-01 00:00:00.0000",
                       u"2024-  -05 08:00:00.000", u"2024-01-01 00:00:00.-01", u"2024-01-01 00:00:00.1e3",
                       u"2024/01/01 00:00:00.000", u"2024-01-01T00:00:00.000",
                       // Separators are looked at before a field overflows.
                       u"2024-01-01 00:00:00,000", u"2024/01-01 00:00:00.9e9"};
  const Values overflowing{u"2024-01-01 00:00:00.4e4", u"9e9 -01-01 00:00:00.000"};
  for (const Field& field : {kValueField, kInitField}) {
    Check(field, {kDate}, accepted);
    Check(field, {kDate}, refused, field.set == kValueField.set ? kBadValue : kBadInit);
    Check(field, {kDate}, overflowing, Runtime(6));
  }
}

TEST_F(VariableTest, NumbersAreWrittenAsTheUserWritesThem) {
  ScopedLocale french("fr_FR.UTF-8");
  Check(kValueField, {kNum}, {u"12,5", u"1\u202F000", u"1,5E-1"});
  Check(kValueField, {kNum}, {u"12.5"}, kBadValue);
  Check(kInitField, {kNum, kReal}, {u"12,5"});
  Check(kValueField, {kDate}, {u"2024-01-01 00:00:00.1,5"});
  Check(kValueField, {kDate}, {u"2024-01-01 00:00:00.1.5"}, kBadValue);
}

// The words of a Boolean are looked up before anything else is said about it; other types never look.
TEST_F(VariableTest, ALanguageThatIsNoLanguageStopsBooleansOnly) {
  const std::pair<Stored, std::int32_t> languages[] = {
      {StoredText("English"), 13}, {StoredText("9999999999"), 6}, {StoredNumber(5), 326}};
  for (const auto& [language, look_up] : languages) {
    SetLanguage(language);
    for (const Field& field : {kValueField, kInitField})
      Check(field, {kBoolean}, {u"Vrai", u"Oui", u"", {}}, Runtime(look_up));
    Check(kValueField, {kNum}, {u"1"});
    Check(kValueField, {kNum}, {u"abc"}, kBadValue);
  }
}

// ---- What reaches the registry

TEST_F(VariableTest, EveryDataTypeHasItsStoredForm) {
  constexpr const char16_t* date = u"2024-03-15 08:30:00.000";
  constexpr const char* stored_date = "2024-03-15 08:30:00.000";
  const struct {
    const char16_t* kind;
    std::int16_t type;
    Variant value, init;
    const char *stored, *stored_init, *reset;  // null: constants are not reset
  } cases[] = {
      {u"V", kAlpha, u"caf\u00E9 \u20AC", u"", "caf\xE9 \x80", "", ""},
      {u"V", kAlpha, true, std::int32_t{-7}, "True", "-7", "-7"},
      {u"V", kNum, 2.5, u"3.5", "dword:2", "dword:4", "dword:4"},
      {u"V", kNum, u" -12 ", u"", "dword:-12", "dword:0", "dword:0"},
      {u"C", kNum, u"2.5", {}, "dword:2", "0", nullptr},
      {u"C", kNum, true, u"abc", "dword:-1", "abc", nullptr},
      {u"V", kBoolean, u"Vrai", u"Faux", "1", "0", "0"},
      {u"V", kBoolean, u"-1", std::int16_t{-1}, "1", "", "1"},
      {u"V", kBoolean, u"0xyz", u"1xyz", "0", "1", "1"},
      {u"C", kBoolean, u"Vrai", u"Vrai", "1", "", nullptr},
      {u"V", kPassword, u"secret", u"opr", "hidden:secret", "hidden:opr", "hidden:opr"},
      {u"C", kPassword, std::int32_t{123}, {}, "hidden:123", "", nullptr},
      {u"V", kDate, date, date, stored_date, stored_date, stored_date},
      {u"V", kReal, 0.1, u"-1e300", "real:0.1", "real:-1e300", "real:-1e300"},
      {u"V", kReal, {}, u"", "real:0", "real:0", "real:0"},
      {u"C", kReal, u"1e3", u"", "real:1000", "0", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.type) + " " + Shown(c.value) + " " + Shown(c.init));
    const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
    EXPECT_EQ(variable->Update(c.kind, c.type, c.value, c.init, &sales_), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\X"), (Record{{"Value", StoredFrom(c.stored)},
                                                           {"Init", StoredFrom(c.stored_init)},
                                                           {"Type", StoredNumber(c.type)},
                                                           {"V/C", StoredText(c.reset ? "V" : "C")}}));
    const Variant value = c.reset ? variable->Init() : variable->Value();
    EXPECT_EQ(variable->Initialize(&night_), VARIANT_TRUE);
    EXPECT_EQ(Shown(variable->Value()), Shown(value));
    EXPECT_EQ(variable->Initialize1(u"Scenarios\\Day"), VARIANT_TRUE);
    Record reset;
    if (c.reset) reset = {{"Value", StoredFrom(c.reset)}};
    EXPECT_EQ(ReadRecord("Scenarios\\Night\\Var\\X"), reset);
    EXPECT_EQ(ReadRecord("Scenarios\\Day\\Var\\X"), reset);
    for (const char* owner : {"Domain\\Sales", "Scenarios\\Night", "Scenarios\\Day"})
      Forget(std::string(owner) + "\\Var\\X");
  }
}

TEST_F(VariableTest, TheOwnersInterfaceOrASuffixedNameDecidesWhereAVariableLies) {
  Owner both({IID__Domaine, IID__Scenario}, u"Both"), other({IID__User}, u"Bob");
  Owner numbered({IID__Domaine}, std::int32_t{12});
  const struct {
    IDispatch* owner;
    std::string folder;
    Variant name = Variant::Missing();
  } cases[] = {
      {&sales_, "Domain\\Sales\\Var\\"},
      {&night_, "Scenarios\\Night\\Var\\"},
      {&both, "Scenarios\\Both\\Var\\"},
      {&numbered, "Domain\\12\\Var\\"},
      {&other, ""},
      {&night_, "Domain\\Sales\\Var\\", u"Sales_d"},
      {nullptr, "Scenarios\\a_d\\Var\\", u"a_d_s"},
      {&sales_, "Domain\\Var\\", u"_d"},
      {&night_, "", u"Sales_D"},
      {&night_, "", u"d"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.folder + " " + Shown(c.name));
    const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
    EXPECT_EQ(variable->Update1(u"V", kAlpha, u"value", u"init", c.owner, c.name), VARIANT_TRUE);
    const Record written = ReadRecord(c.folder + "X");
    EXPECT_EQ(written.size(), 4u);
    Forget(c.folder + "X");
    if (!c.name.is_missing()) continue;
    EXPECT_EQ(variable->Update(u"V", kAlpha, u"value", u"init", c.owner), VARIANT_TRUE);
    EXPECT_EQ(variable->Duplicate(u"Copy", c.owner), VARIANT_TRUE);
    variable->key = u"New";
    EXPECT_EQ(variable->Validate(c.owner), VARIANT_TRUE);
    for (const char* name : {"X", "Copy", "New"}) EXPECT_EQ(ReadRecord(c.folder + name), written) << name;
    EXPECT_EQ(variable->Initialize(c.owner), VARIANT_TRUE);
    EXPECT_EQ(ReadRecord(c.folder + "New").at(0).second, StoredText("init"));
    for (const char* name : {"X", "Copy", "New"}) Forget(c.folder + name);
  }
  const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
  auto update = [&] { variable->Update1(u"V", kAlpha, u"x", u"y", &night_, Variant::Null()); };
  EXPECT_EQ(FailureOf(update), Runtime(94));
  EXPECT_EQ(FieldsOf(*variable), "empty 0 empty empty");
}

TEST_F(VariableTest, AnOwnerThatCannotSayItsName) {
  const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
  variable->SetVarType(u"C");  // the owner is asked before the kind is looked at
  for (SCODE number : {kApplication + 4711, static_cast<SCODE>(0x800A0009)}) {
    sales_.Fail(DISP_E_EXCEPTION, number);
    const Failure seen{number == kApplication + 4711 ? number : 9, u"Owner:key"};
    EXPECT_EQ(FailureOf([&] { variable->Update(u"V", 99, {}, {}, &sales_); }), seen);
    EXPECT_EQ(FailureOf([&] { variable->Duplicate(u"Y", &sales_); }), seen);
    EXPECT_EQ(FailureOf([&] { variable->Validate(&sales_); }), seen);
    EXPECT_EQ(FailureOf([&] { variable->Initialize(&sales_); }), kInitializeFailed);
  }
  EXPECT_EQ(FieldsOf(*variable), "'C' 0 empty empty");
  EXPECT_FALSE(Exists(""));
}

// A refusal comes before anything is written, what does not convert after the writes that precede it.
TEST_F(VariableTest, AFailureLeavesWhatWasDoneBeforeIt) {
  const std::u16string too_long(32768, u'p');
  const Variant null = Variant::Null();
  const struct {
    Variant kind;
    std::int16_t type;
    Variant value, init;
    std::int32_t number;
    const char* record;
    std::string fields = {};  // in memory, where it matters
  } cases[] = {
      {u"v", 5, u"abc", u"abc", kApplication + 1500, "", "empty 0 empty empty"},
      {u"V", 5, u"abc", u"abc", kApplication + 1501, "", "'V' 0 empty empty"},
      {u"V", kNum, u"abc", u"abc", kApplication + 1502, "", "'V' 1 empty empty"},
      {u"V", kNum, u"12", u"abc", kApplication + 1506, "", "'V' 1 '12' empty"},
      {u"V", kBoolean, u"Vrai", u"", kApplication + 1505, "", "'V' 2 I2 1 empty"},
      {u"V", kNum, u"1", 3e9, 6, "X  Value=dword:1", "'V' 1 '1' R8 3000000000"},
      {u"V", kReal, u"abc", u"1", 13, ""},
      {u"V", kReal, u"1", u"1e400", 6, "X  Value=real:1"},
      {u"V", kAlpha, u"x", null, 94, "X  Value=x"},
      {u"V", kPassword, u"pw", too_long, 6, "X  Value=hidden:pw"},
      {u"C", kBoolean, u"1", null, 94, "X  Value=1", "'C' 2 '1' null"},
      {null, kAlpha, u"x", u"y", 94, "X  Value=x  Init=y  Type=dword:0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.type) + " " + Shown(c.value).substr(0, 40));
    const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
    auto update = [&] { variable->Update(c.kind, c.type, c.value, c.init, nullptr); };
    EXPECT_EQ(FailureOf(update).number, c.number);
    EXPECT_EQ(ConfigurationAt("X"), Tidy(c.record));
    EXPECT_EQ(c.fields.empty() ? "" : FieldsOf(*variable), c.fields);
    Forget("X");
  }
  for (std::int16_t type : std::initializer_list<std::int16_t>{-1, 5, 7})
    Variable::WriteVariable(u"X", u"V", type, u"1", u"2");
  EXPECT_FALSE(Exists("X"));
}

TEST_F(VariableTest, InitializeReportsEveryFailureAsItsOwn) {
  const ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
  variable->Update(u"C", kNum, u"1", u"3000000000", nullptr);
  variable->SetVarType(u"V");  // an initial value set while this was a constant was never tested
  EXPECT_EQ(FailureOf([&] { variable->Initialize(&sales_); }), kInitializeFailed);
  EXPECT_EQ(Shown(variable->Value()), "'3000000000'") << "the value is reset before it is written";
  EXPECT_FALSE(Exists("Domain"));
  EXPECT_EQ(FailureOf([&] { variable->Initialize1(&sales_); }), kInitializeFailed);
  SetLanguage(StoredNumber(10000));
  EXPECT_EQ(DescriptionOf([&] { variable->Initialize1(u"Domain\\Sales"); }), u"Error during initialization");
}

TEST_F(VariableTest, ANameThatExistsIsRefusedAndLeftAlone) {
  Configure("Domain\\Sales\\Var\\Taken  Comment=mine");
  const ObjectPtr<Variable> variable = Keyed<Variable>(u"taken");
  variable->SetVarType(u"V");
  auto validate = [&] { variable->Validate(&sales_); };
  EXPECT_EQ(FailureOf(validate), (Failure{kApplication + 1503, u"Variable:Validate"}));
  EXPECT_EQ(DescriptionOf(validate), u"Cette variable est d\u00E9j\u00E0 pr\u00E9sente");
  for (const char16_t* name : {u"TAKEN", u""})  // the empty name is the key of all the variables
    EXPECT_EQ(FailureOf([&] { variable->Duplicate(name, &sales_); }),
              (Failure{kApplication + 1503, u"Variable:Duplicate"}));
  EXPECT_EQ(ReadRecord("Domain\\Sales\\Var\\Taken"), (Record{{"Comment", StoredText("mine")}}));
}

TEST_F(VariableTest, ARegistryThatRefusesToWriteIsNoFailure) {
  std::ofstream(file()) << "this is no registry";
  ObjectPtr<Variable> variable = Keyed<Variable>(u"X");
  EXPECT_EQ(variable->Update(u"V", kAlpha, u"x", u"y", &sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Update1(u"V", kReal, 1.0, 2.0, nullptr, u"A_d"), VARIANT_TRUE);
  EXPECT_EQ(variable->Initialize(&sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Duplicate(std::int32_t{12}, &sales_), VARIANT_TRUE);
  EXPECT_EQ(variable->Validate(&sales_), VARIANT_TRUE);
  EXPECT_EQ(Shown(variable->Value()), "R8 2");
  std::ifstream kept(file());
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "this is no registry");
}

}  // namespace
}  // namespace moxel::test
