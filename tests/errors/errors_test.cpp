// The messages in both languages, and the numbered errors that clients see with them.
#include <cstdint>
#include <string>
#include <tuple>

#include "errors/handle_error.h"
#include "errors/messages.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "tests/support/product_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {
namespace {

constexpr const char16_t* kUnknown = u"An unknown error has occurred!";

class Errors : public ProductTest {
 protected:
  static std::u16string AllMessages() {
    std::u16string all;
    for (std::int32_t id = 990; id <= 1800; ++id) {
      const std::u16string text = GetErrorMessage(id);
      if (text != kUnknown) all += Variant(id).ToText() + u' ' + text + u"; ";
    }
    return all;
  }
  static AutomationError Raised(std::int32_t id) {
    return RaisedBy([&] { HandleError(id, u"User:Validate"); }).value();
  }
};

TEST_F(Errors, MessagesAreHeldInFrenchAndEnglishAndThereAreNoOthers) {
  EXPECT_EQ(
      AllMessages(),
      u"1000 Mot de passe Incorrect; 1001 Veuillez saisir un nouveau Mot de passe; 1002 Veuillez confirmer "
      u"votre Mot de passe; 1003 Permission Incorrecte; 1004 Cet utilisateur existe déjà...; 1005 "
      u"Renseigner le nom de l'utilisateur; 1045 Fichier: ; 1046 Vrai; 1047 Faux; 1048 True; 1049 False; "
      u"1500 Type de variable incorrect; 1501 Type incorrect; 1502 Valeur incorrecte; 1503 Cette variable "
      u"est déjà présente; 1504 Renseigner le nom de la variable; 1505 Renseigner la zone Initialisation; "
      u"1506 Valeur d'initialisation incorrecte; 1507 Erreur lors de l'initialisation d'une variable; 1600 "
      u"Ce Domaine est déjà présent; 1601 Renseigner le nom du domaine; 1602 Ce domaine contient des "
      u"variables ou des scénarios; 1700 Ce scénario est déjà présent; 1701 Renseigner le nom du scénario; "
      u"1702 Ce scénario contient des variables ou des traitements; ");
  RegWriteValue(schema::kConfiguration, schema::kLang, REG_DWORD, u"10000");
  EXPECT_EQ(
      AllMessages(),
      u"1000 Incorrect password; 1001 Enter new password; 1002 Please confirm your password; 1003 You don't "
      u"have the permission ...; 1004 User already exists; 1005 Enter user name; 1045 File: ; 1046 Vrai; "
      u"1047 Faux; 1048 True; 1049 False; 1500 Variable type error; 1501 Incorrect type; 1502 Incorrect "
      u"value; 1503 This variable already exists; 1504 Enter variable name; 1505 Enter Initialization "
      u"value; 1506 Incorrect Initialization value ; 1507 Error during initialization; 1600 This Domain "
      u"already exists; 1601 Enter domain name; 1602 This domain content variables or scenarios; 1700 This "
      u"Scenario already exists; 1701 Enter scenario name; 1702 This scenario content variables or "
      u"processes; ");
}

TEST_F(Errors, AMessageIsLookedUpInTheLanguageOfTheMoment) {
  // Language and id, the error of the look-up, its text or the message, the number of the error raised.
  const std::tuple<DWORD, std::u16string, std::int32_t, std::int32_t, std::u16string, std::int32_t> cases[] =
      {{REG_SZ, u"", 1004, 0, u"Cet utilisateur existe déjà...", -2147220500},
       {REG_SZ, u"10000", 1004, 0, u"User already exists", -2147220500},
       {REG_DWORD, u"5", 1000, 0, u"Renseigner le nom de l'utilisateur", -2147220504},
       {REG_DWORD, u"5", 1004, 326, u"Resource with identifier '1009' not found", -2147220500},
       {REG_DWORD, u"0", -262144, 326, u"Resource with identifier '-262144' not found", INT32_MIN},
       {REG_DWORD, u"0", -262145, 326, u"Resource with identifier '-262145' not found", 6},
       {REG_DWORD, u"10000", INT32_MAX, 6, u"Overflow", 262143},
       {REG_DWORD, u"-1", INT32_MIN, 6, u"Overflow", 6},
       {REG_SZ, u"2147483648", 1004, 6, u"Overflow", -2147220500},
       {REG_SZ, u"English", 1004, 13, u"Type mismatch", -2147220500}};
  for (const auto& [type, language, id, number, text, raised_number] : cases) {
    RegWriteValue(schema::kConfiguration, schema::kLang, type, language);
    std::u16string found;
    const auto error = RaisedBy([&] { found = LoadMessage(id); });
    EXPECT_EQ(error ? error->number() : 0, number) << id;
    EXPECT_EQ(error ? error->description() : found, text);
    const std::u16string shown = error ? kUnknown : text;
    EXPECT_EQ(GetErrorMessage(id), shown);
    const AutomationError raised = Raised(id);
    EXPECT_EQ(raised.number(), raised_number) << id;
    EXPECT_EQ(raised.source(), raised_number == 6 ? u"MOXEL" : u"User:Validate");
    EXPECT_EQ(raised.description(), raised_number == 6 ? u"Overflow" : shown);
  }
}

}  // namespace
}  // namespace moxel::test
