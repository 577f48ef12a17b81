# Printed by "python -m moxel.stubs": type checkers read it in the place of the package.
import datetime
import enum
from typing import Any, Generic, Iterator, Optional, TypeVar, Union

import moxel

_T = TypeVar("_T")

class _Null: ...

NULL: _Null

class Error(Exception):
    number: int
    source: str
    description: str
    def __init__(self, number: int, source: str = "", description: str = "") -> None: ...

class NotFound(Error, KeyError, IndexError): ...

class Object:
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...

Value = Union[None, _Null, bool, int, float, str, datetime.date, Object]

class KeyedCollection(Object, Generic[_T]):
    def __getitem__(self, index: Union[str, int]) -> _T: ...
    def __iter__(self) -> Iterator[_T]: ...
    def __len__(self) -> int: ...
    def __contains__(self, wanted: object) -> bool: ...

# A property that can be given no object, though it always answers one.
class _Replaceable(Generic[_T]):
    def __get__(self, owner: Any, kind: Any = None) -> _T: ...
    def __set__(self, owner: Any, value: Optional[_T]) -> None: ...

class MXUserError(enum.IntEnum):
    """Error numbers of users."""
    BadPassword = -2147220504
    EnterNewPassword = -2147220503
    ConfPassword = -2147220502
    BadPermission = -2147220501
    UserAlreadyExist = -2147220500
    UserRequired = -2147220499

class lMXUserError(enum.IntEnum):
    """Message ids of the errors of users."""
    BadPassword = 1000
    EnterNewPassword = 1001
    ConfPassword = 1002
    BadPermission = 1003
    UserAlreadyExist = 1004
    UserRequired = 1005

class MXVariableError(enum.IntEnum):
    """Error numbers of variables."""
    BadVarType = -2147220004
    BadDataType = -2147220003
    IllegalValue = -2147220002
    VariableAlreadyExist = -2147220001
    VariableRequired = -2147220000
    InitValueRequired = -2147219999
    IllegalInitValue = -2147219998
    InitializationFail = -2147219997

class lMXVariableError(enum.IntEnum):
    """Message ids of the errors of variables."""
    BadVarType = 1500
    BadDataType = 1501
    IllegalValue = 1502
    VariableAlreadyExist = 1503
    VariableRequired = 1504
    InitValueRequired = 1505
    IllegalInitValue = 1506
    InitializationFail = 1507

class MXDomainError(enum.IntEnum):
    """Error numbers of domains."""
    DomainAlreadyExist = -2147219904
    DomainRequired = -2147219903
    ContainElement = -2147219902

class lMXDomainError(enum.IntEnum):
    """Message ids of the errors of domains."""
    DomainAlreadyExist = 1600
    DomainRequired = 1601
    ContainElement = 1602

class MXScenarioError(enum.IntEnum):
    """Error numbers of scenarios. Only ContainElement is ever raised."""
    ScenarioAlreadyExist = -2147219804
    ScenarioRequired = -2147219803
    ContainElement = -2147219802

class lMXScenarioError(enum.IntEnum):
    """Message ids of the errors of scenarios."""
    ScenarioAlreadyExist = 1700
    ScenarioRequired = 1701
    ContainElement = 1702

class MXVariableType(enum.IntEnum):
    """The kind of a variable, published for clients; members take and give the text "V" or "C"."""
    Constant = 0
    Variable = 1

class MXVariableDataType(enum.IntEnum):
    """The data type of a variable. There is no 5."""
    Alpha = 0
    Num = 1
    Boolean = 2
    Password = 3
    Date = 4
    Real = 6

class MXTraitementState(enum.IntEnum):
    """The run state of a task."""
    NotProcessed = 0
    Processing = 1
    Processed = 2
    WithError = 3
    Retry = 4

class MXScenarioState(enum.IntEnum):
    """The run state of a scenario."""
    NotProcessed = 0
    Processing = 1
    Pause = 2
    WithError = 3

class MXScenarioModeInit(enum.IntEnum):
    """What Scenario.Initialize resets."""
    All = 0
    Scenario = 1
    AfterError = 2

class Root(Object):
    """The entry to all users, all domains and the scenarios of no known domain, each loaded at its first
    reading."""
    Utilisateurs: _Replaceable[moxel.Utilisateurs]
    """All users. Put no object to load them afresh at the next reading."""
    Scenarios: _Replaceable[moxel.Scenarios]
    """The scenarios that name no known domain. Put no object to load them afresh."""
    Domaines: _Replaceable[moxel.Domaines]
    """All domains. Put no object to load them afresh."""

class RootVar(Object):
    """Finds one variable without loading anything else."""
    def RecupVariable(self, wDom: moxel.Value, wScen: moxel.Value, wVar: moxel.Value) -> moxel.Variable:
        """The variable wVar of the domain wDom or, when that is empty, of the scenario wScen; no object when
        there is none."""

class Domaines(KeyedCollection[moxel.Domaine]):
    """All domains: those loaded in the order of their names, then those added."""
    def Add(self, wDomaine: Optional[moxel.Domaine]) -> None:
        """Appends a domain in memory, under its key."""
    def DeleteDomain(self, wDomaine: Optional[moxel.Domaine], wForce: int) -> int:
        """Deletes a domain from the configuration; with wForce also its variables and scenarios, without
        which it must be empty. A domain that could not be deleted leaves the collection, one that was deleted
        stays in it."""
    def NewDomain(self, wDom: str, wComment: moxel.Value) -> moxel.Domaine:
        """Creates a domain with a comment, in the configuration and here."""
    def Item(self, vntIndexKey: moxel.Value) -> moxel.Domaine:
        """The element at a position, counted from 1, or under a key."""
    @property
    def Count(self) -> int:
        """Number of elements."""
    def Remove(self, vntIndexKey: moxel.Value) -> None:
        """Removes a domain from memory only."""

class Domaine(Object):
    """A group of scenarios with variables of its own."""
    key: str
    """Name of the domain. Putting it changes nothing in the configuration."""
    def Initialize(self, wWithOutDomVar: int, wWithOutScenVar: int) -> int:
        """Resets the domain and the run states of its scenarios; exactly 1 for a flag gives the variables of
        the domain, or those of its scenarios, their initial values."""
    @property
    def Comment(self) -> Any:
        """Comment on the domain."""
    def Update(self, wComment: moxel.Value) -> int:
        """Writes a new comment."""
    Variables: _Replaceable[moxel.Variables]
    """Variables of the domain. Put no object to load them afresh."""
    Scenarios: _Replaceable[moxel.Scenarios]
    """Scenarios of the domain. Put no object to load them afresh."""

class Scenarios(KeyedCollection[moxel.Scenario]):
    """The scenarios of one domain, or those of no known domain."""
    def DeleteScenario(self, wScenario: Optional[moxel.Scenario], wForce: int) -> int:
        """Deletes a scenario from the configuration; without wForce it must have no variables and no tasks.
        One that could not be deleted leaves the collection, one that was deleted stays in it."""
    def Item(self, vntIndexKey: moxel.Value) -> moxel.Scenario:
        """The element at a position, counted from 1, or under a key."""
    @property
    def Count(self) -> int:
        """Number of elements."""

class Scenario(Object):
    """A set of tasks in an order, with users and variables of its own."""
    key: str
    """Name of the scenario. Putting it changes nothing in the configuration."""
    def Initialize(self, wMode: int, wWithOutVar: int) -> int:
        """Resets the run state: wMode says of what (MXScenarioModeInit); exactly 1 for wWithOutVar gives the
        variables their initial values."""
    @property
    def Mode(self) -> int:
        """Processing mode, as stored."""
    @property
    def Directory(self) -> Any:
        """Directory, as stored."""
    @property
    def UseSocket(self) -> int:
        """Whether the scenario is driven through a socket."""
    @property
    def Port(self) -> Any:
        """Number of the socket, read at every call."""
    @property
    def State(self) -> int:
        """Run state (MXScenarioState), read at every call."""
    @property
    def Hwnd(self) -> int:
        """Window of the running scenario, read at every call."""
    @property
    def LastExe(self) -> Any:
        """Date of the last run, as stored."""
    Variables: _Replaceable[moxel.Variables]
    """Variables of the scenario. Put no object to load them afresh."""
    Traitements: _Replaceable[moxel.Traitements]
    """Tasks of the scenario. Put no object to load them afresh."""
    TraitementsSelected: _Replaceable[moxel.Collection]
    """Names of the tasks in the order of their run. Put no object to load them afresh."""
    Utilisateurs: _Replaceable[moxel.Utilisateurs]
    """Users admitted to the scenario. Put no object to load them afresh."""

class Traitements(KeyedCollection[moxel.Traitement]):
    """The tasks of one scenario."""
    def Item(self, vntIndexKey: moxel.Value) -> moxel.Traitement:
        """The element at a position, counted from 1, or under a key."""
    def DeleteTraitement(self, wTraitement: Optional[moxel.Traitement], wScenarioName: str) -> int:
        """Deletes a task of the scenario wScenarioName from the configuration and from here."""
    @property
    def Count(self) -> int:
        """Number of elements."""

class Traitement(Object):
    """One task of a scenario."""
    key: str
    """Name of the task. Putting it changes nothing in the configuration."""
    def Initialize(self, wScenarioName: moxel.Value, wState: int) -> int:
        """Writes the run state of the task in the scenario wScenarioName: 0 not processed, 2 processed or 4
        retry; any other wState writes nothing."""
    @property
    def TypeTask(self) -> int:
        """Type code, as stored."""
    @property
    def State(self) -> int:
        """Run state (MXTraitementState), read at every call."""
    Selected: int
    """Mark of the task, kept in memory only."""
    @property
    def LastExe(self) -> Any:
        """Date of the last run, as stored."""
    @property
    def StatusAct(self) -> Any:
        """Statuses of the actions OnErr, OnDec, ExeIf and Goto in one text, a blank for none."""
    @property
    def Source(self) -> Any:
        """Name of the scenario that the task belongs to."""

class Utilisateurs(KeyedCollection[moxel.User]):
    """All users, or those admitted to one scenario."""
    def NewUser(
        self,
        wUser: str,
        wPassword: moxel.Value,
        wPwdConf: moxel.Value,
        wPermission: int,
    ) -> moxel.User:
        """Creates a user with a permission and a password given twice, in the configuration and here."""
    def DeleteUser(self, wUser: Optional[moxel.User]) -> int:
        """Deletes a user from the configuration, also out of the scenarios. The result is false whatever was
        deleted."""
    def Add(self, wUser: Optional[moxel.User]) -> None:
        """Appends a user in memory, under its key."""
    def Item(self, vntIndexKey: moxel.Value) -> moxel.User:
        """The element at a position, counted from 1, or under a key."""
    @property
    def Count(self) -> int:
        """Number of elements."""
    def Remove(self, vntIndexKey: moxel.Value) -> None:
        """Removes a user from memory only."""

class User(Object):
    """An account with a permission and a scrambled password."""
    key: str
    """Clef et nom de l'utilisateur"""
    def Check(self, wPassword: moxel.Value) -> int:
        """Verification du Password"""
    def Update(
        self,
        wPermission: int,
        wOldPwd: moxel.Value = None,
        wNewPwd: moxel.Value = None,
        wConfPwd: moxel.Value = None,
    ) -> int:
        """Modification d'un Utilisateur."""
    Permission: int
    """Définit ou renvoie la permission de l'utilisateur."""
    @property
    def Password(self) -> Any: ...
    PasswordCrypted: Any
    @property
    def PasswordDecrypted(self) -> Any:
        """Renvoie le mot de passe décrypté."""

class Variables(KeyedCollection[moxel.Variable]):
    """The variables of one domain or scenario."""
    def NewVariable(
        self,
        wVar: str,
        wVarType: moxel.Value,
        wDataType: int,
        wValue: moxel.Value,
        wInit: moxel.Value,
        wObj: Optional[moxel.Object],
    ) -> moxel.Variable:
        """Creates a variable of the owner wObj, in the configuration and here."""
    def Add(self, wVar: Optional[moxel.Variable]) -> None:
        """Appends a variable in memory, under its key."""
    def Item(self, vntIndexKey: moxel.Value) -> moxel.Variable:
        """The element at a position, counted from 1, or under a key."""
    @property
    def Count(self) -> int:
        """Number of elements."""
    def Remove(self, vntIndexKey: moxel.Value) -> None:
        """Removes a variable from memory only."""
    def DeleteVariable(self, wVariable: Optional[moxel.Variable], wObj: Optional[moxel.Object]) -> int:
        """Deletes a variable of the owner wObj from the configuration."""

class Variable(Object):
    """One typed value of a domain or a scenario, with an initial value."""
    key: str
    """Name of the variable. Putting it changes nothing in the configuration."""
    def Duplicate(self, wVarName: moxel.Value, wObj: Optional[moxel.Object]) -> int:
        """Writes the variable once more, under the name wVarName, for the owner wObj."""
    def Update(
        self,
        wVarType: moxel.Value,
        wDataType: int,
        wValue: moxel.Value,
        wInit: moxel.Value,
        wObj: Optional[moxel.Object],
    ) -> int:
        """Changes kind, data type, value and initial value, and writes them for the owner wObj."""
    def Update1(
        self,
        wVarType: moxel.Value,
        wDataType: int,
        wValue: moxel.Value,
        wInit: moxel.Value,
        wObj: Optional[moxel.Object],
        wDomScen: moxel.Value = None,
    ) -> int:
        """The same for the owner that wDomScen names, where it is given."""
    def Initialize(self, wObj: Optional[moxel.Object]) -> int:
        """Gives a variable, but no constant, its initial value, and writes it for the owner wObj."""
    def Initialize1(self, wKey: moxel.Value) -> int:
        """The same for the owner at the registry path wKey, such as Domain\\Sales."""
    @property
    def VarType(self) -> Any:
        """Kind: "V" a variable, "C" a constant."""
    @property
    def Value(self) -> Any:
        """Value."""
    @property
    def Init(self) -> Any:
        """Initial value."""
    @property
    def DataType(self) -> int:
        """Data type (MXVariableDataType)."""

class Collection(KeyedCollection[Any]):
    """Values in the order added, each addressable by position or by key."""
    def Item(self, Index: moxel.Value) -> Any:
        """The value at a position, counted from 1, or under a key."""
    def Add(self, Item: moxel.Value, Key: moxel.Value = None) -> None:
        """Appends a value, under a key where one is given."""
    @property
    def Count(self) -> int:
        """Number of values."""
    def Remove(self, Index: moxel.Value) -> None:
        """Removes the value at a position or under a key."""
