"""The robot with its rules: the exchange calls, the robot does the rest."""

import asyncio
import sys
from pathlib import Path

from telephone_client import CallHeld, FeatureSuccess, Reason

FOLDER = Path(__file__).parent


class Robot:
    def __init__(self, process):
        self._process = process

    @classmethod
    async def open(cls, telephone, rules=FOLDER / "rules.toml"):
        robot = cls(await asyncio.create_subprocess_exec(
            sys.executable, FOLDER / "robot.py", rules, telephone.program.socket, stdout=asyncio.subprocess.PIPE,
            stderr=asyncio.subprocess.PIPE))
        return robot

    async def says(self, *lines):
        async with asyncio.timeout(20):
            said = [(await self._process.stdout.readline()).decode().rstrip() for _ in lines]
        assert said == list(lines)

    async def close(self):
        self._process.terminate()
        await self._process.wait()

    async def failure(self):
        _, error = await self._process.communicate()
        return self._process.returncode, error.decode().rstrip()


async def test_calls_are_treated_by_the_rules(telephone):
    robot = await Robot.open(telephone)
    await robot.says("waiting for calls")
    first = await telephone.ring("4711", "555")
    await robot.says("call 1001: answer", "call 1001: wait 0.2", "call 1001: hold")
    await telephone.wait_for(CallHeld, call=first)
    await robot.says("call 1001: wait 0.2", "call 1001: retrieve", "call 1001: transfer 100")
    await telephone.wait_for(FeatureSuccess, call=first)
    second = await telephone.ring("4711", "667")
    assert await second.ended() is Reason.REFUSED
    await robot.says("call 1002: refuse")
    await telephone.ring("4712", "771")
    await robot.says("call 1003: answer", "call 1003: digits 12#", "call 1003: end")
    left_alone = await telephone.ring("4711", "888")
    await left_alone.ringing()
    await robot.close()


async def test_a_step_that_does_not_exist(telephone, tmp_path):
    rules = tmp_path / "rules.toml"
    rules.write_text('[[rule]]\ncaller = "*"\nsteps = "answer, sing"\n')
    robot = await Robot.open(telephone, rules)
    assert await robot.failure() == (
        1, "there is no step sing; the steps are answer, refuse, deflect, hold, retrieve, digits, transfer, end, wait")
