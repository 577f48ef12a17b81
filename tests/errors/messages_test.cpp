// Every message in both languages, and what shows where there is none.
#include "errors/messages.h"

#include "tests/errors/language_test.h"

namespace moxel::test {
namespace {

class Messages : public LanguageTest {};

TEST_F(Messages, AreHeldInFrenchAndEnglish) {
  const struct {
    std::int32_t id;
    const char16_t* french;
    const char16_t* english;
  } messages[] = {
      {1000, u"Mot de passe Incorrect", u"Incorrect password"},
      {1001, u"Veuillez saisir un nouveau Mot de passe", u"Enter new password"},
      {1002, u"Veuillez confirmer votre Mot de passe", u"Please confirm your password"},
      {1003, u"Permission Incorrecte", u"You don't have the permission ..."},
      {1004, u"Cet utilisateur existe d\u00E9j\u00E0...", u"User already exists"},
      {1005, u"Renseigner le nom de l'utilisateur", u"Enter user name"},
      {1045, u"Fichier: ", u"File: "},
      {1046, u"Vrai", u"Vrai"},
      {1047, u"Faux", u"Faux"},
      {1048, u"True", u"True"},
      {1049, u"False", u"False"},
      {1500, u"Type de variable incorrect", u"Variable type error"},
      {1501, u"Type incorrect", u"Incorrect type"},
      {1502, u"Valeur incorrecte", u"Incorrect value"},
      {1503, u"Cette variable est d\u00E9j\u00E0 pr\u00E9sente", u"This variable already exists"},
      {1504, u"Renseigner le nom de la variable", u"Enter variable name"},
      {1505, u"Renseigner la zone Initialisation", u"Enter Initialization value"},
      {1506, u"Valeur d'initialisation incorrecte", u"Incorrect Initialization value "},
      {1507, u"Erreur lors de l'initialisation d'une variable", u"Error during initialization"},
      {1600, u"Ce Domaine est d\u00E9j\u00E0 pr\u00E9sent", u"This Domain already exists"},
      {1601, u"Renseigner le nom du domaine", u"Enter domain name"},
      {1602, u"Ce domaine contient des variables ou des sc\u00E9narios",
       u"This domain content variables or scenarios"},
      {1700, u"Ce sc\u00E9nario est d\u00E9j\u00E0 pr\u00E9sent", u"This Scenario already exists"},
      {1701, u"Renseigner le nom du sc\u00E9nario", u"Enter scenario name"},
      {1702, u"Ce sc\u00E9nario contient des variables ou des traitements",
       u"This scenario content variables or processes"},
  };
  for (const auto& m : messages) EXPECT_EQ(LoadMessage(m.id), m.french) << m.id;
  std::size_t found = 0;
  for (std::int32_t id = 990; id <= 1800; ++id) found += GetErrorMessage(id) != kUnknown;
  EXPECT_EQ(found, std::size(messages)) << "there are no others";
  SetLanguage(REG_DWORD, u"10000");
  for (const auto& m : messages) EXPECT_EQ(LoadMessage(m.id), m.english) << m.id;
  SetLanguage(REG_SZ, u"10000");
  for (const auto& m : messages) EXPECT_EQ(GetErrorMessage(m.id), m.english) << m.id;
}

TEST_F(Messages, AMissingOneIsAnErrorOrTheUnknownText) {
  const struct {
    DWORD type;
    const char16_t* language;
    std::int32_t id;
    std::int32_t error;
    const char16_t* description;
  } cases[] = {
      {REG_DWORD, u"0", 9999, 326, u"Resource with identifier '9999' not found"},
      {REG_DWORD, u"0", 1006, 326, u"Resource with identifier '1006' not found"},
      {REG_DWORD, u"10000", 9999, 326, u"Resource with identifier '19999' not found"},
      {REG_DWORD, u"5", 1004, 326, u"Resource with identifier '1009' not found"},
      {REG_DWORD, u"-2000", 1004, 326, u"Resource with identifier '-996' not found"},
      {REG_DWORD, u"10000", kLargest, 6, u"Overflow"},
      {REG_DWORD, u"-1", kSmallest, 6, u"Overflow"},
      {REG_DWORD, u"2147483647", 1, 6, u"Overflow"},
      {REG_SZ, u"2147483648", 1004, 6, u"Overflow"},
      {REG_SZ, u"English", 1004, 13, u"Type mismatch"},
  };
  for (const auto& c : cases) {
    SetLanguage(c.type, c.language);
    auto error = RaisedBy([&] { LoadMessage(c.id); });
    ASSERT_TRUE(error) << c.id;
    EXPECT_EQ(error->number(), c.error);
    EXPECT_EQ(error->description(), c.description);
    EXPECT_EQ(GetErrorMessage(c.id), kUnknown);
  }
}

TEST_F(Messages, TheLanguageIsAnOffsetAddedToTheId) {
  SetLanguage(REG_DWORD, u"5");
  EXPECT_EQ(LoadMessage(1000), u"Renseigner le nom de l'utilisateur");
}

}  // namespace
}  // namespace moxel::test
