// The numbered errors as clients see them.
#include "errors/handle_error.h"

#include "moxel/enumerations.h"
#include "tests/errors/language_test.h"

namespace moxel::test {
namespace {

class NumberedErrors : public LanguageTest {
 protected:
  static AutomationError Raised(std::int32_t id, std::u16string_view source = u"User:Validate") {
    auto error = RaisedBy([&] { HandleError(id, source); });
    return error ? *error : AutomationError(0, u"", u"nothing raised");
  }
};

TEST_F(NumberedErrors, CarryThePublishedNumbers) {
  const struct {
    std::int32_t id;
    std::int32_t published_id;
    std::int32_t published_number;
  } cases[] = {
      {1000, lMXUserError_BadPassword, MXUserError_BadPassword},
      {1001, lMXUserError_EnterNewPassword, MXUserError_EnterNewPassword},
      {1002, lMXUserError_ConfPassword, MXUserError_ConfPassword},
      {1003, lMXUserError_BadPermission, MXUserError_BadPermission},
      {1004, lMXUserError_UserAlreadyExist, MXUserError_UserAlreadyExist},
      {1005, lMXUserError_UserRequired, MXUserError_UserRequired},
      {1500, lMXVariableError_BadVarType, MXVariableError_BadVarType},
      {1501, lMXVariableError_BadDataType, MXVariableError_BadDataType},
      {1502, lMXVariableError_IllegalValue, MXVariableError_IllegalValue},
      {1503, lMXVariableError_VariableAlreadyExist, MXVariableError_VariableAlreadyExist},
      {1504, lMXVariableError_VariableRequired, MXVariableError_VariableRequired},
      {1505, lMXVariableError_InitValueRequired, MXVariableError_InitValueRequired},
      {1506, lMXVariableError_IllegalInitValue, MXVariableError_IllegalInitValue},
      {1507, lMXVariableError_InitializationFail, MXVariableError_InitializationFail},
      {1600, lMXDomainError_DomainAlreadyExist, MXDomainError_DomainAlreadyExist},
      {1601, lMXDomainError_DomainRequired, MXDomainError_DomainRequired},
      {1602, lMXDomainError_ContainElement, MXDomainError_ContainElement},
      {1700, lMXScenarioError_ScenarioAlreadyExist, MXScenarioError_ScenarioAlreadyExist},
      {1701, lMXScenarioError_ScenarioRequired, MXScenarioError_ScenarioRequired},
      {1702, lMXScenarioError_ContainElement, MXScenarioError_ContainElement},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.published_id, c.id);
    EXPECT_EQ(Raised(c.id).number(), c.published_number) << c.id;
    EXPECT_EQ(c.published_number, -2147221504 + c.id);
  }
}

TEST_F(NumberedErrors, CarryTheirSourceAndTheMessageInTheLanguageOfTheMoment) {
  const struct {
    DWORD type;
    const char16_t* language;
    const char16_t* description;
  } cases[] = {
      {REG_SZ, u"", u"Cet utilisateur existe d\u00E9j\u00E0..."},
      {REG_DWORD, u"10000", u"User already exists"},
      {REG_DWORD, u"0", u"Cet utilisateur existe d\u00E9j\u00E0..."},
      {REG_SZ, u"10000", u"User already exists"},
      {REG_DWORD, u"5", kUnknown},
      {REG_SZ, u"English", kUnknown},
  };
  EXPECT_EQ(Raised(1004).description(), u"Cet utilisateur existe d\u00E9j\u00E0...") << "no language set";
  for (const auto& c : cases) {
    SetLanguage(c.type, c.language);
    AutomationError error = Raised(1004, u"User:Validate");
    EXPECT_EQ(error.number(), -2147220500);
    EXPECT_EQ(error.source(), u"User:Validate");
    EXPECT_EQ(error.description(), c.description);
  }
}

TEST_F(NumberedErrors, AnIdWithoutAMessageKeepsItsNumberUnlessItOverflows) {
  const struct {
    std::int32_t id;
    std::int32_t number;
    const char16_t* source;
    const char16_t* description;
  } cases[] = {
      {9999, -2147211505, u"MOXEL:Domaines Property Set", kUnknown},
      {0, -2147221504, u"MOXEL:Domaines Property Set", kUnknown},
      {kLargest, 262143, u"MOXEL:Domaines Property Set", kUnknown},
      {-262144, kSmallest, u"MOXEL:Domaines Property Set", kUnknown},
      {-262145, 6, u"MOXEL", u"Overflow"},
      {kErrorBase, 6, u"MOXEL", u"Overflow"},
      {kSmallest, 6, u"MOXEL", u"Overflow"},
  };
  for (const char16_t* language : {u"0", u"10000"}) {
    SetLanguage(REG_DWORD, language);
    for (const auto& c : cases) {
      AutomationError error = Raised(c.id, u"MOXEL:Domaines Property Set");
      EXPECT_EQ(error.number(), c.number) << c.id;
      EXPECT_EQ(error.source(), c.source) << c.id;
      EXPECT_EQ(error.description(), c.description) << c.id;
    }
  }
}

}  // namespace
}  // namespace moxel::test
