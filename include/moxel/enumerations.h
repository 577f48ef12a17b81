// The enumerations of the type library.
#pragma once

#include <cstdint>

namespace moxel {

// Error numbers of users, as clients see them: 0x80040000 + message id.
enum MXUserError : std::int32_t {
  MXUserError_BadPassword = -2147220504,
  MXUserError_EnterNewPassword = -2147220503,
  MXUserError_ConfPassword = -2147220502,
  MXUserError_BadPermission = -2147220501,
  MXUserError_UserAlreadyExist = -2147220500,
  MXUserError_UserRequired = -2147220499,
};

// The message ids of the same errors.
enum lMXUserError : std::int32_t {
  lMXUserError_BadPassword = 1000,
  lMXUserError_EnterNewPassword = 1001,
  lMXUserError_ConfPassword = 1002,
  lMXUserError_BadPermission = 1003,
  lMXUserError_UserAlreadyExist = 1004,
  lMXUserError_UserRequired = 1005,
};

// Error numbers of variables.
enum MXVariableError : std::int32_t {
  MXVariableError_BadVarType = -2147220004,
  MXVariableError_BadDataType = -2147220003,
  MXVariableError_IllegalValue = -2147220002,
  MXVariableError_VariableAlreadyExist = -2147220001,
  MXVariableError_VariableRequired = -2147220000,
  MXVariableError_InitValueRequired = -2147219999,
  MXVariableError_IllegalInitValue = -2147219998,
  MXVariableError_InitializationFail = -2147219997,
};

// The message ids of the same errors.
enum lMXVariableError : std::int32_t {
  lMXVariableError_BadVarType = 1500,
  lMXVariableError_BadDataType = 1501,
  lMXVariableError_IllegalValue = 1502,
  lMXVariableError_VariableAlreadyExist = 1503,
  lMXVariableError_VariableRequired = 1504,
  lMXVariableError_InitValueRequired = 1505,
  lMXVariableError_IllegalInitValue = 1506,
  lMXVariableError_InitializationFail = 1507,
};

// Error numbers of domains.
enum MXDomainError : std::int32_t {
  MXDomainError_DomainAlreadyExist = -2147219904,
  MXDomainError_DomainRequired = -2147219903,
  MXDomainError_ContainElement = -2147219902,
};

// The message ids of the same errors.
enum lMXDomainError : std::int32_t {
  lMXDomainError_DomainAlreadyExist = 1600,
  lMXDomainError_DomainRequired = 1601,
  lMXDomainError_ContainElement = 1602,
};

// Error numbers of scenarios. Only ContainElement is ever raised.
enum MXScenarioError : std::int32_t {
  MXScenarioError_ScenarioAlreadyExist = -2147219804,
  MXScenarioError_ScenarioRequired = -2147219803,
  MXScenarioError_ContainElement = -2147219802,
};

// The message ids of the same errors.
enum lMXScenarioError : std::int32_t {
  lMXScenarioError_ScenarioAlreadyExist = 1700,
  lMXScenarioError_ScenarioRequired = 1701,
  lMXScenarioError_ContainElement = 1702,
};

// The kind of a variable. Published for clients; in memory and in the registry the kind is the text "V" or
// "C".
enum MXVariableType : std::int32_t {
  MXVariableType_Constant = 0,
  MXVariableType_Variable = 1,
};

// The data type of a variable. There is no 5.
enum MXVariableDataType : std::int16_t {
  MXVariableDataType_Alpha = 0,
  MXVariableDataType_Num = 1,
  MXVariableDataType_Boolean = 2,
  MXVariableDataType_Password = 3,
  MXVariableDataType_Date = 4,
  MXVariableDataType_Real = 6,
};

// The run state of a task.
enum MXTraitementState : std::int16_t {
  MXTraitementState_NotProcessed = 0,
  MXTraitementState_Processing = 1,
  MXTraitementState_Processed = 2,
  MXTraitementState_WithError = 3,
  MXTraitementState_Retry = 4,
};

// The run state of a scenario.
enum MXScenarioState : std::int16_t {
  MXScenarioState_NotProcessed = 0,
  MXScenarioState_Processing = 1,
  MXScenarioState_Pause = 2,
  MXScenarioState_WithError = 3,
};

// What Scenario.Initialize resets.
enum MXScenarioModeInit : std::int16_t {
  MXScenarioModeInit_All = 0,
  MXScenarioModeInit_Scenario = 1,
  MXScenarioModeInit_AfterError = 2,
};

}  // namespace moxel
