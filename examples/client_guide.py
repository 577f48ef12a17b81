"""What docs/clients.md shows of the Python client, as one program. It changes what examples/configuration.reg
holds, so run it on a copy; examples/client_guide.cpp does and prints the same."""

from datetime import datetime

import moxel
from moxel import MXDomainError, MXScenarioModeInit, MXTraitementState, MXVariableDataType


def walk(root):
    for domain in root.Domaines:
        print(f"{domain.key}: {domain.Comment}")
        for scenario in domain.Scenarios:
            print(f"  {scenario.key}, state {scenario.State}")


def find(root):
    domains = root.Domaines
    sales = domains["sales"]  # by key, letter case ignored
    if sales == domains[len(domains)]:  # by position, from 1
        print("It is last")
    if "Nowhere" not in domains:
        print("No Nowhere")


def read_at_run_time():
    variables = moxel.RootVar()
    region = variables.RecupVariable("Sales", None, "Region")  # of a domain
    if region is not None:  # None: there is no such variable
        print(region.Value)
    print(variables.RecupVariable(None, "Night", "Attempts").Value + 1)


def reset(sales):
    night = sales.Scenarios["Night"]
    night.Initialize(MXScenarioModeInit.AfterError, 0)  # what failed is to be tried again
    for name in night.TraitementsSelected:
        print(name, night.Traitements[name].State)
    night.Traitements["Extract"].Initialize("Night", MXTraitementState.Retry)  # one task
    sales.Initialize(1, 1)  # everything, with the variables of the domain and of its scenarios


def create_update_delete(root):
    domains = root.Domaines
    archive = domains.NewDomain("Archive", "What is finished")
    archive.Update("Kept for ten years")
    variables = archive.Variables
    copies = variables.NewVariable("Copies", "V", MXVariableDataType.Num, 3, 1, archive)
    copies.Update("V", MXVariableDataType.Num, 5, 1, archive)
    copies.Duplicate("Spare", archive)
    print(len(variables))  # 1: no collection follows a copy
    variables.DeleteVariable(copies, archive)  # from the registry
    variables.Remove("Copies")  # from the collection
    domains.DeleteDomain(archive, 1)  # with all in it
    domains.Remove("Archive")


def change_date(sales):
    run_date = sales.Variables["RunDate"]
    moment = datetime(2024, 12, 31, 23, 59, 59).isoformat(" ", "milliseconds")
    run_date.Update("V", MXVariableDataType.Date, moment, run_date.Init, sales)
    print(run_date.Value)


def load_afresh(root):
    root.Domaines = None
    print(len(root.Domaines["Sales"].Variables))


def refused(root):
    try:
        root.Domaines.DeleteDomain(root.Domaines["Sales"], 0)
    except moxel.Error as error:
        if error.number != MXDomainError.ContainElement:
            raise
        print(f"{error.source}: {error.description}")


def call_by_name(root):
    for domain in root.domaines:  # every call is one: in any letter case
        domain.INITIALIZE(1, 0)
        print(domain.KEY)
    root.domaines = None


root = moxel.Root()
walk(root)
find(root)
read_at_run_time()
reset(root.Domaines["Sales"])
create_update_delete(root)
change_date(root.Domaines["Sales"])
load_afresh(root)
refused(root)
call_by_name(root)
