// The dual interfaces of the object model: what a client calls early bound, in slot order. Properties are
// get_, put_ (by value) and putref_ (by reference); methods are raw_. Every call answers S_OK or the error
// number, which is then also described by the thread's error info. A null pointer where one is needed:
// E_POINTER.
#pragma once

#include "moxel/identifiers.h"
#include "moxel/platform.h"

namespace moxel {

// One variable of a domain or a scenario. Status results are VARIANT_TRUE or an error.
struct _Variable : IDispatch {
  static constexpr IID iid = IID__Variable;
  virtual HRESULT get_key(BSTR* result) = 0;
  virtual HRESULT put_key(BSTR value) = 0;
  virtual HRESULT raw_Duplicate(VARIANT wVarName, IDispatch* wObj, SHORT* result) = 0;
  virtual HRESULT raw_Update(VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit,
                             IDispatch* wObj, SHORT* result) = 0;
  virtual HRESULT raw_Update1(VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit,
                              IDispatch* wObj, VARIANT wDomScen, SHORT* result) = 0;
  virtual HRESULT raw_Initialize(IDispatch* wObj, SHORT* result) = 0;
  virtual HRESULT raw_Initialize1(VARIANT wKey, SHORT* result) = 0;
  virtual HRESULT get_VarType(VARIANT* result) = 0;
  virtual HRESULT get_Value(VARIANT* result) = 0;
  virtual HRESULT get_Init(VARIANT* result) = 0;
  virtual HRESULT get_DataType(SHORT* result) = 0;
};

// The variables of one domain or scenario.
struct _Variables : IDispatch {
  static constexpr IID iid = IID__Variables;
  virtual HRESULT raw_NewVariable(BSTR wVar, VARIANT wVarType, SHORT wDataType, VARIANT wValue, VARIANT wInit,
                                  IDispatch* wObj, _Variable** result) = 0;
  virtual HRESULT raw_Add(_Variable* wVar) = 0;
  virtual HRESULT get_Item(VARIANT vntIndexKey, _Variable** result) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT vntIndexKey) = 0;
  virtual HRESULT raw_DeleteVariable(_Variable* wVariable, IDispatch* wObj, SHORT* result) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

// One account: a permission and a password that is held and stored scrambled.
struct _User : IDispatch {
  static constexpr IID iid = IID__User;
  virtual HRESULT get_key(BSTR* result) = 0;
  virtual HRESULT put_key(BSTR value) = 0;
  virtual HRESULT raw_Check(VARIANT* wPassword, SHORT* result) = 0;
  virtual HRESULT raw_Update(SHORT* wPermission, VARIANT wOldPwd, VARIANT* wNewPwd, VARIANT* wConfPwd,
                             SHORT* result) = 0;
  virtual HRESULT put_Permission(SHORT value) = 0;
  virtual HRESULT get_Permission(SHORT* result) = 0;
  virtual HRESULT get_Password(VARIANT* result) = 0;
  virtual HRESULT get_PasswordCrypted(VARIANT* result) = 0;
  virtual HRESULT get_PasswordDecrypted(VARIANT* result) = 0;
  virtual HRESULT put_PasswordCrypted(VARIANT value) = 0;
};

// All accounts, or those admitted to one scenario.
struct _Utilisateurs : IDispatch {
  static constexpr IID iid = IID__Utilisateurs;
  virtual HRESULT raw_NewUser(BSTR* wUser, VARIANT wPassword, VARIANT wPwdConf, SHORT wPermission,
                              _User** result) = 0;
  // The result is VARIANT_FALSE whatever was deleted.
  virtual HRESULT raw_DeleteUser(_User** wUser, SHORT* result) = 0;
  virtual HRESULT raw_Add(_User** wUser) = 0;
  virtual HRESULT get_Item(VARIANT* vntIndexKey, _User** result) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT* vntIndexKey) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

// One task of a scenario.
struct _Traitement : IDispatch {
  static constexpr IID iid = IID__Traitement;
  virtual HRESULT get_key(BSTR* result) = 0;
  virtual HRESULT put_key(BSTR value) = 0;
  virtual HRESULT raw_Initialize(VARIANT wScenarioName, SHORT wState, SHORT* result) = 0;
  virtual HRESULT get_TypeTask(SHORT* result) = 0;
  virtual HRESULT get_State(SHORT* result) = 0;
  virtual HRESULT get_Selected(SHORT* result) = 0;
  virtual HRESULT put_Selected(SHORT value) = 0;
  virtual HRESULT get_LastExe(VARIANT* result) = 0;
  virtual HRESULT get_StatusAct(VARIANT* result) = 0;
  virtual HRESULT get_Source(VARIANT* result) = 0;
};

// The tasks of one scenario.
struct _Traitements : IDispatch {
  static constexpr IID iid = IID__Traitements;
  virtual HRESULT raw_Add(_Traitement** wTraitement) = 0;
  virtual HRESULT get_Item(VARIANT vntIndexKey, _Traitement** result) = 0;
  virtual HRESULT raw_DeleteTraitement(_Traitement** wTraitement, BSTR wScenarioName, SHORT* result) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT vntIndexKey) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

struct _Collection;

// A set of tasks in an order, with users and variables of its own. Putting a null collection makes the next
// get load afresh.
struct _Scenario : IDispatch {
  static constexpr IID iid = IID__Scenario;
  virtual HRESULT get_key(BSTR* result) = 0;
  virtual HRESULT put_key(BSTR value) = 0;
  virtual HRESULT raw_Initialize(SHORT wMode, SHORT wWithOutVar, SHORT* result) = 0;
  virtual HRESULT get_Mode(SHORT* result) = 0;
  virtual HRESULT get_Directory(VARIANT* result) = 0;
  virtual HRESULT get_UseSocket(SHORT* result) = 0;
  virtual HRESULT get_Port(VARIANT* result) = 0;
  virtual HRESULT get_State(SHORT* result) = 0;
  virtual HRESULT get_Hwnd(LONG* result) = 0;
  virtual HRESULT get_LastExe(VARIANT* result) = 0;
  virtual HRESULT get_Variables(_Variables** result) = 0;
  virtual HRESULT putref_Variables(_Variables* value) = 0;
  virtual HRESULT get_Traitements(_Traitements** result) = 0;
  virtual HRESULT putref_Traitements(_Traitements* value) = 0;
  virtual HRESULT get_TraitementsSelected(_Collection** result) = 0;
  virtual HRESULT putref_TraitementsSelected(_Collection* value) = 0;
  virtual HRESULT get_Utilisateurs(_Utilisateurs** result) = 0;
  virtual HRESULT putref_Utilisateurs(_Utilisateurs* value) = 0;
};

// The scenarios of one domain, or those of no known domain.
struct _Scenarios : IDispatch {
  static constexpr IID iid = IID__Scenarios;
  virtual HRESULT raw_DeleteScenario(_Scenario** wScenario, SHORT wForce, SHORT* result) = 0;
  virtual HRESULT raw_Add(_Scenario** wScen) = 0;
  virtual HRESULT get_Item(VARIANT vntIndexKey, _Scenario** result) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT vntIndexKey) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

// A group of scenarios with variables of its own.
struct _Domaine : IDispatch {
  static constexpr IID iid = IID__Domaine;
  virtual HRESULT get_key(BSTR* result) = 0;
  virtual HRESULT put_key(BSTR value) = 0;
  virtual HRESULT raw_Initialize(SHORT wWithOutDomVar, SHORT wWithOutScenVar, SHORT* result) = 0;
  virtual HRESULT get_Comment(VARIANT* result) = 0;
  virtual HRESULT raw_Update(VARIANT* wComment, SHORT* result) = 0;
  virtual HRESULT get_Variables(_Variables** result) = 0;
  virtual HRESULT get_Scenarios(_Scenarios** result) = 0;
  virtual HRESULT putref_Variables(_Variables* value) = 0;
  virtual HRESULT putref_Scenarios(_Scenarios* value) = 0;
};

// All domains.
struct _Domaines : IDispatch {
  static constexpr IID iid = IID__Domaines;
  virtual HRESULT raw_Add(_Domaine** wDomaine) = 0;
  virtual HRESULT raw_DeleteDomain(_Domaine** wDomaine, SHORT wForce, SHORT* result) = 0;
  virtual HRESULT raw_NewDomain(BSTR* wDom, VARIANT* wComment, _Domaine** result) = 0;
  virtual HRESULT get_Item(VARIANT* vntIndexKey, _Domaine** result) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT* vntIndexKey) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

// The entry to all users, all domains and the scenarios of no domain.
struct _Root : IDispatch {
  static constexpr IID iid = IID__Root;
  virtual HRESULT get_Utilisateurs(_Utilisateurs** result) = 0;
  virtual HRESULT putref_Utilisateurs(_Utilisateurs* value) = 0;
  virtual HRESULT get_Scenarios(_Scenarios** result) = 0;
  virtual HRESULT putref_Scenarios(_Scenarios* value) = 0;
  virtual HRESULT get_Domaines(_Domaines** result) = 0;
  virtual HRESULT putref_Domaines(_Domaines* value) = 0;
};

// Finds one variable of a domain or a scenario without loading anything else.
struct _RootVar : IDispatch {
  static constexpr IID iid = IID__RootVar;
  // `result` is null when there is no such variable. The arguments are not changed.
  virtual HRESULT raw_RecupVariable(VARIANT* wDom, VARIANT* wScen, VARIANT* wVar, _Variable** result) = 0;
};

// The keyed collection: values in the order added, each addressable by 1-based position or by key.
struct _Collection : IDispatch {
  static constexpr IID iid = IID__Collection;
  virtual HRESULT get_Item(VARIANT* Index, VARIANT* result) = 0;
  virtual HRESULT raw_Add(VARIANT* Item, VARIANT* Key) = 0;
  virtual HRESULT get_Count(LONG* result) = 0;
  virtual HRESULT raw_Remove(VARIANT* Index) = 0;
  virtual HRESULT get_NewEnum(IUnknown** result) = 0;
};

}  // namespace moxel
