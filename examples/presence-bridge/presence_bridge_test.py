"""The presence bridge: what its files say, and the second telephone."""

import asyncio
from pathlib import Path

BRIDGE = Path(__file__).with_name("presence-bridge.sh")
HTTP = '[http]\naddress = "127.0.0.1:0"\n'


async def said(process, *lines):
    async with asyncio.timeout(20):
        said = [(await process.stdout.readline()).decode().rstrip() for _ in lines]
    assert sorted(said) == sorted(lines)


def address(telephone):
    return [telephone.program.http(), f"{telephone.program.socket}.token"]


async def test_presence_is_written_and_mirrored(start_telephone, tmp_path):
    desk, home = await start_telephone(toml=HTTP), await start_telephone(toml=HTTP)
    folder = tmp_path / "presence"
    bridge = await asyncio.create_subprocess_exec(
        BRIDGE, *address(desk), folder, *address(home), stdout=asyncio.subprocess.PIPE)
    try:
        await said(bridge, "4711: free", "4712: free")
        call = await desk.ring("4712", "555")
        await said(bridge, "4712: ringing")
        await call.answer()
        await said(bridge, "4712: busy")
        assert (folder / "4712").read_text() == "busy\n"
        await call.hang_up()
        await said(bridge, "4712: free")
        await desk.line("4711").do_not_disturb(True)
        await said(bridge, "4711: do not disturb")
        await home.until(lambda state: state.lines[0].do_not_disturb)
        await desk.line("4711").do_not_disturb(False)
        await said(bridge, "4711: free")
        await home.until(lambda state: not state.lines[0].do_not_disturb)
        await desk.close()
        desk.program.end()
        await said(bridge, "4711: away", "4712: away")
        assert sorted(each.name for each in folder.iterdir() if not each.name.startswith(".")) == ["4711", "4712"]
    finally:
        bridge.kill()
        await bridge.wait()
