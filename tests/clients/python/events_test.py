"""Events: iterators, waits, gaps, and the mirror of the state."""

import asyncio
import json

import pytest
from fakes import HELD, FakeTelephone

from telephone_client import (
    CallHeld, CallRetrieved, CallState, CallStateChange, ConnectionLost, DoNotDisturbSet, Event, EventsLost, Gap,
    IncomingCall, NotInTime, Pauses, Reason, Telephone,
)

GAP = "gap\n" + json.dumps({"first": 3, "last": 9})


@pytest.fixture
def path(tmp_path):
    return str(tmp_path / "socket")


async def taken(iterator, count):
    """The next events of an iterator."""
    async with asyncio.timeout(20):
        return [await anext(iterator) for _ in range(count)]


async def test_each_iterator_receives_all_its_events(telephone):
    everything, held, again = telephone.events(), telephone.events(CallHeld), telephone.events()
    call = await telephone.line("4711").dial("100")
    await call.connected()
    await call.hold()
    await call.held()
    assert [each.call_id for each in await taken(held, 1)] == [call.id]
    received = await taken(everything, 5)
    assert [str(each.call_state) for each in received[:-1]] == ["dialling", "proceeding", "remote ringing", "connected"]
    assert isinstance(received[-1], CallHeld)
    numbers = [each.number for each in received]
    assert numbers == list(range(numbers[0], numbers[0] + 5))
    assert await taken(again, 5) == received


async def test_an_event_finds_itself_in_the_mirror(telephone):
    seen = []

    async def look():
        async for event in telephone.events(CallStateChange, CallHeld):
            seen.append((type(event).__name__, telephone.call(event.call_id).state, telephone.state.event >= event.number))

    looking = asyncio.create_task(look())
    await asyncio.sleep(0)
    call = await telephone.line("4711").dial("100")
    await call.connected()
    await call.hold()
    await call.held()
    async with asyncio.timeout(20):
        while ("CallHeld", CallState.HELD, True) not in seen:
            await asyncio.sleep(0)
    looking.cancel()
    assert all(is_contained for _, _, is_contained in seen)


async def test_events_that_nobody_takes_are_dropped_and_it_is_said(path, telephone_runner):
    async with FakeTelephone(path) as fake, Telephone.connect(path, mirror=False, capacity=3) as phone:
        slow, fast = phone.events(), phone.events()
        for number in range(1, 7):
            fake.send_event(number, HELD.format(number))
            assert [each.call_id for each in await taken(fast, 1)] == [number]
        assert [each.number for each in await taken(slow, 3)] == [1, 2, 3]
        with pytest.raises(EventsLost, match="^the events 4 to 6 were dropped, ") as lost:
            await anext(slow)
        assert (lost.value.first, lost.value.last) == (4, 6)
        with pytest.raises(StopAsyncIteration):
            await anext(slow)
        fake.send_event(7, HELD.format(7))
        assert [each.number for each in await taken(fast, 1)] == [7]


async def test_a_gap_comes_with_the_state(path, telephone_runner):
    async with FakeTelephone(path) as fake, Telephone.connect(path) as phone:
        everything, gaps, held = phone.events(), phone.events(Gap), phone.events(CallHeld)
        assert await fake.subscriptions.get() == "events after 0 of first"
        fake.state = {**fake.state, "event": 2}
        fake.send_event(2, HELD.format(2))
        await taken(everything, 1)
        fake.state = {**fake.state, "event": 9, "muted": True}
        fake.send(GAP)
        fake.send("state\n" + json.dumps(fake.state))
        [gap] = await taken(everything, 1)
        assert (gap.first, gap.last, gap.number, phone.state.muted) == (3, 9, 9, True)
        assert await taken(gaps, 1) == [gap]
        fake.state = {**fake.state, "event": 10}
        fake.send_event(10, HELD.format(10))
        assert [each.number for each in await taken(held, 2)] == [2, 10]


async def test_the_client_comes_back_with_the_number_of_its_last_event(path, telephone_runner):
    async with FakeTelephone(path) as fake:
        async with Telephone.connect(path, pauses=Pauses(first=0.01), mirror=False) as phone:
            everything = phone.events()
            fake.send_event(4, HELD.format(4))
            await taken(everything, 1)
            fake.state = {**fake.state, "event": 4}
            fake.connected.clear()
            fake.hang_up()
            async with asyncio.timeout(20):
                await fake.connected.wait()
                while not phone.is_connected:
                    await asyncio.sleep(0.01)
            assert await phone.refresh() == phone.state
            fake.send_event(5, HELD.format(5))
            assert [each.number for each in await taken(everything, 1)] == [5]
            commands = [await fake.subscriptions.get() for _ in range(2)]
            assert commands == ["events after 0 of first", "events after 4 of first"]


async def test_a_wait_sees_what_its_request_has_caused_already(telephone):
    call = await telephone.line("4711").dial("100")
    await call.connected()
    await call.hold()
    await telephone.do.advance(1)
    await telephone.do.say("in between")
    assert (await telephone.wait_for(CallHeld, call=call, within=2)).call_id == call.id
    with pytest.raises(NotInTime, match="^CallHeld did not come; "):
        await telephone.wait_for(CallHeld, call=call, within=1)


async def test_a_wait_does_not_see_what_was_before_its_request(telephone):
    call = await telephone.line("4711").dial("100")
    await call.connected()
    for _ in range(2):
        await call.hold()
        await telephone.wait_for(CallHeld, call=call)
        await call.retrieve()
        await telephone.wait_for(CallRetrieved, call=call)
    await telephone.do.say("later")
    with pytest.raises(NotInTime):
        await telephone.wait_for(CallHeld, call=call, within=0.5)


async def test_a_wait_chooses_by_line_and_by_anything_else(telephone):
    await telephone.do.call("4712", "555", name="Ann B")
    with pytest.raises(NotInTime, match="came instead: IncomingCall\\(line 4712, call 1001\\)"):
        await telephone.wait_for(IncomingCall, line="4711", within=0.5)
    event = await telephone.wait_for(IncomingCall, line="4712", where=lambda each: each.name == "Ann B")
    assert event.uri.startswith("sip:555@")


async def test_waits_of_two_tasks_take_the_same_event(telephone):
    call = await telephone.line("4711").dial("103")
    waits = [telephone.wait_for(CallStateChange, call=call, where=lambda each: each.call_state is CallState.CONNECTED)
             for _ in range(2)]
    first, second = await asyncio.gather(*waits)
    assert first is second


async def test_a_change_without_an_event_is_in_the_state_of_whoever_caused_it(telephone):
    await telephone.set_do_not_disturb("4712", True)  # not the primary line: there is no event
    assert telephone.line("4712").record.do_not_disturb
    await telephone.do.hook("up")
    assert telephone.state.hook_up


async def test_states_follow_each_other(telephone):
    seen = []

    async def look():
        async for state in telephone.states():
            seen.append([str(each.state) for each in state.calls])

    looking = asyncio.create_task(look())
    await asyncio.sleep(0)
    call = await telephone.ring("4711")
    await call.ringing()
    await call.answer()
    await call.connected()
    async with asyncio.timeout(20):
        while seen[-1] != ["connected"]:
            await asyncio.sleep(0)
    looking.cancel()
    assert seen[0] == []
    assert ["ringing"] in seen


async def test_until_something_holds_of_the_state(telephone):
    await telephone.line("4711").dial("103")
    state = await telephone.until(lambda each: each.calls[0].state is CallState.CONNECTED, within=3)
    assert state.time == "2000-01-01T00:00:02.000Z"
    with pytest.raises(NotInTime):
        await telephone.until(lambda each: each.muted, within=1)


async def test_in_real_time_waits_wait(telephone_runner, start_telephone):
    phone = await start_telephone(time="real")
    call = await phone.ring("4711")
    await call.ringing()
    await phone.key("dnd").press()
    event = await phone.wait_for(DoNotDisturbSet)
    assert (event.device_id, event.do_not_disturb_on) == ("4711", True)
    await phone.until(lambda _: phone.key("dnd").lamp.mode.phrase == "steady", within=5)
    with pytest.raises(NotInTime):
        await phone.wait_for(CallHeld, within=0.05)
    assert isinstance(event, Event)


async def test_iterators_and_waits_end_with_the_telephone(telephone):
    async def all_states():
        async for _ in telephone.states():
            pass

    waiting = asyncio.create_task(anext(telephone.events()))
    looking = asyncio.create_task(all_states())
    await asyncio.sleep(0)
    await telephone.close()
    with pytest.raises(StopAsyncIteration):
        await waiting
    await looking
    with pytest.raises(ConnectionLost):
        await telephone.wait_for(CallHeld)
    with pytest.raises(StopAsyncIteration):
        await anext(telephone.events())


async def test_a_wait_in_real_time_ends_with_the_telephone(start_telephone):
    telephone = await start_telephone(time="real")
    waiting = asyncio.create_task(telephone.wait_for(CallHeld, within=None))
    await asyncio.sleep(0)
    await telephone.close()
    with pytest.raises(ConnectionLost, match="^the telephone was closed$"):
        await waiting


async def test_calls_without_a_mirror(telephone):
    async with Telephone.connect(telephone.program.socket, mirror=False, advances=True) as phone:
        await telephone.outgoing_call_make_request("4712", 1, "102")
        call = await phone.line("4711").dial("103")
        await call.connected()
        await call.hold()
        await call.held()
        await call.retrieve()
        await call.connected()
        await call.hang_up()
        assert (call.id, await call.ended()) == (2, Reason.NORMAL)
