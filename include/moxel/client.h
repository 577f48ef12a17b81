// The C++ client. A program includes this header and links libmoxel.so; it needs no registration.
//
//   moxel::client::Root root;
//   for (const auto& domain : root.Domaines()) std::cout << domain.key() << '\n';
//   root.Domaines()["Sales"].Initialize(1, 1);
//
// Objects. A wrapper is a value that holds one object, or none, which is false in a condition. Copies hold
// the same object, and == tells whether two do. An object lives as long as anything holds it, also when its
// collection and its root are gone. It is used on the thread on which its root was created.
//
// Collections. domains["Sales"] is an element by its key, letter case ignored, domains[1] one by its
// position; 5 is thrown for an unknown key, 9 for a position out of range. Contains asks first, `for` walks,
// std::ranges take them. Add and Remove change a collection in memory and never the registry.
//
// Texts. Arguments are UTF-8 or UTF-16. A name comes back as UTF-8 from key() and, exactly as it was given,
// from key16(); the text of a moxel::Variant from ToUtf8() and from ToText().
//
// The registry. Collections are loaded when they are first read and then kept. What other programs change is
// seen by the members called live below, and by the others with a new root, or when nullptr is put in the
// place of a collection. Every change is written at once.
//
// Failures are thrown as moxel::AutomationError: refusals with the numbers named below, texts in the language
// of the product, and anywhere 6 for a number out of range, 13 for a value of the wrong type, 94 for a null
// value, E_POINTER for a call on no object and for no object where one is needed. A result of type bool is
// true where nothing else is said.
#pragma once

#include <cstddef>
#include <cstdint>

#include "moxel/automation_error.h"
#include "moxel/client_base.h"
#include "moxel/enumerations.h"
#include "moxel/interfaces.h"
#include "moxel/text.h"
#include "moxel/variant.h"

namespace moxel::client {

// The owner of variables, as an argument: a Domaine, a Scenario or, with nullptr, none.
class Owner : public Object<IDispatch> {
 public:
  Owner(std::nullptr_t) {}
  Owner(const Object<_Domaine>& domain) : Object(ObjectPtr<IDispatch>(domain.get())) {}
  Owner(const Object<_Scenario>& scenario) : Object(ObjectPtr<IDispatch>(scenario.get())) {}
};

// One variable or constant of a domain or a scenario. It does not know its owner.
class Variable : public Named<_Variable> {
 public:
  using Named::Named;

  // The text "V" for a variable, which initializing its owner resets, or "C" for a constant.
  Variant VarType() const { return Ask<Variant>(&_Variable::get_VarType); }
  MXVariableDataType DataType() const { return Ask<MXVariableDataType>(&_Variable::get_DataType); }
  // As given, or as stored when loaded. Passwords are in clear; a Date is a text, "2024-03-15 08:30:00.000".
  Variant Value() const { return Ask<Variant>(&_Variable::get_Value); }
  Variant Init() const { return Ask<Variant>(&_Variable::get_Init); }

  // Changes all four and writes them under the owner; for no owner under the product's root. Throws, before
  // anything is written, MXVariableError_BadVarType (-2147220004), _BadDataType (-2147220003), _IllegalValue
  // (-2147220002), _InitValueRequired (-2147219999) or _IllegalInitValue (-2147219998); while writing, 6 or
  // 13 for a number that does not convert. What was changed in memory before the refusal stays changed.
  bool Update(const Argument& wVarType, MXVariableDataType wDataType, const Argument& wValue,
              const Argument& wInit, const Owner& wObj) const {
    return Ask<bool>(&_Variable::raw_Update, wVarType, wDataType, wValue, wInit, wObj);
  }
  // The same; `wDomScen`, when given, is the owner instead: a domain's name followed by "_d", or a scenario's
  // by "_s".
  bool Update1(const Argument& wVarType, MXVariableDataType wDataType, const Argument& wValue,
               const Argument& wInit, const Owner& wObj,
               const Argument& wDomScen = Variant::Missing()) const {
    return Ask<bool>(&_Variable::raw_Update1, wVarType, wDataType, wValue, wInit, wObj, wDomScen);
  }

  // Resets a variable to its initial value and writes the value; does nothing to a constant. Throws
  // MXVariableError_InitializationFail (-2147219997) for whatever goes wrong.
  bool Initialize(const Owner& wObj) const { return Ask<bool>(&_Variable::raw_Initialize, wObj); }
  // The same for the owner at a path of the registry tree: "Domain\\Sales", "Scenarios\\Night".
  bool Initialize1(const Argument& wKey) const { return Ask<bool>(&_Variable::raw_Initialize1, wKey); }

  // Writes a copy under another name of the owner; no collection follows. Throws
  // MXVariableError_VariableAlreadyExist (-2147220001).
  bool Duplicate(const Argument& wVarName, const Owner& wObj) const {
    return Ask<bool>(&_Variable::raw_Duplicate, wVarName, wObj);
  }
};

// The variables of one domain or scenario.
class Variables : public CollectionOf<_Variables, Variable> {
 public:
  using CollectionOf::CollectionOf;

  // Creates a variable, writes it under its owner and adds it. Throws MXVariableError_VariableRequired
  // (-2147220000) for a name that is empty or has a parenthesis, what Variable.Update throws,
  // MXVariableError_VariableAlreadyExist (-2147220001) when the registry has the name, and 457, with the
  // variable written, when only the collection has it.
  Variable NewVariable(const Text& wVar, const Argument& wVarType, MXVariableDataType wDataType,
                       const Argument& wValue, const Argument& wInit, const Owner& wObj) const {
    return Ask<Variable>(&_Variables::raw_NewVariable, wVar, wVarType, wDataType, wValue, wInit, wObj);
  }

  // Deletes a variable from the registry; it stays in the collection until Remove. False when it was not
  // there, or for no owner.
  bool DeleteVariable(const Variable& wVariable, const Owner& wObj) const {
    return Ask<bool>(&_Variables::raw_DeleteVariable, wVariable, wObj);
  }
};

// One account. It knows the password with which it was loaded; users of a scenario have none.
class User : public Named<_User> {
 public:
  using Named::Named;

  // True when the password is right. Throws MXUserError_BadPassword (-2147220504), Source "User:Update", when
  // it is not.
  bool Check(const Argument& wPassword) const { return Ask<bool>(&_User::raw_Check, wPassword); }

  // Changes the permission and, when a new password is given, the password. The old password is asked for
  // only then. Throws, before anything is changed and in this order, MXUserError_BadPermission (-2147220501)
  // above 1, _BadPassword (-2147220504) for the old one, _EnterNewPassword (-2147220503) when the new one is
  // the current one, _ConfPassword (-2147220502) when its confirmation differs.
  bool Update(std::int16_t wPermission, const Argument& wOldPwd = Variant::Missing(),
              const Argument& wNewPwd = Variant::Missing(),
              const Argument& wConfPwd = Variant::Missing()) const {
    return Ask<bool>(&_User::raw_Update, wPermission, wOldPwd, wNewPwd, wConfPwd);
  }

  std::int16_t Permission() const { return Ask<std::int16_t>(&_User::get_Permission); }
  // In memory only. Throws MXUserError_BadPermission (-2147220501) above 1.
  void PutPermission(std::int16_t value) const { Call(&_User::put_Permission, value); }

  // One "*" for each character.
  Variant Password() const { return Ask<Variant>(&_User::get_Password); }
  Variant PasswordDecrypted() const { return Ask<Variant>(&_User::get_PasswordDecrypted); }
  // The scrambled form; empty when there is no password.
  Variant PasswordCrypted() const { return Ask<Variant>(&_User::get_PasswordCrypted); }
  // Takes a password already scrambled, in memory only.
  void PutPasswordCrypted(const Argument& value) const { Call(&_User::put_PasswordCrypted, value); }
};

// All accounts, or those admitted to one scenario.
class Utilisateurs : public CollectionOf<_Utilisateurs, User> {
 public:
  using CollectionOf::CollectionOf;

  // Creates an account of the product, whichever collection this is, writes it and adds it. Throws, in this
  // order, MXUserError_UserRequired (-2147220499) without a name, _BadPassword (-2147220504) for an empty
  // password, _ConfPassword (-2147220502) when the confirmation differs, _BadPermission (-2147220501) above
  // 1, _UserAlreadyExist (-2147220500) when the registry has the name, and 457, with the account written,
  // when only the collection has it.
  User NewUser(const Text& wUser, const Argument& wPassword, const Argument& wPwdConf,
               std::int16_t wPermission) const {
    return Ask<User>(&_Utilisateurs::raw_NewUser, wUser, wPassword, wPwdConf, wPermission);
  }

  // Deletes an account from the registry and its name from every scenario's list; it stays in the collection
  // until Remove. Always false, whatever was deleted.
  bool DeleteUser(const User& wUser) const { return Ask<bool>(&_Utilisateurs::raw_DeleteUser, wUser); }
};

// One task of a scenario.
class Traitement : public Named<_Traitement> {
 public:
  using Named::Named;

  // Writes a run state of the task below a scenario given by its name: NotProcessed, Processed or Retry. The
  // others are for the execution engine: they write nothing, and the result is still true.
  bool Initialize(const Argument& wScenarioName, MXTraitementState wState) const {
    return Ask<bool>(&_Traitement::raw_Initialize, wScenarioName, wState);
  }

  // Live.
  MXTraitementState State() const { return Ask<MXTraitementState>(&_Traitement::get_State); }
  // A code of the product's other programs.
  std::int16_t TypeTask() const { return Ask<std::int16_t>(&_Traitement::get_TypeTask); }
  // A mark in memory. Loading the order of a scenario whose tasks are loaded leaves one on one of them.
  std::int16_t Selected() const { return Ask<std::int16_t>(&_Traitement::get_Selected); }
  void PutSelected(std::int16_t value) const { Call(&_Traitement::put_Selected, value); }
  // When it last ran, as stored.
  Variant LastExe() const { return Ask<Variant>(&_Traitement::get_LastExe); }
  // The statuses of its actions OnErr, OnDec, ExeIf and Goto in one text; a blank for one without.
  Variant StatusAct() const { return Ask<Variant>(&_Traitement::get_StatusAct); }
  // The name of its scenario.
  Variant Source() const { return Ask<Variant>(&_Traitement::get_Source); }
};

// The tasks of one scenario, in the order of the registry.
class Traitements : public CollectionOf<_Traitements, Traitement> {
 public:
  using CollectionOf::CollectionOf;

  // Deletes a task of the named scenario from the registry, and takes it out of this collection whether that
  // succeeded or not; the scenario's order goes on naming it. False when the registry kept it. Throws 5,
  // after deleting, for a task that the collection does not hold.
  bool DeleteTraitement(const Traitement& wTraitement, const Text& wScenarioName) const {
    return Ask<bool>(&_Traitements::raw_DeleteTraitement, wTraitement, wScenarioName);
  }
};

// The plain collection: values of any kind.
class Collection : public CollectionOf<_Collection, Variant> {
 public:
  using CollectionOf::CollectionOf;

  // Appends a value, under a key or without. Throws 457 when the key is there already, 13 for a key that is
  // no text.
  void Add(const Argument& Item, const Argument& Key = Variant::Missing()) const {
    Call(&_Collection::raw_Add, Item, Key);
  }
};

// One scenario: an ordered set of tasks, with users and variables of its own.
class Scenario : public Named<_Scenario> {
 public:
  using Named::Named;

  // Resets the run state: of the tasks that the order names (All: to NotProcessed; AfterError: those in error
  // or processing to Retry; Scenario: none), then of the scenario. `wWithOutVar` 1, and only 1, resets the
  // variables too, whatever its name says. An error ends it, and what was reset stays reset: 5 for an order
  // that names no task, 6 or 13 for a state that is no number, MXVariableError_InitializationFail
  // (-2147219997).
  bool Initialize(MXScenarioModeInit wMode, std::int16_t wWithOutVar) const {
    return Ask<bool>(&_Scenario::raw_Initialize, wMode, wWithOutVar);
  }

  // Live: what the execution engine changes. What is missing reads as 0, a missing port as the empty text.
  MXScenarioState State() const { return Ask<MXScenarioState>(&_Scenario::get_State); }
  std::int32_t Hwnd() const { return Ask<std::int32_t>(&_Scenario::get_Hwnd); }
  Variant Port() const { return Ask<Variant>(&_Scenario::get_Port); }

  // As stored when the scenario was loaded.
  std::int16_t Mode() const { return Ask<std::int16_t>(&_Scenario::get_Mode); }
  Variant Directory() const { return Ask<Variant>(&_Scenario::get_Directory); }
  std::int16_t UseSocket() const { return Ask<std::int16_t>(&_Scenario::get_UseSocket); }
  Variant LastExe() const { return Ask<Variant>(&_Scenario::get_LastExe); }

  client::Variables Variables() const { return Ask<client::Variables>(&_Scenario::get_Variables); }
  client::Traitements Traitements() const { return Ask<client::Traitements>(&_Scenario::get_Traitements); }
  // The names of the tasks in their order, each under the key of its position plus one ("2" is the first);
  // Traitements()[name] is the task.
  client::Collection TraitementsSelected() const {
    return Ask<client::Collection>(&_Scenario::get_TraitementsSelected);
  }
  client::Utilisateurs Utilisateurs() const {
    return Ask<client::Utilisateurs>(&_Scenario::get_Utilisateurs);
  }
  // Keep a collection as it is; nullptr makes the next read load afresh.
  void PutVariables(const client::Variables& value) const { Call(&_Scenario::putref_Variables, value); }
  void PutTraitements(const client::Traitements& value) const { Call(&_Scenario::putref_Traitements, value); }
  void PutTraitementsSelected(const client::Collection& value) const {
    Call(&_Scenario::putref_TraitementsSelected, value);
  }
  void PutUtilisateurs(const client::Utilisateurs& value) const {
    Call(&_Scenario::putref_Utilisateurs, value);
  }
};

// The scenarios of one domain, or those of none.
class Scenarios : public CollectionOf<_Scenarios, Scenario> {
 public:
  using CollectionOf::CollectionOf;

  // Deletes a scenario from the registry with all below it; it stays in the collection until Remove. False
  // when the registry kept it or never had it: then, and only then, the collection drops it. `wForce` 0
  // refuses one with variables or tasks: MXScenarioError_ContainElement (-2147219802).
  bool DeleteScenario(const Scenario& wScenario, std::int16_t wForce) const {
    return Ask<bool>(&_Scenarios::raw_DeleteScenario, wScenario, wForce);
  }
};

// One domain: scenarios, and variables of its own.
class Domaine : public Named<_Domaine> {
 public:
  using Named::Named;

  // Resets its scenarios, as Scenario.Initialize does in the mode All, and the variables: the flags ask for
  // those of the domain and for those of its scenarios with 1, and only 1, whatever their names say. Throws
  // what Scenario.Initialize throws, with what was reset staying reset.
  bool Initialize(std::int16_t wWithOutDomVar, std::int16_t wWithOutScenVar) const {
    return Ask<bool>(&_Domaine::raw_Initialize, wWithOutDomVar, wWithOutScenVar);
  }

  Variant Comment() const { return Ask<Variant>(&_Domaine::get_Comment); }
  // Changes the comment.
  bool Update(const Argument& wComment) const { return Ask<bool>(&_Domaine::raw_Update, wComment); }

  client::Variables Variables() const { return Ask<client::Variables>(&_Domaine::get_Variables); }
  // Objects of this domain alone: the same scenario reached through another root is another object.
  client::Scenarios Scenarios() const { return Ask<client::Scenarios>(&_Domaine::get_Scenarios); }
  // Keep a collection as it is; nullptr makes the next read load afresh.
  void PutVariables(const client::Variables& value) const { Call(&_Domaine::putref_Variables, value); }
  void PutScenarios(const client::Scenarios& value) const { Call(&_Domaine::putref_Scenarios, value); }
};

// All domains.
class Domaines : public CollectionOf<_Domaines, Domaine> {
 public:
  using CollectionOf::CollectionOf;

  // Creates a domain, writes it and adds it. Throws MXDomainError_DomainRequired (-2147219903) without a
  // name, MXDomainError_DomainAlreadyExist (-2147219904) when the registry has the name, and 457, with the
  // domain written, when only the collection has it.
  Domaine NewDomain(const Text& wDom, const Argument& wComment) const {
    return Ask<Domaine>(&_Domaines::raw_NewDomain, wDom, wComment);
  }

  // Deletes a domain from the registry with its variables, and its scenarios too when `wForce` is not 0; it
  // stays in the collection until Remove. False when the registry kept it or never had it: then, and only
  // then, the collection drops it. `wForce` 0 refuses one with variables or scenarios:
  // MXDomainError_ContainElement (-2147219902).
  bool DeleteDomain(const Domaine& wDomaine, std::int16_t wForce) const {
    return Ask<bool>(&_Domaines::raw_DeleteDomain, wDomaine, wForce);
  }
};

// The entry: all users, all domains, and the scenarios of no domain.
class Root : public Object<_Root> {
 public:
  using Object::Object;
  // A new root, with nothing loaded. Throws 13 when the product's language setting is no number.
  Root() : Object(detail::Create<_Root>(CLSID_Root)) {}

  client::Utilisateurs Utilisateurs() const { return Ask<client::Utilisateurs>(&_Root::get_Utilisateurs); }
  client::Scenarios Scenarios() const { return Ask<client::Scenarios>(&_Root::get_Scenarios); }
  client::Domaines Domaines() const { return Ask<client::Domaines>(&_Root::get_Domaines); }
  // Keep a collection as it is; nullptr makes the next read load afresh.
  void PutUtilisateurs(const client::Utilisateurs& value) const { Call(&_Root::putref_Utilisateurs, value); }
  void PutScenarios(const client::Scenarios& value) const { Call(&_Root::putref_Scenarios, value); }
  void PutDomaines(const client::Domaines& value) const { Call(&_Root::putref_Domaines, value); }
};

// The other entry: finds one variable without loading anything else.
class RootVar : public Object<_RootVar> {
 public:
  using Object::Object;
  // Throws as Root() does.
  RootVar() : Object(detail::Create<_RootVar>(CLSID_RootVar)) {}

  // The variable of the domain `wDom` or, only when that is empty, of the scenario `wScen`; none when there
  // is no such variable. The name of the variable is compared exactly, its owner is found in any letter case.
  Variable RecupVariable(const Argument& wDom, const Argument& wScen, const Argument& wVar) const {
    return Ask<Variable>(&_RootVar::raw_RecupVariable, wDom, wScen, wVar);
  }
};

}  // namespace moxel::client
