"""The configuration store locked, full, read-only or deleted while the telephone runs: the setting keeps its value, the
log says what to do, calls continue, and after the fault the same request succeeds and its setting lasts.
"""

import os
import sqlite3
import unittest

from harness import CONNECTED, Telephone, element

TARGET = "sip:900@127.0.0.1"


class StoreFaults(unittest.TestCase):
    def start(self, prefix=()):
        # A relative path: the folder is made with the telephone, after this configuration is written.
        telephone = Telephone("[[line]]\nid = \"4711\"\n[store]\npath = \"store.db\"\n", prefix=prefix, in_folder=True)
        self.addCleanup(telephone.__exit__, None, None, None)
        return telephone, telephone.application()

    def set(self, application, target):
        application.ask("setForwardingConfiguration", Line=4711, fwType=3, status=1, uri=target, cfnrRingCount=3,
                        forceQORAUpdate=1)

    def target(self, application):
        return element(application.ask("getForwardingConfiguration", fwType=3), "uri")

    def require_kept(self, telephone, application, reason):
        """A setting that cannot be stored keeps its value, and the log says why."""
        self.set(application, "sip:lost@127.0.0.1")
        self.assertEqual(self.target(application), TARGET)
        telephone.wait_log(reason)
        call = 100 + len(application.events)
        application.call(4711, call, "100")
        application.wait_state(call, CONNECTED)
        application.clear(4711, call)

    def require_works(self, application):
        self.set(application, "sip:new@127.0.0.1")
        self.assertEqual(self.target(application), "sip:new@127.0.0.1")

    def test_locked_by_another_program(self):
        telephone, application = self.start()
        self.set(application, TARGET)
        other = sqlite3.connect(telephone.path / "store.db", isolation_level=None)
        other.execute("BEGIN IMMEDIATE")

        self.require_kept(telephone, application, "is locked by another program")

        other.execute("ROLLBACK")
        other.close()
        self.require_works(application)

    def test_full_disk(self):
        # A small disk that only this telephone sees.
        def small_disk(folder):
            user = [] if os.geteuid() == 0 else ["--map-root-user"]
            script = f"mkdir {folder}/disk && mount -t tmpfs -o size=256k none {folder}/disk && exec \"$@\""
            return ["unshare", *user, "--mount", "sh", "-c", script, "sh"]

        telephone = Telephone("[[line]]\nid = \"4711\"\n[store]\npath = \"disk/store.db\"\n", prefix=small_disk,
                              in_folder=True)
        self.addCleanup(telephone.__exit__, None, None, None)
        application = telephone.application()
        self.set(application, TARGET)
        filler = f"/proc/{telephone.pid()}/root{telephone.path}/disk/filler"
        with open(filler, "wb", buffering=0) as file:
            with self.assertRaises(OSError):
                while True:
                    file.write(b"x" * 1024)

        # The last page of the write-ahead log may still hold a few values.
        for _ in range(100):
            self.set(application, "sip:" + "y" * 200 + "@127.0.0.1")
            if "is full" in telephone.text():
                break
        kept = self.target(application)
        self.set(application, "sip:" + "z" * 200 + "@127.0.0.1")
        self.assertEqual(self.target(application), kept)
        telephone.wait_log("is full: make room on its disk")

        os.unlink(filler)
        self.require_works(application)

    def test_read_only_file(self):
        telephone, application = self.start()
        self.set(application, TARGET)
        (telephone.path / "store.db").chmod(0o444)

        self.require_kept(telephone, application, "is read-only: give this user the right to write it")

        (telephone.path / "store.db").chmod(0o600)
        self.require_works(application)

    def test_deleted_file(self):
        telephone, application = self.start()
        self.set(application, TARGET)
        (telephone.path / "store.db").unlink()

        self.require_kept(telephone, application, "was removed or replaced while the telephone was running")
        self.assertFalse((telephone.path / "store.db").exists())

    def test_setting_survives_the_end_of_the_process(self):
        telephone, application = self.start()
        self.set(application, TARGET)
        telephone.process.kill()
        telephone.process.wait()
        value = sqlite3.connect(telephone.path / "store.db").execute(
            "SELECT value FROM setting WHERE name = 'cfb-address'").fetchone()
        self.assertEqual(value, (TARGET,))


if __name__ == "__main__":
    unittest.main()
