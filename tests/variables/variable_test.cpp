#include "variables/variable.h"

#include <gtest/gtest.h>

#include <span>

#include "tests/platform/locale/scoped_locale.h"
#include "tests/variables/records.h"

namespace moxel::test {
namespace {

constexpr std::int16_t kAlpha = MXVariableDataType_Alpha;
constexpr std::int16_t kNum = MXVariableDataType_Num;
constexpr std::int16_t kBoolean = MXVariableDataType_Boolean;
constexpr std::int16_t kPassword = MXVariableDataType_Password;
constexpr std::int16_t kDate = MXVariableDataType_Date;
constexpr std::int16_t kReal = MXVariableDataType_Real;

Variant I2(std::int16_t number) { return number; }
Variant I4(std::int32_t number) { return number; }

const Failure kBadKind{kApplication + 1500, u"Variable:VarType Property Let"};
const Failure kBadType{kApplication + 1501, u"Variable:DataType Property Let"};
const Failure kBadValue{kApplication + 1502, u"Variable:Value Property Let"};
const Failure kNoInit{kApplication + 1505, u"Variable:Init Property Let"};
const Failure kBadInit{kApplication + 1506, u"Variable:Init Property Let"};

class VariableTest : public ProductTest {
 protected:
  static ObjectPtr<Variable> Make(const Variant& kind, std::int16_t data_type) {
    ObjectPtr<Variable> variable = Variable::Create();
    if (!kind.is_empty()) variable->SetVarType(kind);
    variable->SetDataType(data_type);
    return variable;
  }
};

TEST_F(VariableTest, ANewOneHoldsNothing) {
  ObjectPtr<Variable> variable = Variable::Create();
  EXPECT_EQ(variable->key, u"");
  EXPECT_EQ(variable->DataType(), 0);
  for (const Variant& field : {variable->Init(), variable->Value(), variable->VarType()})
    EXPECT_EQ(Shown(field), "empty");
}

TEST_F(VariableTest, DataTypesHaveAGapAtFive) {
  for (int number : {-32768, -1, 0, 1, 2, 3, 4, 5, 6, 7, 256, 32767}) {
    auto type = static_cast<std::int16_t>(number);
    ObjectPtr<Variable> variable = Make(u"V", kNum);
    bool known = number >= 0 && number <= 6 && number != 5;
    EXPECT_EQ(FailureOf([&] { variable->SetDataType(type); }), known ? Failure{} : kBadType) << number;
    EXPECT_EQ(variable->DataType(), known ? type : kNum) << number;
  }
}

TEST_F(VariableTest, TheKindIsOneOfTwoLetters) {
  const struct {
    Variant kind;
    bool accepted;
  } cases[] = {
      {u"V", true},
      {u"C", true},
      {Variant::Null(), true},
      {u"v", false},
      {u"c", false},
      {u"", false},
      {u"V ", false},
      {u"VC", false},
      {I2(0), false},
      {I4(1), false},
      {1.0, false},
      {true, false},
      {Variant(), false},
      {Variant::Missing(), false},
      {u"Variable", false},
  };
  for (const auto& c : cases) {
    ObjectPtr<Variable> variable = Make(u"C", kAlpha);
    EXPECT_EQ(FailureOf([&] { variable->SetVarType(c.kind); }), c.accepted ? Failure{} : kBadKind)
        << Shown(c.kind);
    EXPECT_EQ(Shown(variable->VarType()), c.accepted ? Shown(c.kind) : "'C'");
  }
}

// What one data type makes of a value: the value stored, or the failure.
struct Case {
  std::int16_t type;
  Variant given;
  Variant stored;
  Failure failure = {};
};

void PrintTo(const Case& c, std::ostream* out) { *out << "type " << c.type << " given " << Shown(c.given); }

TEST_F(VariableTest, ValuesAreTestedByDataTypeWhateverTheKind) {
  const Case cases[] = {
      {kAlpha, u"", u""},
      {kAlpha, u"12,5 \u20AC", u"12,5 \u20AC"},
      {kAlpha, {}, {}},
      {kAlpha, Variant::Null(), Variant::Null()},
      {kAlpha, 2.5, 2.5},
      {kPassword, u"secret", u"secret"},
      {kPassword, {}, {}},
      {kReal, u"abc", u"abc"},
      {kReal, u"", u""},
      {kReal, Variant::Null(), Variant::Null()},
      {kNum, u"12", u"12"},
      {kNum, u" -1.5E+3 ", u" -1.5E+3 "},
      {kNum, u"7-", u"7-"},
      {kNum, u"99999999999", u"99999999999"},
      {kNum, u"1e400", u"1e400"},
      {kNum, I2(-3), I2(-3)},
      {kNum, I4(70000), I4(70000)},
      {kNum, 2.5, 2.5},
      {kNum, true, true},
      {kNum, u"abc", {}, kBadValue},
      {kNum, u"", {}, kBadValue},
      {kNum, u"  ", {}, kBadValue},
      {kNum, u"1 2", {}, kBadValue},
      {kNum, std::u16string(u"12\0", 3), {}, kBadValue},
      {kNum, {}, {}, kBadValue},
      {kNum, Variant::Missing(), {}, kBadValue},
      {kBoolean, u"Vrai", I2(1)},
      {kBoolean, u"True", I2(1)},
      {kBoolean, true, I2(1)},
      {kBoolean, u"Faux", I2(0)},
      {kBoolean, u"False", I2(0)},
      {kBoolean, false, I2(0)},
      {kBoolean, u"vrai", u"vrai"},
      {kBoolean, u"TRUE", u"TRUE"},
      {kBoolean, u"Oui", u"Oui"},
      {kBoolean, u" ", u" "},
      {kBoolean, u"0", u"0"},
      {kBoolean, I4(-1), I4(-1)},
      {kBoolean, 0.0, 0.0},
      {kBoolean, u"", {}, kBadValue},
      {kBoolean, {}, {}, kBadValue},
      {kBoolean, Variant::Missing(), {}, Runtime(13)},
      {kDate, u"", {}, kBadValue},
      {kDate, {}, {}, kBadValue},
      {kDate, I4(20240315), {}, kBadValue},
      {kDate, Variant::Date(45366.5), {}, kBadValue},
  };
  for (const Variant& kind : {Variant(u"V"), Variant(u"C"), Variant()}) {
    for (const Case& c : cases) {
      ObjectPtr<Variable> variable = Make(kind, kAlpha);
      variable->SetValue(u"before");
      variable->SetDataType(c.type);
      EXPECT_EQ(FailureOf([&] { variable->SetValue(c.given); }), c.failure) << ::testing::PrintToString(c);
      EXPECT_EQ(Shown(variable->Value()), c.failure == Failure{} ? Shown(c.stored) : "'before'")
          << ::testing::PrintToString(c);
    }
  }
}

TEST_F(VariableTest, InitialValuesOfVariablesAreTestedByTheirOwnRules) {
  const Case cases[] = {
      {kAlpha, u"", u""},
      {kAlpha, {}, {}},
      {kPassword, u"", u""},
      {kNum, u"", I2(0)},
      {kNum, {}, I2(0)},
      {kNum, u"12.5", u"12.5"},
      {kNum, false, false},
      {kNum, u"abc", {}, kBadInit},
      {kNum, u" ", {}, kBadInit},
      {kReal, u"", I2(0)},
      {kReal, {}, I2(0)},
      {kReal, u"-.5", u"-.5"},
      {kReal, 1e300, 1e300},
      {kReal, u"abc", {}, kBadInit},
      {kReal, Variant::Date(1.0), {}, kBadInit},
      {kBoolean, u"Vrai", I2(1)},
      {kBoolean, u"Faux", I2(0)},
      {kBoolean, true, I2(1)},
      {kBoolean, u"faux", u"faux"},
      {kBoolean, u"", {}, kNoInit},
      {kBoolean, {}, {}, kNoInit},
      {kDate, u"", {}, kBadInit},
      {kDate, {}, {}, kBadInit},
      {kDate, u"tomorrow", {}, kBadInit},
  };
  for (const Case& c : cases) {
    ObjectPtr<Variable> variable = Make(u"V", kAlpha);
    variable->SetInit(u"before");
    variable->SetDataType(c.type);
    EXPECT_EQ(FailureOf([&] { variable->SetInit(c.given); }), c.failure) << ::testing::PrintToString(c);
    EXPECT_EQ(Shown(variable->Init()), c.failure == Failure{} ? Shown(c.stored) : "'before'")
        << ::testing::PrintToString(c);
  }
}

TEST_F(VariableTest, InitialValuesOfAnythingElseAreStoredAsTheyAre) {
  for (const Variant& kind : {Variant(u"C"), Variant(), Variant::Null()})
    for (std::int16_t type : {kAlpha, kNum, kBoolean, kPassword, kDate, kReal})
      for (const Variant& init : {Variant(u"abc"), Variant(u"Vrai"), Variant(u""), Variant(), Variant(true),
                                  Variant::Null(), Variant(2.5)}) {
        ObjectPtr<Variable> variable = Make(kind, type);
        EXPECT_EQ(FailureOf([&] { variable->SetInit(init); }), Failure{}) << type << " " << Shown(init);
        EXPECT_EQ(Shown(variable->Init()), Shown(init)) << type;
      }
}

struct DateCase {
  const char16_t* text;
  bool accepted;
  bool overflows = false;
};

void ExpectDates(std::span<const DateCase> cases) {
  for (const DateCase& c : cases) {
    ObjectPtr<Variable> variable = Variable::Create();
    variable->SetVarType(u"V");
    variable->SetDataType(kDate);
    auto expected = [&](const Failure& refusal) {
      return c.overflows ? Runtime(6) : c.accepted ? Failure{} : refusal;
    };
    EXPECT_EQ(FailureOf([&] { variable->SetValue(c.text); }), expected(kBadValue)) << Shown(Variant(c.text));
    EXPECT_EQ(FailureOf([&] { variable->SetInit(c.text); }), expected(kBadInit)) << Shown(Variant(c.text));
    std::string kept = c.accepted ? Shown(Variant(c.text)) : "empty";
    EXPECT_EQ(Shown(variable->Value()), kept);
    EXPECT_EQ(Shown(variable->Init()), kept);
  }
}

TEST_F(VariableTest, DatesHaveOneForm) {
  const DateCase cases[] = {
      {u"2024-03-15 08:30:00.000", true},
      {u"2024-02-29 23:59:59.999", true},
      {u"2000-02-29 00:00:00.000", true},
      {u"2023-02-29 00:00:00.000", false},
      {u"1900-02-29 00:00:00.000", false},
      {u"1601-01-01 00:00:00.000", true},
      {u"1600-12-31 00:00:00.000", false},
      {u"9999-12-31 23:59:59.999", true},
      {u"2024-13-01 00:00:00.000", false},
      {u"2024-00-01 00:00:00.000", false},
      {u"2024-04-31 00:00:00.000", false},
      {u"2024-01-00 00:00:00.000", false},
      {u"2024-01-01 24:00:00.000", false},
      {u"2024-01-01 00:60:00.000", false},
      {u"2024-01-01 00:00:60.000", false},
      {u"2024-01-01 00:00:00.00", false},
      {u"2024-01-01 00:00:00.0000", false},
      {u"2024-01-01 00:00:00.000 ", false},
      // Fields are numbers, not digits.
      {u"2024- 1- 5 08:00:00.000", true},
      {u"2024-1 -5  8 : 0: 0.  7", true},
      {u"2024-  -05 08:00:00.000", false},
      {u"2024-+1-+5 08:00:00.1e2", true},
      {u"2e3 -01-01 00:00:00.2.5", true},
      {u"2024-01-01 00:00:00.-01", false},
      {u"2024-01-01 00:00:00.1e3", false},
      {u"2024-01-01 00:00:00.9e9", false, true},
      {u"2024-01-01 00:00:00.4e4", false, true},
      {u"9e9 -01-01 00:00:00.000", false, true},
      {u"2024-XX-01 00:00:00.000", false},
      // Separators are these and no others, and are looked at before a field overflows.
      {u"2024/01/01 00:00:00.000", false},
      {u"2024-01-01T00:00:00.000", false},
      {u"2024-01-01 00.00.00.000", false},
      {u"2024-01-01 00:00:00,000", false},
      {u"2024/01-01 00:00:00.9e9", false},
  };
  ExpectDates(cases);
}

TEST_F(VariableTest, NumbersAreWrittenAsTheUserWritesThem) {
  const struct {
    const char* locale;
    const char16_t* text;
    bool accepted;
  } cases[] = {
      {"fr_FR.UTF-8", u"12,5", true},
      {"fr_FR.UTF-8", u"12.5", false},
      {"fr_FR.UTF-8", u"1 000,5", true},
      {"fr_FR.UTF-8", u"1\u202F000", true},
      {"fr_FR.UTF-8", u"1,5E-1", true},
      {"en_US.UTF-8", u"12,,5", false},
      {"en_US.UTF-8", u"1,000.5", true},
      {"en_US.UTF-8", u"12.5", true},
      {"de_DE.UTF-8", u"1.000,5", true},
      {"C", u"12,5", false},
      {"C", u"1 000", false},
  };
  for (const auto& c : cases) {
    ScopedLocale locale(c.locale);
    ObjectPtr<Variable> variable = Make(u"V", kNum);
    EXPECT_EQ(FailureOf([&] { variable->SetValue(c.text); }), c.accepted ? Failure{} : kBadValue)
        << c.locale << " " << Shown(Variant(c.text));
    EXPECT_EQ(FailureOf([&] { variable->SetInit(c.text); }), c.accepted ? Failure{} : kBadInit)
        << c.locale << " " << Shown(Variant(c.text));
  }
  ScopedLocale french("fr_FR.UTF-8");
  const DateCase dates[] = {
      {u"2024-01-01 00:00:00.1,5", true},
      {u"2024-01-01 00:00:00.1.5", false},
  };
  ExpectDates(dates);
}

TEST_F(VariableTest, BooleanWordsOfBothLanguagesAreKnownInEither) {
  const struct {
    const char16_t* word;
    std::int16_t number;
  } cases[] = {{u"Vrai", 1}, {u"True", 1}, {u"Faux", 0}, {u"False", 0}};
  for (std::int32_t language : {0, 10000}) {
    SetLanguage(StoredNumber(language));
    for (const auto& c : cases) {
      ObjectPtr<Variable> variable = Make(u"V", kBoolean);
      variable->SetValue(c.word);
      variable->SetInit(c.word);
      EXPECT_EQ(Shown(variable->Value()), Shown(I2(c.number))) << language;
      EXPECT_EQ(Shown(variable->Init()), Shown(I2(c.number))) << language;
    }
  }
}

TEST_F(VariableTest, RefusalsSpeakTheUsersLanguage) {
  ObjectPtr<Variable> variable = Make(u"V", kNum);
  ObjectPtr<Variable> boolean = Make(u"V", kBoolean);
  auto all = [&] {
    return std::vector<std::u16string>{
        DescriptionOf([&] { variable->SetVarType(u"v"); }), DescriptionOf([&] { variable->SetDataType(5); }),
        DescriptionOf([&] { variable->SetValue(u"abc"); }), DescriptionOf([&] { boolean->SetInit(u""); }),
        DescriptionOf([&] { variable->SetInit(u"abc"); })};
  };
  EXPECT_EQ(all(), (std::vector<std::u16string>{u"Type de variable incorrect", u"Type incorrect",
                                                u"Valeur incorrecte", u"Renseigner la zone Initialisation",
                                                u"Valeur d'initialisation incorrecte"}));
  SetLanguage(StoredText("10000"));
  EXPECT_EQ(all(),
            (std::vector<std::u16string>{u"Variable type error", u"Incorrect type", u"Incorrect value",
                                         u"Enter Initialization value", u"Incorrect Initialization value "}));
}

// The words of a Boolean are looked up before anything else is said about it; other types never look.
TEST_F(VariableTest, ALanguageThatIsNoLanguageStopsBooleansOnly) {
  const struct {
    Stored language;
    Failure look_up;
  } cases[] = {
      {StoredText("English"), Runtime(13)},
      {StoredText("9999999999"), Runtime(6)},
      {StoredNumber(5), Runtime(326)},
  };
  for (const auto& c : cases) {
    SetLanguage(c.language);
    for (const Variant& value : {Variant(u"Vrai"), Variant(u"Oui"), Variant(u""), Variant()}) {
      ObjectPtr<Variable> variable = Make(u"V", kBoolean);
      EXPECT_EQ(FailureOf([&] { variable->SetValue(value); }), c.look_up) << Shown(value);
      EXPECT_EQ(FailureOf([&] { variable->SetInit(value); }), c.look_up) << Shown(value);
      EXPECT_EQ(Shown(variable->Value()), "empty");
    }
    ObjectPtr<Variable> number = Make(u"V", kNum);
    number->SetValue(u"1");
    EXPECT_EQ(FailureOf([&] { number->SetValue(u"abc"); }), kBadValue);
    EXPECT_EQ(DescriptionOf([&] { number->SetInit(u"abc"); }), u"An unknown error has occurred!");
  }
}

TEST_F(VariableTest, ObjectsAreKeptWhereNothingReadsThem) {
  Owner object({}, u"");
  ObjectPtr<Variable> variable = Make(u"V", kAlpha);
  variable->SetValue(&object);
  EXPECT_EQ(variable->Value().pdispVal, &object);
  for (std::int16_t type : {kBoolean, kDate}) {
    variable->SetDataType(type);
    EXPECT_EQ(FailureOf([&] { variable->SetValue(&object); }), Runtime(13)) << type;
  }
  variable->SetDataType(kNum);
  EXPECT_EQ(FailureOf([&] { variable->SetValue(&object); }), kBadValue);
}

}  // namespace
}  // namespace moxel::test
