"""The pytest plugin, with small tests of which some fail on purpose."""

import re
import subprocess
import sys

import pytest

pytest_plugins = "pytester"


@pytest.fixture
def run(pytester):
    """Runs pytest on a test file as its users do: the package is installed, and nothing else is said."""

    def run(text, *options):
        pytester.makepyfile(text)
        command = [sys.executable, "-m", "pytest", "-p", "no:cacheprovider", *options]
        return subprocess.run(command, cwd=pytester.path, capture_output=True, text=True).stdout

    return run


PASSING = """
    import pytest
    from telephone_client import LampMode, Reason

    async def test_a_call(telephone, exchange):
        await exchange.does("107", "ring 1s, answer")
        call = await telephone.line("4711").dial("107")
        await call.connected()
        await exchange.now("107", "hang-up")
        assert await call.ended() is Reason.NORMAL

    async def test_ringing(telephone):
        call = await telephone.ring("4711", "555", name="Ann B")
        await call.ringing()
        assert call.record.party.name == "Ann B"
        assert telephone.lamp("4711") == "flashing"
        await call.answer()
        await call.connected()
        assert telephone.lamp("4711") == "steady"

    async def test_an_application_that_refuses_before_the_test_goes_on(telephone, monkeypatch):
        async def refuse_at_once(kind, **conditions):
            event = await type(telephone).wait_for(telephone, kind, **conditions)
            call = telephone.call(event.call_id)
            await call.refuse()
            await call.ended()
            return event

        monkeypatch.setattr(telephone, "wait_for", refuse_at_once)
        call = await telephone.ring("4711", "555")
        assert await call.ended() is Reason.REFUSED

    async def test_a_mailbox(telephone, exchange):
        await exchange.message("4711", new=2)
        await telephone.until(lambda state: state.lines[0].messages.new == 2)

    def test_without_coroutines(telephone, telephone_runner):
        telephone_runner.run(telephone.advance(5))
        assert telephone.state.time == "2000-01-01T00:00:05.000Z"

    @pytest.mark.telephone(time="virtual=2025-03-30T00:59:00Z", toml='[[line]]\\nid = "99"\\n')
    async def test_another_telephone(telephone):
        assert [each.id for each in telephone.lines] == ["99"]
        assert telephone.state.time == "2025-03-30T00:59:00.000Z"

    async def test_two_telephones(telephone, start_telephone):
        other = await start_telephone()
        assert other.program.folder != telephone.program.folder
        await telephone.key("dnd").press()
        await telephone.key("dnd").becomes(LampMode.STEADY)
        assert (telephone.lamp("dnd"), other.lamp("dnd")) == ("steady", "off")
"""


def test_two_runs_at_once_pass_and_leave_nothing_behind(pytester, monkeypatch, tmp_path):
    monkeypatch.setenv("TMPDIR", str(tmp_path))
    pytester.makepyfile(PASSING)
    command = [sys.executable, "-m", "pytest", "-p", "no:cacheprovider"]
    runs = [subprocess.Popen(command, cwd=pytester.path, stdout=subprocess.PIPE, text=True) for _ in range(2)]
    assert ["7 passed" in each.communicate()[0] for each in runs] == [True, True]
    assert [each.name for each in tmp_path.iterdir() if each.name.startswith("telephone-")] == []


def test_a_failure_shows_the_lamps_and_the_log(run):
    output = run("""
        async def test_lamp(telephone):
            await telephone.key("dnd").press()
            await telephone.do.advance(1)
            assert telephone.lamp("dnd") == "off"
    """)
    assert "assert <lamp of Key(6 dnd Do not disturb, steady)> == 'off'" in output
    assert "lamps that are lit: Key(6 dnd Do not disturb, steady)" in output
    assert "log of the telephone" in output
    assert "[exchange] exchange: 4711 is registered" in output
    assert "1 failed" in output


def test_a_lamp_mode_that_does_not_exist(run):
    output = run("""
        async def test_lamp(telephone):
            assert telephone.lamp("dnd") == "lit"
    """)
    assert 'a lamp is never "lit"; its modes are off, steady, flashing, fluttering' in output


def test_a_telephone_that_ends_fails_the_test(run):
    output = run("""
        import os, signal

        async def test_end(telephone):
            os.kill(telephone.program.pid, signal.SIGKILL)
    """)
    assert "the telephone has ended with status -9" in output
    assert "1 passed, 1 error" in output


def test_a_telephone_that_does_not_start_says_why(run):
    output = run("""
        import pytest

        @pytest.mark.telephone(toml="nonsense = 1")
        async def test_start(telephone):
            pass
    """)
    assert "NotConnected: the telephone does not start:" in output
    assert re.search("telephone.toml:1: .*nonsense", output)


def test_the_options_of_the_command_line(run, monkeypatch, tmp_path):
    program = tmp_path / "program"
    (tmp_path / "one.toml").write_text('[[line]]\nid = "98"\n')
    program.write_text('#!/bin/sh\necho "started with $*" >&2\nexit 1\n')
    program.chmod(0o755)
    test = "async def test_one(telephone): assert telephone.state.lines[0].id == '98'"
    assert "1 passed" in run(test, f"--telephone-config={tmp_path}/one.toml")
    output = run(test, f"--telephone-program={program}", "--telephone-time=real")
    assert re.search("started with .* --time real .* serve", output)
    monkeypatch.delenv("TELEPHONE")
    monkeypatch.setenv("PATH", str(tmp_path))
    assert "the program telephone is not in PATH: give its path with --telephone-program" in run(test)
