"""docs/clients.md: the C++ programs on it are compiled and run as a reader does it, and print what the page shows."""

import os
import re
import signal
import subprocess
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
BUILD = Path(os.environ["PYTHONPATH"].split(os.pathsep)[0]).parents[1]
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)


def test_the_programs_print_what_the_page_shows(tmp_path):
    page = (PROJECT / "docs/clients.md").read_text(encoding="utf-8")
    environment = {**os.environ, "XDG_RUNTIME_DIR": str(tmp_path)}
    telephone = subprocess.Popen([os.environ["TELEPHONE"], "--log-level", "0", "serve"], env=environment, text=True,
                                 stdout=subprocess.PIPE)
    ran = []
    try:
        assert telephone.stdout.readline().startswith("applications can connect at ")
        for language, text in BLOCK.findall(page[page.index("\n## C++\n"):]):
            if language == "cpp" and text.startswith("// "):
                (tmp_path / text.partition("\n")[0].removeprefix("// ")).write_text(text)
            elif text.startswith("$ c++ "):
                compiler, program, *shown = text.splitlines()
                command = compiler.removeprefix("$ ").replace("build/dev", str(BUILD))
                subprocess.run(command, shell=True, cwd=tmp_path, check=True)
                done = subprocess.run([program.removeprefix("$ ")], cwd=tmp_path, env=environment, text=True,
                                      capture_output=True, timeout=30)
                assert (done.stdout.splitlines(), done.stderr) == (shown, "")
                ran.append(program)
    finally:
        telephone.send_signal(signal.SIGTERM)
        assert telephone.wait() == 0
    assert ran == ["$ ./call", "$ ./loop"]
