#!/usr/bin/env python3
"""Debian packages of the ordinary build: what they say and contain, and installed and removed in a root of their own."""

import os
import re
import shutil
import subprocess
import tempfile
import textwrap
import unittest
from pathlib import Path

import installation
from installation import BUILD, PARTS, VERSION, run

MAJOR = VERSION.split(".", maxsplit=1)[0]
NAMES = {"runtime": f"libcommunications-service{MAJOR}", "development": "libcommunications-service-dev",
         "telephone": "telephone", "python": "python3-telephone-client"}
EPOCH = "1700000000"
# What dpkg and the loader keep for themselves.
KEPT = re.compile(r"(var/lib/dpkg|var/lib/man-db|var/log|var/cache|etc/ld\.so\.cache|home|packages)(/|$)")


def make_packages(folder, *parts):
    """Packs the build. Returns the packages by component."""
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-G", "DEB", "-B", folder,
        "-D", f"CPACK_COMPONENTS_ALL={';'.join(parts)}",
        env={**os.environ, "SOURCE_DATE_EPOCH": EPOCH, "LC_ALL": "C.UTF-8"})
    return {part: next(Path(folder).glob(f"{NAMES[part]}_*.deb")) for part in parts}


def field(package, name):
    """A field of a package's control file."""
    return run("dpkg-deb", "--field", package, name).strip()


class Debian(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="debian-")))
        cls.packages = make_packages(cls.folder / "made", *PARTS)

    def contents(self, part):
        """The files of a package, without folders, relative to /usr."""
        root = self.folder / part
        run("dpkg-deb", "--extract", self.packages[part], root)
        return {re.sub(r"^usr/", "", name) for name in installation.files_below(root)}

    def test_packages_have_the_version_and_their_dependencies(self):
        architecture = run("dpkg", "--print-architecture").strip()
        for part, package in self.packages.items():
            described = "all" if part == "python" else architecture
            self.assertEqual(package.name, f"{NAMES[part]}_{VERSION}-1_{described}.deb")
            self.assertEqual(field(package, "Version"), f"{VERSION}-1")
            self.assertEqual(field(package, "Source"), "communications-service")

        library = f"libcommunications-service{MAJOR} (= {VERSION}-1)"
        self.assertRegex(field(self.packages["runtime"], "Depends"), r"^libc6 \(>= [0-9.]+\), .*libstdc\+\+6 \(")
        self.assertIn(library, field(self.packages["development"], "Depends"))
        self.assertIn(library, field(self.packages["telephone"], "Depends"))
        self.assertIn("libsystemd0", field(self.packages["telephone"], "Depends"))
        self.assertEqual(field(self.packages["python"], "Depends"), "python3 (>= 3.9)")

    def test_packages_contain_the_files_of_their_component(self):
        for part in PARTS:
            documents = f"share/doc/{NAMES[part]}/"
            expected = {name + ".gz" if name.startswith("share/man/") else name for name in installation.expected(part)}
            expected |= {documents + "copyright", documents + "changelog.Debian.gz"}

            self.assertEqual(sorted(self.contents(part)), sorted(expected), part)

    def test_documents_say_what_changed_and_that_there_is_no_licence(self):
        self.contents("telephone")
        documents = self.folder / "telephone/usr/share/doc/telephone"
        changes = run("zcat", documents / "changelog.Debian.gz")

        self.assertIn("The owner has not chosen a licence yet", (documents / "copyright").read_text())
        self.assertTrue(changes.startswith(f"communications-service ({VERSION}-1) unstable; urgency=medium\n\n  * "))
        self.assertTrue(changes.endswith("  Tue, 14 Nov 2023 22:13:20 +0000\n"), changes[-100:])
        self.assertEqual([line for line in changes.splitlines() if line.startswith("  ") and len(line) > 80], [])

    def test_library_tells_other_packages_what_they_need(self):
        control = self.folder / "control"
        run("dpkg-deb", "--control", self.packages["runtime"], control)

        self.assertEqual((control / "shlibs").read_text(),
                         f"libcommunications_service {MAJOR} libcommunications-service{MAJOR} (>= {VERSION})\n")
        self.assertEqual((control / "triggers").read_text(), "activate-noawait ldconfig\n")
        self.assertIn("md5sums", os.listdir(control))
        self.check_symbols(control / "symbols")

    def check_symbols(self, symbols):
        """Compares the list of symbols with the library's."""
        self.contents("runtime")
        described = set(re.findall(r"^ (\S+)@Base ", symbols.read_text(), re.MULTILINE))
        library = self.folder / "runtime/usr" / installation.LIBRARIES / f"libcommunications_service.so.{VERSION}"
        exported = {line.split()[-1] for line in run("nm", "-D", "--defined-only", library).splitlines()}

        self.assertEqual(described, exported)

    def test_same_inputs_make_the_same_packages(self):
        # These two are packed quickly.
        again = make_packages(self.folder / "again", "runtime", "python")

        for part, package in again.items():
            self.assertEqual(package.read_bytes(), self.packages[part].read_bytes(), part)

    def test_packages_come_and_go_without_a_trace(self):
        root = CleanRoot(self.folder / "root", self)
        for package in self.packages.values():
            shutil.copy(package, root.shared)
        library = f"/usr/{installation.LIBRARIES}/libcommunications_service.so.{MAJOR}"

        shown = root.run(f"""
            rm -f /var/lib/man-db/auto-update
            dpkg --force-unsafe-io --install /packages/*.deb >/packages/log 2>&1 || {{ cat /packages/log; exit 1; }}
            telephone --version
            telephone --time virtual tour >/packages/tour
            telephone-check {library} /usr/bin/telephone
            /usr/bin/python3 -c 'import telephone_client; print(telephone_client.__version__)'
            systemd-analyze --user verify --man=no /usr/lib/systemd/user/telephone.service
            systemd-analyze --user verify --man=no /usr/lib/systemd/user/telephone@.service
            dpkg --purge {" ".join(NAMES.values())} >>/packages/log 2>&1 || {{ cat /packages/log; exit 1; }}
            """)

        self.assertEqual(shown, f"telephone {VERSION}\n"
                                f"{library}: version {VERSION}\n"
                                "/usr/bin/telephone: exports all 48 functions that it needs\n"
                                f"{VERSION}\n")
        self.assertIn("4711", (root.shared / "tour").read_text())
        self.assertEqual(root.changed(), [])


class CleanRoot:
    """The system as it is, without the build, in mounts of its own: changes go to a folder in memory that the caller sees."""

    def __init__(self, folder, test):
        self.upper = folder / "upper"
        self.shared = self.upper / "packages"
        self.mounts = f"""
            mount -t overlay root -o lowerdir=/,upperdir={self.upper},workdir={folder}/work {folder}/root
            mount -t proc proc {folder}/root/proc
            mount --rbind /dev {folder}/root/dev
            mount -t tmpfs none {folder}/root{BUILD}
            mount -t tmpfs none {folder}/root/run
            """
        self.folder = folder
        folder.mkdir()
        if os.geteuid() == 0:
            run("mount", "-t", "tmpfs", "none", folder)
            test.addCleanup(run, "umount", folder)
        for name in ("upper/packages", "upper/home", "work", "root"):
            (folder / name).mkdir(parents=True)
        trial = subprocess.run(["unshare", "-m", "sh", "-ec", self.mounts], capture_output=True, text=True, check=False)
        if trial.returncode != 0:
            test.skipTest(f"no root of its own here: {trial.stderr.strip() or 'not the super-user'}")

    def run(self, script):
        """Runs a script inside and returns its output."""
        script = f"set -e\ncd /home\n{textwrap.dedent(script)}"
        environment = installation.clean_environment("/home")
        return run("unshare", "-m", "sh", "-ec", self.mounts + f'exec chroot "{self.folder}/root" sh -c "$0"', script,
                   env={**environment, "DEBIAN_FRONTEND": "noninteractive"})

    def changed(self):
        """Files that differ from those of the system, apart from what dpkg keeps for itself."""
        return sorted(name for name in installation.files_below(self.upper)
                      if not KEPT.match(name) and not self.is_gone(name))

    def is_gone(self, name):
        """Whether a file was made inside and removed again."""
        file = self.upper / name
        return file.is_char_device() and not Path("/", name).exists()


if __name__ == "__main__":
    unittest.main()
