"""Everything that people use has types that hold."""

import os
import re
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
PACKAGE = Path(os.environ["PYTHONPATH"].split(os.pathsep)[0])

PROGRAM = """
from telephone_client import CallHeld, CallState, Lamp, Telephone

async def main() -> None:
    async with Telephone.connect() as phone:
        call = await phone.line("4711").dial("100")
        event = await phone.wait_for(CallHeld, call=call, within=2)
        number: int = event.call_id
        async for held in phone.events(CallHeld):
            number = held.call_id
        state: CallState = call.state
        await phone.do.hook("up")
"""
WRONG = {
    'await phone.do.hook("left")': "arg-type",
    'await phone.set_lamp_mode(Lamp.HOLD_LAMP, 2)': "arg-type",
    "await phone.hold_call(call)": "arg-type",
    "number = held.uri": "attr-defined",
    "phone.state.calls[0].state = state": "misc",
}


def mypy(*arguments, cwd=PACKAGE):
    command = [sys.executable, "-m", "mypy", "--strict", *map(str, arguments)]
    return subprocess.run(command, cwd=cwd, capture_output=True, text=True)


def test_the_package_the_generator_and_the_examples_are_strict():
    examples = [PROJECT / "examples/call-view/call_view.py", PROJECT / "examples/robot/robot.py"]
    assert all(each.exists() for each in examples)
    assert mypy("telephone_client", "pytest_telephone.py", *examples).stdout.startswith("Success: ")
    generator = PROJECT / "clients/generator"
    assert mypy(*sorted(generator.glob("*.py")), cwd=generator).stdout.startswith("Success: ")


def test_a_right_program_is_accepted(tmp_path):
    (tmp_path / "program.py").write_text(PROGRAM)
    assert mypy(tmp_path / "program.py").stdout.startswith("Success: ")


def test_wrong_lines_are_not_accepted(tmp_path):
    (tmp_path / "program.py").write_text(PROGRAM + "".join(f"        {line}\n" for line in WRONG))
    first = PROGRAM.count("\n") + 1
    errors = re.findall(r"program.py:(\d+): error: .*\[(.*)\]", mypy(tmp_path / "program.py").stdout)
    assert errors == [(str(first + at), code) for at, code in enumerate(WRONG.values())]
