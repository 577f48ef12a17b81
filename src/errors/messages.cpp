#include "errors/messages.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

#include "moxel/automation_error.h"
#include "registry/settings.h"

namespace moxel {
namespace {

struct Message {
  std::int32_t id;
  std::u16string_view text;
};

// Ascending by id: French at the ids themselves, English 10000 above.
constexpr Message kMessages[] = {
    {1000, u"Mot de passe Incorrect"},
    {1001, u"Veuillez saisir un nouveau Mot de passe"},
    {1002, u"Veuillez confirmer votre Mot de passe"},
    {1003, u"Permission Incorrecte"},
    {1004, u"Cet utilisateur existe déjà..."},
    {1005, u"Renseigner le nom de l'utilisateur"},
    {1045, u"Fichier: "},
    {kMessageVrai, u"Vrai"},
    {kMessageFaux, u"Faux"},
    {kMessageTrue, u"True"},
    {kMessageFalse, u"False"},
    {1500, u"Type de variable incorrect"},
    {1501, u"Type incorrect"},
    {1502, u"Valeur incorrecte"},
    {1503, u"Cette variable est déjà présente"},
    {1504, u"Renseigner le nom de la variable"},
    {1505, u"Renseigner la zone Initialisation"},
    {1506, u"Valeur d'initialisation incorrecte"},
    {1507, u"Erreur lors de l'initialisation d'une variable"},
    {1600, u"Ce Domaine est déjà présent"},
    {1601, u"Renseigner le nom du domaine"},
    {1602, u"Ce domaine contient des variables ou des scénarios"},
    {1700, u"Ce scénario est déjà présent"},
    {1701, u"Renseigner le nom du scénario"},
    {1702, u"Ce scénario contient des variables ou des traitements"},
    {11000, u"Incorrect password"},
    {11001, u"Enter new password"},
    {11002, u"Please confirm your password"},
    {11003, u"You don't have the permission ..."},
    {11004, u"User already exists"},
    {11005, u"Enter user name"},
    {11045, u"File: "},
    {11046, u"Vrai"},
    {11047, u"Faux"},
    {11048, u"True"},
    {11049, u"False"},
    {11500, u"Variable type error"},
    {11501, u"Incorrect type"},
    {11502, u"Incorrect value"},
    {11503, u"This variable already exists"},
    {11504, u"Enter variable name"},
    {11505, u"Enter Initialization value"},
    {11506, u"Incorrect Initialization value "},
    {11507, u"Error during initialization"},
    {11600, u"This Domain already exists"},
    {11601, u"Enter domain name"},
    {11602, u"This domain content variables or scenarios"},
    {11700, u"This Scenario already exists"},
    {11701, u"Enter scenario name"},
    {11702, u"This scenario content variables or processes"},
};

}  // namespace

std::u16string LoadMessage(std::int32_t id) {
  GetLanguage();
  std::int64_t key = std::int64_t{id} + Settings().LanguageOffset;
  if (key < std::numeric_limits<std::int32_t>::min() || key > std::numeric_limits<std::int32_t>::max())
    throw AutomationError::Overflow();
  auto found =
      std::lower_bound(std::begin(kMessages), std::end(kMessages), key,
                       [](const Message& message, std::int64_t wanted) { return message.id < wanted; });
  if (found == std::end(kMessages) || found->id != key)
    throw AutomationError::ResourceNotFound(static_cast<std::int32_t>(key));
  return std::u16string(found->text);
}

std::u16string GetErrorMessage(std::int32_t id) {
  try {
    return LoadMessage(id);
  } catch (const AutomationError&) {
    return u"An unknown error has occurred!";
  }
}

}  // namespace moxel
