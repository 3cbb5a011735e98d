"""Everything that people use has types that hold: mypy --strict, in one run for all files, since it takes seconds."""

import os
import re
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
PACKAGE = Path(os.environ["PYTHONPATH"].split(os.pathsep)[0])
CHECKED = [
    PACKAGE / "telephone_client",
    PACKAGE / "pytest_telephone.py",
    PROJECT / "examples/call-view/call_view.py",
    PROJECT / "examples/robot/robot.py",
    *sorted((PROJECT / "clients/generator").glob("*.py")),
]

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
    "await phone.set_lamp_mode(Lamp.HOLD_LAMP, 2)": "arg-type",
    "await phone.hold_call(call)": "arg-type",
    "number = held.uri": "attr-defined",
    "phone.state.calls[0].state = state": "misc",
}


def test_only_what_is_wrong_on_purpose_is_an_error(tmp_path):
    program = tmp_path / "program.py"
    program.write_text(PROGRAM + "".join(f"        {line}\n" for line in WRONG))
    assert [each for each in CHECKED if not each.exists()] == []
    command = [sys.executable, "-m", "mypy", "--strict", *map(str, [*CHECKED, program])]
    output = subprocess.run(command, cwd=PACKAGE, capture_output=True, text=True).stdout
    first = PROGRAM.count("\n") + 1
    errors = re.findall(r"^(?:.*/)?(\w+\.py):(\d+): error: .*\[(.*)\]$", output, re.M)
    assert errors == [("program.py", str(first + at), code) for at, code in enumerate(WRONG.values())], output
