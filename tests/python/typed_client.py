"""A client that uses most of the package: the tests run it, and the type checker reads it."""

import datetime
from typing import Optional

import moxel


def paused(scenarios: moxel.KeyedCollection[moxel.Scenario]) -> list[str]:
    return [scenario.key for scenario in scenarios if scenario.State == moxel.MXScenarioState.Pause]


def find(variables: moxel.Variables, key: str) -> Optional[moxel.Variable]:
    try:
        return variables[key]
    except KeyError:
        return None


def new_variable(owner: moxel.Domaine, key: str, value: moxel.Value) -> int:
    kind: int = moxel.MXVariableDataType.Alpha
    variable = owner.Variables.NewVariable(key, "V", wDataType=kind, wValue=value, wInit="", wObj=owner)
    return variable.Initialize(owner)


def main() -> None:
    root = moxel.Root()
    for domain in root.Domaines:
        print(domain.key, len(domain.Variables), paused(domain.Scenarios))
    sales = root.Domaines["Sales"]
    print(new_variable(sales, "Added", "text"), find(sales.Variables, "missing"))
    scenario: moxel.Scenario = sales.Scenarios[2]
    scenario.Initialize(moxel.MXScenarioModeInit.All, wWithOutVar=1)
    root.Domaines = None
    order: moxel.Collection = scenario.TraitementsSelected
    order.Add(datetime.datetime(2024, 2, 29, 12))
    order.Add(moxel.NULL, Key="nothing")
    user = root.Utilisateurs["alice"]
    user.Permission = 0
    try:
        user.Update(1, wOldPwd="wrong", wNewPwd="new", wConfPwd="new")
    except moxel.Error as error:
        print(error.number == moxel.MXUserError.BadPassword, error.source, error.description)
    variable = moxel.RootVar().RecupVariable("Sales", None, "Region")
    print(variable.Value, variable == root.Domaines["Sales"], order["nothing"])


if __name__ == "__main__":
    main()
