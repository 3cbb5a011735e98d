"""docs/clients.md: each program on it is run as a reader runs it, and prints what the page shows."""

import os
import re
import signal
import subprocess
from pathlib import Path

import pytest

PROJECT = Path(__file__).resolve().parents[3]
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
PACKAGE = os.environ["PYTHONPATH"].split(os.pathsep)[0]


def blocks(heading):
    """The blocks of a section, with their language."""
    page = (PROJECT / "docs/clients.md").read_text(encoding="utf-8")
    section = re.search(rf"^## {heading}\n(.*?)(?=^## |\Z)", page, re.M | re.S)
    return BLOCK.findall(section[1])


def shown(text):
    """A pattern for what a terminal shows; "..." stands for anything."""
    return re.compile(".*".join(re.escape(part) for part in text.split("...")), re.S)


@pytest.fixture
def reader(tmp_path):
    """A reader's folder, with the page's files in it, and shell."""
    environment = {**os.environ, "XDG_RUNTIME_DIR": str(tmp_path), "PATH": f"/usr/bin:{os.environ['PATH']}"}

    def run(command):
        return subprocess.run(["sh", "-c", command], cwd=tmp_path, env=environment, text=True, capture_output=True).stdout

    def serve():
        return subprocess.Popen([os.environ["TELEPHONE"], "--log-level", "0", "serve"], env=environment, text=True,
                                stdout=subprocess.PIPE)

    run.serve, run.folder = serve, tmp_path
    return run


def test_the_programs_print_what_the_page_shows(reader):
    telephone, run = None, []
    try:
        for language, text in blocks("Python"):
            first, _, rest = text.partition("\n")
            if language == "python" and first.startswith("# "):
                (reader.folder / first[2:]).write_text(text)
            elif first == "$ scripts/run serve":
                telephone = reader.serve()
                last = rest.removeprefix("...\n").rstrip()  # before it comes the log
                assert shown(last).fullmatch(telephone.stdout.readline().rstrip())
            elif first.startswith("$ python3 "):
                output = reader(first[2:])
                assert shown(rest).fullmatch(output), output
                run.append(first.split()[-1])
    finally:
        if telephone:
            telephone.send_signal(signal.SIGTERM)
            assert telephone.wait() == 0
    assert run == ["call.py", "commands.py", "watch.py"]


def test_the_package_is_where_the_page_says():
    build, *_ = [text for _, text in blocks("Python")]
    assert build == ("$ cmake --build build/dev --target python_client\n"
                     "$ export PYTHONPATH=$PWD/build/dev/clients/python\n")
    assert PACKAGE.endswith("/clients/python")


def test_the_tests_of_the_page_pass_and_fail_as_it_shows(reader):
    (_, test), (_, console) = blocks("pytest")
    (reader.folder / "test_desk.py").write_text(test)
    first, _, rest = console.partition("\n")
    output = reader(f"{first[2:]} -p no:cacheprovider")
    lines = [each.strip("= ") for each in output.splitlines()]
    for part in filter(None, (each.strip() for each in re.split(r"^\.\.\.$", rest, flags=re.M))):
        assert shown(part).search("\n".join(lines)), f"{part}\n{output}"
