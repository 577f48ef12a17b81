// The objects of the model described as JSON: what --json prints and what tables are made of. The password of
// a user and the values of a password variable are masked, but where a function says so.
#pragma once

#include "moxel/object_model.h"
#include "moxel/output.h"

namespace moxel::tool {

// Failed, done and running stand out.
Style StyleOfState(const std::string& state);

// Columns for what is described below.
inline const std::vector<Column> kVariableColumns = {{"NAME", "name"},
                                                     {"KIND", "kind"},
                                                     {"TYPE", "dataType"},
                                                     {"VALUE", "value"},
                                                     {"INITIAL VALUE", "initialValue"}};
inline const Column kStateColumn = {"STATE", "state", StyleOfState};
inline const std::vector<Column> kTaskColumns = {{"NO", "position"},     {"NAME", "name"},
                                                 kStateColumn,           {"TYPE", "type"},
                                                 {"ACTIONS", "actions"}, {"LAST RUN", "lastRun"}};
inline const std::vector<Column> kSummaryColumns = {{"NAME", "name"}, kStateColumn, {"MODE", "mode"}};

Json DescribeUser(const Object& user);

// The key that holds the variables of an owner.
KeyPath VariablesKeyOf(const char* owners, const std::string& owner);

// The number of a data type by its name, and the reverse; unknown numbers name themselves.
std::int16_t DataTypeOf(const std::string& name);
std::string DataTypeName(std::int16_t data_type);

// The component does not hand out the initial value of a real constant: it answers whatever the variable
// loaded before it left, which may be a password. Here it comes from the registry, null when it is missing.
bool HandsOutInitialValue(const Object& variable);
Variant InitialValueOf(const Object& variable, const KeyPath& variables);

// A password in clear.
Json DescribeVariable(const Object& variable, const KeyPath& variables);
Json DescribeVariables(const Object& owner, const KeyPath& variables);

// The tasks of a scenario: first those in its order, where one that does not exist is "missing", then those
// that take no place in it.
Json DescribeTasks(const Object& scenario);

// Name, domain, live state and mode.
Json SummarizeScenario(const PlacedScenario& placed);
Json DescribeScenario(const PlacedScenario& placed);

Json DescribeDomain(const ObjectModel& model, const Object& domain);

}  // namespace moxel::tool
