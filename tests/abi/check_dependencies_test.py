#!/usr/bin/env python3
"""Runs check_dependencies.py on small made-up telephones, each with one fault, and on one without."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).with_name("check_dependencies.py")

TABLE = """# Architecture

| Folder | What it is | May use |
|---|---|---|
| `telephone` | the whole | `keys`, `lines` |
| `keys` | keys | `lines` |
| `lines`, `lamps` | lines and lamps | `sip` |
| `sip` | the stack | nothing of ours |
| `base` | small things | nothing |

More text.
"""

FILES = {
    "docs/architecture.md": TABLE,
    "telephone/Telephone.cpp": '#include "telephone/keys/Keys.h"\n#include "telephone/lines/Lines.h"\n',
    "telephone/keys/Keys.h": '#include <string>\n\n#include "telephone/lines/Lines.h"\n#include "telephone/base/Small.h"\n',
    "telephone/lines/Lines.h": '#include "platform/lines/LineManager.h"\n#include "telephone/sip/Stack.h"\n',
    "telephone/lines/Lines.cpp": "LineManager* LineManager::Instance()\n{\n    return nullptr;\n}\n",
    "telephone/lamps/Lamps.h": '#include "telephone/lamps/Lamp.h"\n',
    "telephone/sip/Stack.h": "// CSfi::GetInstance() is not used here\n",
    "telephone/base/Small.h": "",
}


class DependenciesTest(unittest.TestCase):
    def run_check(self, check, changes):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in {**FILES, **changes}.items():
                file = pathlib.Path(folder, name)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(text)
            return subprocess.run([sys.executable, SCRIPT, check, folder], capture_output=True, text=True)

    def assert_refused(self, check, changes, message):
        result = self.run_check(check, changes)
        self.assertEqual(1, result.returncode)
        self.assertEqual(message + "\n", result.stderr)

    def assert_table_refused(self, old, new, message):
        self.assertIn(old, TABLE)
        self.assert_refused("includes", {"docs/architecture.md": TABLE.replace(old, new)}, message)

    def test_accepts_a_tree_that_follows_its_table(self):
        for check in ("includes", "singletons"):
            result = self.run_check(check, {})
            self.assertEqual((0, ""), (result.returncode, result.stderr))

    def test_refuses_an_include_that_is_not_listed(self):
        self.assert_refused(
            "includes", {"telephone/keys/Keys.cpp": '#include "telephone/sip/Stack.h"\n'},
            "telephone/keys/Keys.cpp includes telephone/sip/Stack.h, and keys may not use sip")

    def test_refuses_an_include_of_the_code_that_is_wired_at_the_top(self):
        self.assert_refused(
            "includes", {"telephone/sip/Stack.h": '#include "telephone/Telephone.h"\n'},
            "telephone/sip/Stack.h includes telephone/Telephone.h, and sip may not use telephone")

    def test_refuses_an_include_between_folders_of_one_row(self):
        self.assert_refused(
            "includes", {"telephone/lamps/Lamps.h": '#include "telephone/lines/Lines.h"\n'},
            "telephone/lamps/Lamps.h includes telephone/lines/Lines.h, and lamps may not use lines")

    def test_refuses_an_include_of_the_librarys_sources(self):
        self.assert_refused(
            "includes", {"telephone/keys/Keys.cpp": '#include "src/CommunicationsService.h"\n'},
            "telephone/keys/Keys.cpp includes src/CommunicationsService.h, which is not for the telephone")

    def test_refuses_a_folder_without_row(self):
        self.assert_refused("includes", {"telephone/media/Tone.h": ""}, "telephone/media has no row")

    def test_refuses_a_row_without_folder(self):
        self.assert_table_refused("`lamps`", "`lamps`, `media`", "media has a row and no folder")

    def test_refuses_two_rows_of_one_folder(self):
        self.assert_table_refused("| `sip` |", "| `sip`, `sip` |", "sip has two rows")

    def test_refuses_an_arrow_upward(self):
        self.assert_table_refused("| `sip` | the stack | nothing of ours |", "| `sip` | the stack | `keys` |",
                                  "sip may use keys, which is not below it\nsip may use keys and does not")

    def test_refuses_an_entry_that_is_not_used(self):
        self.assert_table_refused("| keys | `lines` |", "| keys | `lines`, `sip` |", "keys may use sip and does not")

    def test_refuses_an_entry_that_is_unknown(self):
        self.assert_table_refused("| keys | `lines` |", "| keys | `lines`, `lions` |",
                                  "keys may use lions, which has no row\nkeys may use lions and does not")

    def test_refuses_a_page_without_table(self):
        self.assert_refused("includes", {"docs/architecture.md": "# Architecture\n"},
                            "docs/architecture.md: there is no table with the columns Folder and May use")

    def test_refuses_the_use_of_a_singleton(self):
        self.assert_refused(
            "singletons", {"telephone/sip/Stack.cpp": "auto* lines = LineManager::Instance();\n"},
            "telephone/sip/Stack.cpp:1: auto* lines = LineManager::Instance();: singletons are for the library alone")


unittest.main()
