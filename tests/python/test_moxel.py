"""The Python client against the component, over a registry file of its own for every test."""

import contextlib
import copy
import datetime
import gc
import inspect
import os
import pickle
import shutil
import subprocess
import sys
import tempfile
import unittest
import weakref
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import moxel
from moxel import _layouts, _platform, _types, _values

SOURCE = Path(__file__).resolve().parents[2]
PACKAGE = SOURCE / "python"
TOOL = os.environ.get("MOXEL_TOOL", str(SOURCE / "build" / "release" / "bin" / "moxel"))


def setUpModule():
    global template
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    template = Path(folder.name) / "template.db"
    os.environ["MOXEL_REGISTRY"] = str(template)
    run_tool("registry", "import", str(SOURCE / "examples" / "configuration.reg"))


def run_tool(*arguments):
    subprocess.run([TOOL, *arguments], check=True, stdout=subprocess.DEVNULL)


def run_python(*arguments, **environment):
    result = subprocess.run(
        [sys.executable, *map(str, arguments)],
        env={**os.environ, "PYTHONPATH": str(PACKAGE), "PYTHONIOENCODING": "utf-8", **environment},
        capture_output=True,
        encoding="utf-8",
    )
    return result.returncode, result.stdout, result.stderr


def on_another_thread(body):
    with ThreadPoolExecutor(1) as thread:
        return thread.submit(body).result()


class ClientTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        registry = Path(folder.name) / "registry.db"
        shutil.copy(template, registry)
        os.environ["MOXEL_REGISTRY"] = str(registry)
        self.root = moxel.Root()

    def assert_raises(self, number, source, call, kind=moxel.Error):
        with self.assertRaises(kind) as caught:
            call()
        self.assertEqual((number, source), (caught.exception.number, caught.exception.source))
        self.assertIn(caught.exception.description, str(caught.exception))
        return caught.exception


class Members(ClientTest):
    def test_classes_tell_what_the_type_library_says(self):
        signature = "(self, wPermission: int, wOldPwd: moxel.Value = None, wNewPwd: moxel.Value = None, "
        signature += "wConfPwd: moxel.Value = None) -> int"
        self.assertEqual(signature, str(inspect.signature(moxel.User.Update)))
        bob = self.root.Utilisateurs["bob"]
        self.assertEqual("Modification d'un Utilisateur.", inspect.getdoc(bob.Update))
        self.assertIsInstance(self.root.Domaines["Sales"], moxel.Domaine)
        scenarios = self.root.Scenarios
        shown = [name for name in dir(scenarios) if not name.startswith("_")]
        self.assertEqual(["Count", "DeleteScenario", "Item"], shown)
        scenarios.Remove("Backup")  # hidden
        self.assertNotIn("Backup", scenarios)
        self.assertEqual(6, moxel.MXVariableDataType.Real)
        self.assertIn("MXUserError", dir(moxel))

    def test_names_of_members_and_arguments_in_any_letter_case(self):
        sales = self.root.DOMAINES["sales"]
        self.assertEqual(-1, sales.initialize(WWITHOUTSCENVAR=1, wwithoutdomvar=1))
        self.assertEqual("France", sales.variables["Region"].VALUE)
        alice = self.root.Utilisateurs["alice"]
        alice.permission = 0
        self.assertEqual(0, alice.Permission)
        self.root.domaines = None  # by reference: loaded afresh
        self.assertNotEqual(sales, self.root.Domaines["Sales"])

    def test_what_is_not_there_is_refused(self):
        sales = self.root.Domaines["Sales"]
        for call, error, text in (
            (lambda: sales.Missing, AttributeError, "Domaine has no member 'Missing'"),
            (lambda: setattr(sales, "Missing", 1), AttributeError, "no member 'Missing'"),
            (lambda: setattr(sales, "Comment", "x"), AttributeError, "cannot change 'Comment'"),
            (lambda: setattr(sales, "Initialize", 1), AttributeError, "cannot change 'Initialize'"),
            (lambda: delattr(sales, "key"), AttributeError, "deleted"),
            (lambda: moxel.Missing, AttributeError, "'Missing'"),
            (moxel.Domaine, TypeError, "Domaine objects come from the component"),
            (lambda: sales.Initialize(1), TypeError, "Initialize: missing .*'wWithOutScenVar'"),
            (lambda: sales.Initialize(1, 1, 1), TypeError, "too many"),
            (lambda: sales.Initialize(1, 1, other=1), TypeError, "'other'"),
            (lambda: sales.Initialize(1, wWithOutDomVar=1), TypeError, "'wWithOutDomVar'"),
            (lambda: sales.Initialize(WWITHOUTDOMVAR=1, wWithOutDomVar=1), TypeError, "multiple values"),
            (lambda: sales.Initialize(None, 1), TypeError, "wWithOutDomVar: a value is needed"),
            (lambda: sales.Initialize([1], 1), TypeError, "wWithOutDomVar.*list"),
            (lambda: self.root.Domaines.DeleteDomain("Sales", 1), TypeError, "wDomaine: an object.*str"),
            (lambda: copy.copy(sales), TypeError, "no copy"),
            (lambda: pickle.dumps(sales), TypeError, "no pickle"),
        ):
            with self.subTest(text), self.assertRaisesRegex(error, text):
                call()


class Collections(ClientTest):
    def test_elements_by_key_by_number_and_one_after_the_other(self):
        domains = self.root.Domaines
        self.assertEqual(["Finance", "Logistics", "Sales"], [domain.key for domain in domains])
        self.assertEqual((3, True, False), (len(domains), bool(domains), bool(domains["Finance"].Scenarios)))
        self.assertEqual(domains["SALES"], domains[3])
        self.assertTrue("sales" in domains and domains[1] in domains)
        self.assertFalse("none" in domains or self.root in domains)
        walk = iter(domains)
        first = next(walk)
        domains.Remove("Logistics")
        self.assertEqual(["Sales"], [domain.key for domain in walk])
        domains.Add(first := moxel.Root().Domaines["Logistics"])
        self.assertIsNone(next(walk, None))  # what has ended stays so
        self.assertEqual(first, domains[3])

    def test_what_a_collection_does_not_hold(self):
        domains = self.root.Domaines
        for index, number in (("none", 5), (0, 9), (4, 9), (-1, 9), (2**40, 9)):
            for kind in (moxel.Error, KeyError, IndexError):
                with self.subTest(index=index, kind=kind):
                    self.assert_raises(number, "MOXEL", lambda: domains[index], kind)
        self.assert_raises(13, "MOXEL", lambda: domains[None])
        self.assertRaisesRegex(TypeError, "slice", lambda: domains[1:2])

    def test_objects_are_equal_when_they_are_one(self):
        sales = self.root.Domaines["Sales"]
        _, _, same = self.root.Domaines
        other = moxel.Root().Domaines["Sales"]
        self.assertTrue(sales is not same and sales == same and hash(sales) == hash(same))
        self.assertEqual(2, len({sales, same, other}))
        self.assertFalse(sales == "Sales" or sales == other)


class Values(ClientTest):
    def test_values_come_back_as_they_went(self):
        held = self.root.Scenarios["Backup"].TraitementsSelected  # takes any value
        noon = datetime.datetime(2024, 2, 28, 12)
        for given, expected in (
            *((same, same) for same in (0, -1, 2**31 - 1, -(2**31), 2**31, -(2**31) - 1, 1.5, True, False)),
            *((same, same) for same in ("", "nul\0inside", "é€😀", "lone \ud800", "\udc00 lone")),
            *((same, same) for same in (noon, noon.replace(microsecond=999_999), noon.replace(year=1750))),
            *((same, same) for same in (noon.replace(year=9999, second=59), self.root, None)),
            (noon.date(), noon.replace(hour=0)),
            (moxel.MXScenarioState.Pause, 2),
            (moxel.NULL, None),
            (2**80, float(2**80)),
        ):
            with self.subTest(repr(given)):
                held.Add(given)
                answered = held[len(held)]
                self.assertEqual(expected, answered)
                if not isinstance(given, int):
                    self.assertIs(type(expected), type(answered))

    def test_the_wire_form_of_each_value(self):
        argument = {
            "any": _types.Parameter("p", _types.Type(_layouts.VT.VARIANT), False),
            "optional": _types.Parameter("p", _types.Type(_layouts.VT.VARIANT), True),
            "object": _types.Parameter("p", _types.Type(_layouts.VT.DISPATCH, b""), True),
        }
        for parameter, value, tag, content in (
            ("any", None, 0, 0),
            ("optional", None, 10, 0x80020004),
            ("object", None, 9, 0),
            ("any", moxel.NULL, 1, 0),
            ("any", True, 11, 0xFFFF),
            ("any", 7, 3, 7),
            ("any", 2**31, 20, 2**31),
            ("any", moxel.MXScenarioState.Pause, 3, 2),
        ):
            with self.subTest(parameter=parameter, value=value):
                variant = _layouts.VARIANT()
                _values.store(variant, value, argument[parameter])
                self.assertEqual((tag, content), (variant.vt, variant.ullVal))
        for read, moment, stored in (
            (-1.25, (1899, 12, 29, 6), -1.25),
            (-0.75, (1899, 12, 30, 18), 0.75),
            (1.9999999999999, (1900, 1, 1), 2),
            (45366.354166666664, (2024, 3, 15, 8, 30), 45366.354166666664),
            (-657434.0, (100, 1, 1), -657434),
        ):
            with self.subTest(days=read):
                date, variant = datetime.datetime(*moment), _layouts.VARIANT()
                self.assertEqual(date, _values.take(_layouts.VARIANT(vt=7, dblVal=read)))
                _values.store(variant, date, argument["any"])
                self.assertEqual((7, stored), (variant.vt, variant.dblVal))
        with_zone = datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone.utc)
        for value in (b"bytes", 1j, [], datetime.timedelta(1), with_zone):
            with self.assertRaises(TypeError):
                _values.store(_layouts.VARIANT(), value, argument["any"])

    def test_omitted_arguments_and_variables(self):
        self.assertEqual(-1, self.root.Utilisateurs["alice"].Update(0))
        sales = self.root.Domaines["Sales"]
        kind = moxel.MXVariableDataType.Real
        variable = sales.Variables.NewVariable("New", "V", kind, 2.5, -1, wOBJ=sales)
        self.assertEqual((2.5, -1), (variable.Value, variable.Init))
        self.assertEqual(2.5, moxel.RootVar().RecupVariable("Sales", wScen=None, wVar="New").Value)
        self.assertIsNone(moxel.RootVar().RecupVariable("Sales", None, "none"))


class Errors(ClientTest):
    def test_number_source_and_description(self):
        sales, domains = self.root.Domaines["Sales"], self.root.Domaines
        refused = moxel.MXDomainError.ContainElement
        error = self.assert_raises(refused, "Domaines:DeleteDomain", lambda: domains.DeleteDomain(sales, 0))
        self.assertEqual(error.args, pickle.loads(pickle.dumps(error)).args)
        for result, call, text in (
            (0x80020005, lambda: sales.Initialize("text", 1), "mismatch: Initialize, argument wWithOutDom"),
            (0x8002000A, lambda: sales.Initialize(1, 70000), "Overflow: Initialize, argument wWithOutScen"),
            (0x80020005, lambda: domains.DeleteDomain(self.root, 1), "argument wDomaine"),
            (0x80004003, lambda: domains.DeleteDomain(None, 1), "An object is needed: DeleteDomain"),
        ):
            with self.subTest(text):
                self.assertIn(text, self.assert_raises(result - 2**32, "MOXEL", call).description)

    def test_a_creation_that_fails_is_told_by_the_threads_error_info(self):
        run_tool("registry", "set", "Configuration", "-v", "Lang", "none")
        on_another_thread(lambda: self.assert_raises(13, "MOXEL", moxel.Root))


class Lifetime(ClientTest):
    def test_an_object_is_used_on_its_thread_and_released_on_any(self):
        root = self.root
        with self.assertRaisesRegex(RuntimeError, "another thread"):
            on_another_thread(lambda: root.Domaines)
        with self.assertRaisesRegex(RuntimeError, "another thread"):
            on_another_thread(lambda: moxel.Root().Domaines.DeleteDomain(root, 1))

        def keys(_):
            return [(each.key, len(each.Scenarios)) for _ in range(20) for each in moxel.Root().Domaines]

        with ThreadPoolExecutor(4) as threads:
            answers = list(threads.map(keys, range(4)))
        self.assertEqual([keys(None)] * 4, answers)

        class Cycle:
            def __init__(self):
                self.held = (self, moxel.Root().Domaines, iter(moxel.Root().Domaines))

        gone = weakref.ref(Cycle())
        on_another_thread(gc.collect)
        self.assertIsNone(gone())

    def test_nothing_is_left_and_nothing_leaks(self):
        self.root = None
        gc.collect()
        sizes = []
        for rounds in (1000, 15000):
            root = moxel.Root()
            order = root.Scenarios["Backup"].TraitementsSelected
            for _ in range(rounds):
                self.use(root, order)
            sizes.append(int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGESIZE"))
        self.assertLess(sizes[1] - sizes[0], 400_000)
        self.assertEqual(1, _platform.DllCanUnloadNow())
        del root, order
        self.assertEqual(0, _platform.DllCanUnloadNow())

    def use(self, root, order):
        sales = root.Domaines["Sales"]
        sales.key = sales.key
        order.Add("text", Key="key")
        order.Add(sales)
        self.assertTrue(sales in order and "missing" not in order)
        with contextlib.suppress(moxel.Error):
            sales.Initialize("text", 1)
        order.Remove("key")
        order.Remove(len(order))

    def test_the_interpreters_end_finds_objects_alive(self):
        script = """
import moxel, threading
class Late:
    def __init__(self): self.root, self.cycle = moxel.Root(), self
    def __del__(self): self.root = None
late, walk = Late(), iter(moxel.Root().Domaines)
next(walk)
threading.Thread(target=lambda: (moxel.Root(), threading.Event().wait()), daemon=True).start()
threading.local().held = moxel.Root()
"""
        self.assertEqual((0, "", ""), run_python("-c", script))


class Package(ClientTest):
    def test_a_library_that_cannot_be_loaded(self):
        script = "import moxel\ntry: moxel.Root()\nexcept ImportError as error: print(error)"
        for library, reason in (("/none/libmoxel.so", "cannot open"), ("libc.so.6", "undefined symbol")):
            status, output, errors = run_python("-c", script, MOXEL_LIBRARY=library)
            self.assertEqual((0, ""), (status, errors))
            self.assertRegex(output, f"Tried:\n  {library}: .*{reason}")

    def test_programs(self):
        answer = run_python(SOURCE / "examples" / "first_program.py")
        self.assertEqual((0, "Finance\nLogistics\nSales\n", ""), answer)
        status, output, errors = run_python(SOURCE / "tests" / "python" / "typed_client.py")
        self.assertEqual((0, ""), (status, errors))
        self.assertIn("Logistics 5 ['Stocktaking']\n", output)
        self.assertIn("True User:Update Incorrect password\nFrance False None\n", output)

    def test_stubs_are_those_of_the_type_library(self):
        status, output, errors = run_python("-m", "moxel.stubs")
        self.assertEqual((0, ""), (status, errors))
        checked_in = (PACKAGE / "moxel" / "__init__.pyi").read_text("utf-8")
        self.assertEqual(output, checked_in, "run: python -m moxel.stubs > python/moxel/__init__.pyi")

    @unittest.skipUnless(shutil.which("mypy"), "mypy is not installed")
    def test_the_type_checker_passes_what_is_right_and_nothing_else(self):
        right = SOURCE / "tests" / "python" / "typed_client.py"
        with tempfile.TemporaryDirectory() as folder:
            wrong = Path(folder) / "wrong.py"
            wrong.write_text(
                "import moxel\nroot = moxel.Root()\nroot.Domaines[1].Initialize('', 1)\nroot.Domaines = 1\n"
                "root.Missing\nroot.Domaines.NewDomain([], None)\nroot.Domaines.DeleteDomain(root, 1)\n"
            )
            environment = {**os.environ, "MYPYPATH": str(PACKAGE), "LD_PRELOAD": ""}
            checker = ["mypy", "--strict", "--no-error-summary", "--cache-dir", folder]
            checked = subprocess.run(
                [*checker, str(right), str(wrong)], env=environment, capture_output=True, encoding="utf-8"
            )
        found = [line.split(": error:")[0] for line in checked.stdout.splitlines()]
        self.assertEqual([f"{wrong}:{line}" for line in (3, 4, 5, 6, 7)], found, checked.stdout)


if __name__ == "__main__":
    unittest.main()
