#!/usr/bin/env python3
"""An installation in an empty prefix: what it contains, another project that uses it, and its telephone."""

import contextlib
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import installation
from installation import BUILD, LIBRARIES, PARTS, SOURCE, VERSION, run

CXX = os.environ["CXX"]
CONSUMER = SOURCE / "tests/packages/consumer"


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="installed-")))
        cls.prefix = cls.folder / "prefix"
        installation.install(cls.prefix)
        cls.telephone = cls.prefix / "bin/telephone"
        cls.libraries = cls.prefix / LIBRARIES
        cls.library = cls.libraries / f"libcommunications_service.so.{VERSION}"
        cls.environment = {**os.environ, "PKG_CONFIG_PATH": str(cls.libraries / "pkgconfig")}

    def test_prefix_contains_the_expected_files(self):
        expected = set().union(*(installation.expected(part) for part in PARTS))

        self.assertEqual(sorted(installation.files_below(self.prefix)), sorted(expected))

    def test_staged_installation_has_the_same_files_below_its_folder(self):
        stage = self.folder / "stage"

        installation.install("/opt/telephone", DESTDIR=str(stage))

        self.assertEqual(installation.files_below(stage / "opt/telephone"), installation.files_below(self.prefix))
        self.assertEqual(os.listdir(stage), ["opt"])
        self.assertEqual(os.listdir(stage / "opt"), ["telephone"])

    def flags(self, package):
        """How pkg-config says that a program is made with a package."""
        return run("pkg-config", "--cflags", "--libs", package, env=self.environment).split()

    def expect_both_to_work(self, consumer, library, caller):
        """Runs a program that loads the library, and one that asks a telephone."""
        self.assertEqual(run(consumer, library), f"version {VERSION}, 43 requests\n")
        with self.serving() as socket:
            self.assertEqual(run(caller, socket), "in service\n")

    @contextlib.contextmanager
    def serving(self):
        """An installed telephone for applications: its socket."""
        folder = Path(tempfile.mkdtemp(dir=self.folder))
        with subprocess.Popen([self.telephone, "serve"], env=installation.clean_environment(folder),
                              stdout=subprocess.PIPE, text=True) as telephone:
            try:
                yield re.fullmatch("applications can connect at (.*)\n", telephone.stdout.readline())[1]
            finally:
                telephone.terminate()
                telephone.communicate(timeout=20)

    def test_another_project_finds_the_package_with_cmake(self):
        build = self.folder / "consumer"
        log = run("cmake", "-S", CONSUMER, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                  f"-DCMAKE_CXX_COMPILER={CXX}", "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror")
        run("cmake", "--build", build)

        self.assertIn(f"found version {VERSION}", log)
        self.expect_both_to_work(build / "consumer", self.library, build / "caller")

    def test_a_version_that_is_not_installed_is_not_found(self):
        for wanted in ("2.0", f"{VERSION}.1"):
            project = Path(tempfile.mkdtemp(dir=self.folder))
            (project / "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.25)\nproject(wanted LANGUAGES NONE)\n"
                f"find_package(communications_service {wanted} QUIET)\n"
                'message(STATUS "found: ${communications_service_FOUND}")\n')

            log = run("cmake", "-S", project, "-B", project / "build", "-G", "Ninja",
                      f"-DCMAKE_PREFIX_PATH={self.prefix}")

            self.assertIn("found: 0", log, wanted)

    def test_another_project_finds_the_package_with_pkg_config(self):
        library = run("pkg-config", "--variable=library", "communications-service", env=self.environment).strip()
        consumer, caller = self.folder / "by-pkg-config", self.folder / "caller-by-pkg-config"

        run(CXX, "-std=c++17", "-Werror", CONSUMER / "main.cpp", "-o", consumer, *self.flags("communications-service-kit"))
        run(CXX, "-std=c++17", "-Werror", CONSUMER / "caller.cpp", "-o", caller, *self.flags("telephone-client"))

        self.expect_both_to_work(consumer, library, caller)

    def test_moved_installation_still_works(self):
        moved = self.folder / "moved"
        shutil.copytree(self.prefix, moved, symlinks=True)
        environment = {**os.environ, "PKG_CONFIG_PATH": str(moved / LIBRARIES / "pkgconfig")}

        flags = run("pkg-config", "--cflags", "communications-service", env=environment).split()

        for flag in flags:
            self.assertEqual(Path(flag[2:]).resolve().relative_to(moved.resolve()).parts[:2],
                             ("include", "communications-service"))

    def test_everything_reports_one_version(self):
        tell = run(self.telephone, "--version")
        by_pkg_config = run("pkg-config", "--modversion", "communications-service", "communications-service-kit",
                            "telephone-client", env=self.environment)

        self.assertEqual(tell, f"telephone {VERSION}\n")
        self.assertEqual(by_pkg_config, 3 * f"{VERSION}\n")
        self.assertEqual(os.readlink(self.libraries / f"libcommunications_service.so.{VERSION.split('.', maxsplit=1)[0]}"),
                         f"libcommunications_service.so.{VERSION}")
        for page in ("man1/telephone.1", "man1/telephone-check.1", "man5/telephone.toml.5", "man7/telephone-protocol.7"):
            self.assertIn(f'"telephone {VERSION}"', (self.prefix / "share/man" / page).read_text())

    def test_telephone_plays_the_tour_without_the_build(self):
        environment = installation.clean_environment(self.folder)
        tour = [self.telephone, "--time", "virtual", "tour"]
        if os.geteuid() == 0 and subprocess.run(["unshare", "-m", "true"], check=False).returncode == 0:
            hide = f'mount -t tmpfs none "{BUILD}" && exec "$@"'
            tour = ["unshare", "-m", "sh", "-c", hide, "sh", *tour]
        else:
            print("the build is not hidden from the telephone: that takes root and mounts of one's own")

        shown = run(*tour, env=environment)

        self.assertIn("4711", shown)
        self.assertIn("CallHeldEvent", run(self.telephone, "describe", "HoldCall", env=environment))

    def test_programs_and_libraries_name_no_folder_of_the_build(self):
        for file in (self.telephone, self.library):
            stripped = self.folder / "stripped"
            run("strip", "-o", stripped, file)

            self.assertNotIn(str(SOURCE).encode(), stripped.read_bytes(), file)
            self.assertNotRegex(run("readelf", "-d", stripped), "RPATH|RUNPATH")

    def test_texts_name_no_folder_of_the_build(self):
        for name in installation.files_below(self.prefix):
            if Path(name).suffix in (".cmake", ".pc", ".service", ".md", ".toml", ".h", ".1", ".5", ".7", ""):
                file = self.prefix / name
                content = file.read_bytes()
                if not content.startswith(b"\x7fELF"):
                    self.assertNotIn(str(SOURCE).encode(), content, name)


if __name__ == "__main__":
    unittest.main()
