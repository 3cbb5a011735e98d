#!/usr/bin/env python3
"""The telephones of packaging/kubernetes with their registrar and scripts, as processes on this machine.

TELEPHONE names the program, KUBERNETES the folder; KUBECTL, if set, renders the folder as a cluster would get it.
"""
import contextlib
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib
import unittest
import xml.etree.ElementTree as xml

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "faults"))
from harness import TELEPHONE, free_port, until  # noqa: E402

FOLDER = pathlib.Path(os.environ["KUBERNETES"])
BASE = FOLDER / "base"
KUBECTL = os.environ.get("KUBECTL", "")


def configure(file, name, configurations=BASE, **more):
    """Runs configure.sh as the containers do."""
    given = {"NAME": name, "PASSWORD": "secret", "ADDRESS": "127.0.0.1", "REGISTRAR": "sip:registrar", **more}
    subprocess.run(["sh", BASE / "configure.sh", configurations, file], check=True, env={**os.environ, **given})
    return file


class Processes(unittest.TestCase):
    def setUp(self):
        self.ends = contextlib.ExitStack()
        self.addCleanup(self.ends.close)
        self.folder = pathlib.Path(self.ends.enter_context(tempfile.TemporaryDirectory()))
        port = free_port()
        self.registrar = f"sip:127.0.0.1:{port}"
        self.start(["kamailio", "-f", BASE / "kamailio.cfg", "-DD", "-E", "-m", "32", "-M", "8", "-Y", self.folder, "-w",
                    self.folder], SIP_ADDRESS=f"127.0.0.1:{port}", SIP_PASSWORD="secret")

    def start(self, command, **environment):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env={**os.environ, **environment})
        self.ends.callback(process.wait)
        self.ends.callback(process.kill)

    def start_telephone(self, name):
        file = configure(self.folder / f"{name}.toml", name, REGISTRAR=self.registrar)
        place = self.folder / f"{name}.socket"
        self.start([TELEPHONE, "--config", file, "--socket", place, "serve"])
        probe = [TELEPHONE, "--socket", place, "request", "GetServiceState"]
        until(lambda: subprocess.run(probe, capture_output=True, check=False).returncode == 0, 20, "not ready")

    def play(self):
        """The exit status of the scripts, and the names of those that failed, in their JUnit file."""
        file = configure(self.folder / "scripts.toml", "scripts", NUMBER="999", REGISTRAR=self.registrar)
        results = self.folder / "results.xml"
        status = subprocess.run([TELEPHONE, "--config", file, "test", BASE / "scripts", "--jobs", "1", "--junit", results,
                                 "--files", self.folder / "failed"], stdout=subprocess.DEVNULL, check=False).returncode
        suites = xml.parse(results).findall("testsuite")
        self.assertEqual(len(suites), 2)
        return status, [pathlib.Path(suite.get("name")).name for suite in suites if suite.find(".//failure") is not None]

    def test_scripts_reach_a_telephone_through_the_registrar(self):
        self.start_telephone("telephone-0")

        self.assertEqual(self.play(), (0, []))

    def test_scripts_fail_where_no_telephone_is(self):
        self.assertEqual(self.play(), (1, ["call.script"]))


class Configuration(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def configured(self, name, **more):
        with open(configure(self.folder / "written.toml", name, **more), "rb") as file:
            return tomllib.load(file)

    def test_number_is_that_of_the_telephone_plus_1000(self):
        self.assertEqual(self.configured("telephone-37")["line"][0]["id"], "1037")

    def test_password_of_any_characters_arrives_as_it_is(self):
        password = 'a|b&c\\d"e/f$g`h i'

        self.assertEqual(self.configured("telephone-0", PASSWORD=password)["line"][0]["password"], password)

    def test_telephone_with_a_configuration_of_its_own_gets_it(self):
        own = self.folder / "telephone-3.toml"
        own.write_text('[[line]]\nid = "4711"\npassword = "@PASSWORD@"\n', encoding="utf-8")

        self.assertEqual(self.configured("telephone-3", configurations=self.folder),
                         {"line": [{"id": "4711", "password": "secret"}]})

    def test_file_is_for_its_owner_alone(self):
        self.configured("telephone-0")

        self.assertEqual((self.folder / "written.toml").stat().st_mode & 0o777, 0o600)


@unittest.skipUnless(KUBECTL, "kubectl is not installed")
class Rendered(unittest.TestCase):
    def rendered(self, folder):
        return subprocess.run([KUBECTL, "kustomize", FOLDER / folder], capture_output=True, text=True, check=True).stdout

    def test_base_has_three_telephones_and_what_they_need(self):
        text = self.rendered("base")

        self.assertEqual(re.findall(r"(?m)^kind: (\w+)$", text),
                         ["ConfigMap"] * 3 + ["Secret"] + ["Service"] * 2 + ["Deployment", "StatefulSet", "Job"])
        self.assertIn("\n  replicas: 3\n", text)
        for file in ("configure.sh", "telephone.toml", "call.script", "wrong-number.script", "kamailio.cfg"):
            self.assertIn(f"\n  {file}: |\n", text)

    def test_thousand_has_a_thousand(self):
        self.assertIn("\n  replicas: 1000\n", self.rendered("thousand"))


if __name__ == "__main__":
    unittest.main()
