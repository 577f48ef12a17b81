"""Every example of the documentation is real: commands run and print what is shown, programs stand in examples/
word for word, links lead somewhere. Takes the build folder as argument."""

import os
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest
from dataclasses import dataclass
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
EXAMPLES = SOURCE / "examples"
PAGES = [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]
PROGRAM_FILES = {"cpp": "*.cpp", "python": "*.py"}
# They build, install or need root; other tests do that.
NOT_RUN = re.compile("scripts/|cmake|apt|dpkg|sudo")
MARK = "-- the end of a block --"


@dataclass
class Block:
    line: int
    language: str
    text: str
    is_output: bool = False  # stands directly behind commands


def blocks_of(page):
    blocks, end = [], 0
    for found in re.finditer(r"^```(.*)\n((?:(?!```).*\n)*)```$", page, re.MULTILINE):
        block = Block(page.count("\n", 0, found.start()) + 1, found[1], found[2])
        behind_commands = blocks and blocks[-1].language == "sh" and not page[end : found.start()].strip()
        block.is_output = bool(behind_commands) and block.language == "text"
        blocks.append(block)
        end = found.end()
    return blocks


def anchors_of(page):
    headings = re.findall(r"^#+ (.*)$", page.read_text("utf-8"), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


class Documentation(unittest.TestCase):
    def setUp(self):
        """A folder that looks like the source tree with a release build; what examples write stays in it."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for name in ("build", "home", "temp"):
            (self.tree / name).mkdir()
        (self.tree / "build" / "release").symlink_to(BUILD)
        for name in ("README.md", "docs", "examples", "include", "python", "scripts"):
            (self.tree / name).symlink_to(SOURCE / name)
        self.environment = {
            **os.environ,
            "HOME": str(self.tree / "home"),
            "TMPDIR": str(self.tree / "temp"),
            "LC_ALL": "C.UTF-8",
            "PYTHONDONTWRITEBYTECODE": "1",
            "MOXEL_LIBRARY": str(BUILD / "lib" / "libmoxel.so"),
        }
        self.environment.pop("MOXEL_REGISTRY", None)

    def run_script(self, script):
        return subprocess.run(
            ["bash", "-eu", "-c", script], cwd=self.tree, env=self.environment, encoding="utf-8",
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        )

    def test_commands_run_and_print_what_is_shown(self):
        for page in PAGES:
            blocks = blocks_of(page.read_text("utf-8"))
            script = "".join(
                "".join(line for line in block.text.splitlines(True) if not NOT_RUN.match(line))
                + f"printf '%s' '{MARK}'\n"
                for block in blocks
                if block.language == "sh"
            )
            with self.subTest(page=page.name):
                before_use = re.split("build/release/bin/|python3 ", script)
                self.assertTrue(len(before_use) == 1 or "export MOXEL_REGISTRY=" in before_use[0], "which file?")
                run = self.run_script(script)
                printed = run.stdout.split(MARK)[:-1]
                for number, block in enumerate(block for block in blocks if block.language == "sh"):
                    where = f"commands of line {block.line}: {run.stderr}"
                    self.assertLess(number, len(printed), where)
                    behind = blocks[blocks.index(block) + 1 :]
                    if behind and behind[0].is_output:
                        self.assertEqual(behind[0].text, printed[number], where)

    def test_programs_stand_in_the_examples(self):
        for page in PAGES:
            for block in blocks_of(page.read_text("utf-8")):
                with self.subTest(page=page.name, line=block.line):
                    self.assertIn(block.language, ("sh", "text", *PROGRAM_FILES))
                    if block.language in PROGRAM_FILES:
                        self.assertTrue(self.stands_in_an_example(block), block.text)

    def stands_in_an_example(self, block):
        wanted, count = textwrap.dedent(block.text), block.text.count("\n")
        for file in EXAMPLES.glob(PROGRAM_FILES[block.language]):
            lines = file.read_text("utf-8").splitlines(True)
            runs = ("".join(lines[i : i + count]) for i in range(len(lines)))
            if any(textwrap.dedent(run) == wanted for run in runs):
                return True
        return False

    def test_links_lead_somewhere(self):
        for page in PAGES:
            text = page.read_text("utf-8")
            self.assertEqual(2 * len(blocks_of(text)), len(re.findall("^```", text, re.MULTILINE)), page.name)
            prose = re.sub(r"^```.*?^```$|`[^`\n]*`", "", text, flags=re.MULTILINE | re.DOTALL)
            for path, anchor in re.findall(r"\]\(([^)\s#]*)#?([^)\s]*)\)", prose):
                with self.subTest(page=page.name, link=f"{path}#{anchor}"):
                    target = (page.parent / path).resolve() if path else page
                    self.assertTrue(target.is_relative_to(SOURCE) and target.exists())
                    self.assertTrue(not anchor or anchor in anchors_of(target))

    def test_example_programs_of_both_languages_do_the_same(self):
        for name in ("first_program", "client_guide"):
            answers = []
            for program in (f"build/release/bin/{name}", f"PYTHONPATH=python python3 examples/{name}.py"):
                run = self.run_script(
                    "export MOXEL_REGISTRY=$(mktemp -d)/registry.db\n"
                    "build/release/bin/moxel registry import examples/configuration.reg > /dev/null\n"
                    f"{program}\nbuild/release/bin/moxel registry export --format regedit4 | iconv -f latin1"
                )
                self.assertEqual((0, ""), (run.returncode, run.stderr), program)
                answers.append(run.stdout)
            self.assertIn("Sales", answers[0])
            self.assertEqual(*answers, name)


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main()
