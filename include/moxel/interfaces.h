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
