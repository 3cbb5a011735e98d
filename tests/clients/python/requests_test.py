"""Requests and commands: over the socket and over HTTP with a real telephone, and with one that the test plays."""

import asyncio
import functools
import subprocess
from pathlib import Path

import pytest
from fakes import FakeTelephone

from telephone_client import (
    AgentState, CallHeld, CallOver, CallState, ConnectionLost, Feature, ForwardingType, LampMode, MessageRefused, NoEffect,
    NotConnected, NotInTime, ProtocolError, Reason, RequestRefused, ServiceState, Telephone,
)

HTTP = "[http]\naddress = '127.0.0.1:0'\n"
both_ways = pytest.mark.parametrize("over", ["socket", "http"])


@pytest.fixture
def phone(over, telephone_runner, start_telephone):
    return telephone_runner.run(start_telephone(toml=HTTP, over=over))


def with_fake(test):
    """A test of a client of a telephone that it plays."""

    @functools.wraps(test)
    def run(tmp_path):
        async def body():
            path = str(tmp_path / "socket")
            async with FakeTelephone(path) as fake, Telephone.connect(path, mirror=False) as phone:
                async with asyncio.timeout(20):
                    await test(fake, phone)

        asyncio.run(body())

    del run.__wrapped__  # pytest shall see the arguments of run
    return run


@both_ways
async def test_a_call_from_its_beginning_to_its_end(phone):
    call = await phone.line("4711").dial("103")
    await call.connected()
    assert (call.state, call.line, call.record.party.address) == (CallState.CONNECTED, "4711", "sip:103@127.0.0.1:40002")
    await call.hold()
    held = await phone.wait_for(CallHeld, call=call, within=2)
    assert (held.line_id, held.call_id) == ("4711", call.id)
    assert call.record.held_here
    await call.retrieve()
    await call.connected()
    await call.send_digits("12#")
    await call.hang_up()
    assert await call.ended() is Reason.NORMAL
    assert (call.state, call.record, phone.calls) == (CallState.IDLE, None, [])


@both_ways
async def test_a_refused_request_says_why(phone):
    with pytest.raises(RequestRefused, match="^line 4711 has no call 7; the telephone has no calls$") as refused:
        await phone.hold_call(7, line="4711")
    assert (refused.value.answer, type(refused.value)) == ("sfiFailure", RequestRefused)


@both_ways
async def test_a_request_without_effect_says_why(phone):
    with pytest.raises(NoEffect, match="^there is no line 4799; the lines are 4711 and 4712$"):
        await phone.set_do_not_disturb("4799", True)


@both_ways
async def test_what_the_service_does_not_see_says_why(phone):
    with pytest.raises(MessageRefused, match="CallID \"two\" is not a number"):
        await phone.send_request("<Method>HoldCall</Method><Line>4711</Line><CallID>two</CallID>")
    with pytest.raises(MessageRefused, match='^there is no key "nowhere"; the layout has 1 to 15$'):
        await phone.do.press("nowhere")


@both_ways
async def test_settings_are_read_as_they_were_set(phone):
    assert await phone.get_do_not_disturb() is False
    await phone.set_do_not_disturb("4711", True)
    assert await phone.get_do_not_disturb() is True
    await phone.set_do_not_disturb("4711", False)
    await phone.line("4711").forward("100", ForwardingType.BUSY)
    [rule] = phone.line("4711").record.forwarding
    assert (rule.type, rule.active, rule.destination) == (ForwardingType.BUSY, True, "100")
    await phone.line("4711").stop_forwarding(ForwardingType.BUSY)
    [rule] = phone.line("4711").record.forwarding
    assert (rule.active, rule.destination) == (False, "100")
    assert await phone.get_service_state() is ServiceState.IN_SERVICE
    assert await phone.get_devices() == "<prime:4711><prime:4712><groupPickup:*98>"


@both_ways
async def test_commands_return_their_result(phone):
    assert await phone.do.say("a \"b\"  # it's") == "a \"b\"  # it's"
    await phone.do.exchange("107", "ring 1s, answer", does=True)
    assert "107 ring 1s, answer" in await phone.do.exchange_numbers()
    assert await phone.do.time() == "2000-01-01T00:00:00.000Z virtual"
    await phone.do.advance(1.5)
    assert await phone.do.time() == "2000-01-01T00:00:01.500Z virtual"


@both_ways
async def test_many_requests_at_once_of_which_some_are_cancelled(phone):
    tasks = [asyncio.create_task(phone.do.say(f"{each}")) for each in range(60)]
    for turn, each in enumerate(tasks[::3]):
        for _ in range(turn):  # in another moment of its life each
            await asyncio.sleep(0)
        each.cancel()
    results = await asyncio.gather(*tasks, return_exceptions=True)
    answered = {at: result for at, result in enumerate(results) if not isinstance(result, asyncio.CancelledError)}
    assert answered == {at: f"{at}" for at in answered}
    assert len(answered) >= 40
    assert await phone.do.say("last") == "last"


@both_ways
async def test_transfers_and_conferences(phone):
    line = phone.line("4711")
    first = await line.dial("100")
    await first.connected()
    second = await first.consult("100")
    await second.connected()
    await first.held()
    await first.confer()
    await first.in_conference()
    await second.hang_up()
    await second.ended()
    await first.transfer("103")
    await first.transferred()
    await first.ended()
    first = await line.dial("100")
    await first.connected()
    second = await first.consult("100")
    await second.connected()
    await first.complete()
    await first.transferred()
    await second.ended()
    assert phone.calls == []


@both_ways
async def test_keys_and_lamps(phone):
    key = phone.key("dnd")
    assert (key.record.label, key.lamp.mode) == ("Do not disturb", LampMode.OFF)
    await key.press()
    await key.becomes(LampMode.STEADY)
    assert phone.key(6).lamp.mode is LampMode.STEADY
    with pytest.raises(ValueError, match="^there is no key Nothing; the keys are 4711, 4712, Desk 4712"):
        phone.key("Nothing")


async def test_a_call_that_ends_instead(telephone):
    call = await telephone.line("4711").dial("101")
    with pytest.raises(CallOver, match="^call 1 is not connected: it has ended \\(busy, busy\\)$"):
        await call.connected()


@pytest.mark.telephone(toml="[calls]\nautomatic-ringing = false\n")
async def test_calls_that_are_let_ring_and_refused_or_sent_on(telephone):
    call = await telephone.ring("4711")
    assert call.state is CallState.INCOMING
    await call.accept()
    await call.ringing()
    await call.refuse()
    assert await call.ended() is Reason.REFUSED
    call = await telephone.ring("4711")
    await call.accept()
    await call.deflect("100")
    assert await call.ended() is Reason.FORWARDED


async def test_pickups_and_alternation(telephone):
    first = await telephone.line("4711").dial("100")
    await first.connected()
    second = await telephone.line("4711").dial("100")
    await second.connected()
    await first.held()
    await telephone.line("4711").alternate()
    await first.connected()
    await second.held()
    assert [each.id for each in telephone.line("4711").calls] == [1, 2]
    with pytest.raises(ValueError, match="^there is no line 4799; the lines are 4711, 4712$"):
        telephone.line("4799").record
    with pytest.raises(CallOver):
        await (await telephone.line("4712").pick_up_group()).connected()


async def test_a_wait_that_is_in_vain(telephone):
    call = await telephone.line("4711").dial("102")
    await call.ringing()
    with pytest.raises(NotInTime, match="^call 1 connected did not come; came instead: nothing \\(within 3 seconds\\)$"):
        await call.connected(within=3)
    assert await telephone.do.time() == "2000-01-01T00:00:03.000Z virtual"


async def test_ids_of_new_calls_are_free(telephone):
    calls = [await telephone.line("4711").dial("102") for _ in range(3)]
    assert [each.id for each in calls] == [1, 2, 3]
    await telephone.outgoing_call_make_request("4712", 4, "102")
    assert (await telephone.line("4712").dial("102")).id == 5


async def test_an_id_that_another_program_has_just_taken(telephone):
    other = Telephone.connect(telephone.program.socket, mirror=False)
    async with other:
        await other.outgoing_call_make_request("4712", 1, "102")
        telephone._feed._state = telephone._feed.state.__class__(**{**vars(telephone.state), "calls": ()})  # not seen yet
        assert (await telephone.line("4711").dial("102")).id == 2


@pytest.mark.telephone(toml="[applications]\nmaximum = 1\n")
async def test_one_application_too_many(telephone):
    with pytest.raises(NotConnected, match="^too many applications are connected$"):
        await Telephone.connect(telephone.program.socket).open()


async def test_values_that_cannot_be_sent(telephone):
    with pytest.raises(ValueError, match="^the value of Destination contains </Destination>, which ends it$"):
        await telephone.outgoing_call_make_request("4711", 1, "1</Destination>")
    with pytest.raises(ValueError, match="^the body contains a NUL, which ends a message$"):
        await telephone.send_csta_request("a\0b", line="4711")


async def test_http_without_the_token(telephone_runner, start_telephone):
    phone = await start_telephone(toml=HTTP)
    with pytest.raises(NotConnected, match="gives no access: "):
        await Telephone.connect(phone.program.http(), token="wrong").open()


async def test_https_with_a_certificate_of_its_own(start_telephone, tmp_path):
    certificate, key = tmp_path / "certificate.pem", tmp_path / "key.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
         "-subj", "/CN=telephone", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
        check=True, capture_output=True)
    program = (await start_telephone(toml=f"{HTTP}certificate = '{certificate}'\nkey = '{key}'\n")).program
    token = Path(f"{program.socket}.token")
    assert program.http().startswith("https://")
    async with Telephone.connect(program.http(), token=token, certificate=certificate, advances=True) as phone:
        call = await phone.line("4711").dial("100")
        await call.connected()
    with pytest.raises(NotConnected, match="certificate verify failed"):
        await Telephone.connect(program.http(), token=token).open()


async def test_nobody_is_there(tmp_path, telephone_runner):
    with pytest.raises(NotConnected, match="^no telephone answers at .*/nowhere: No such file or directory$"):
        await Telephone.connect(tmp_path / "nowhere").open()
    with pytest.raises(NotConnected, match="^no telephone answers at http://127.0.0.1:9: "):
        await Telephone.connect("http://127.0.0.1:9", token="t").open()


async def test_a_telephone_that_is_too_new(tmp_path, telephone_runner):
    path = str(tmp_path / "socket")
    async with FakeTelephone(path, protocol=2):
        with pytest.raises(NotConnected, match="^the telephone speaks protocol 2, this client 1: use a newer client$"):
            await Telephone.connect(path).open()


async def test_a_telephone_whose_state_makes_no_sense(tmp_path, telephone_runner):
    path = str(tmp_path / "socket")
    async with FakeTelephone(path) as fake:
        fake.state = {"start": "first"}
        with pytest.raises(ProtocolError, match="^the state of the telephone lacks 'event'$"):
            await Telephone.connect(path).open()


@with_fake
async def test_replies_belong_to_their_requests(fake, phone):
    tasks = [asyncio.create_task(phone.do.say(f"{each}")) for each in range(3)]
    for each in range(3):
        assert await fake.messages.get() == f"say {each}"
    for each in "abc":
        fake.send(f"result\n{each}")
    assert await asyncio.gather(*tasks) == ["a", "b", "c"]


@with_fake
async def test_a_cancelled_request_takes_its_reply_with_it(fake, phone):
    cancelled = asyncio.create_task(phone.get_devices())
    await fake.messages.get()
    cancelled.cancel()
    following = asyncio.create_task(phone.do.say("x"))
    await fake.messages.get()
    fake.send("answer\nof the cancelled request")
    fake.send("reason\nof the cancelled request")
    fake.send("finished\n")
    fake.send("result\nof the command")
    assert await following == "of the command"
    with pytest.raises(asyncio.CancelledError):
        await cancelled


@with_fake
async def test_a_request_without_a_reply_in_time(fake, phone):
    with pytest.raises(TimeoutError):
        async with asyncio.timeout(0.05):
            await phone.do.say("late")
    following = asyncio.create_task(phone.do.say("x"))
    assert [await fake.messages.get() for _ in range(2)] == ["say late", "say x"]
    fake.send("result\nlate")
    fake.send("result\nin time")
    assert await following == "in time"


@with_fake
async def test_messages_of_a_later_version_are_ignored(fake, phone):
    asking = asyncio.create_task(phone.do.say("x"))
    await fake.messages.get()
    fake.send("news 7\nof something")
    fake.send("result\nx")
    assert await asking == "x"


@with_fake
async def test_a_lost_connection_fails_what_waits_and_what_comes(fake, phone):
    asking = asyncio.create_task(phone.do.say("x"))
    await fake.messages.get()
    fake.disappear()
    fake.hang_up()
    with pytest.raises(ConnectionLost, match="^the telephone has ended the connection$"):
        await asking
    with pytest.raises(NotConnected):
        await phone.do.say("y")
    assert not phone.is_connected


@with_fake
async def test_a_message_that_makes_no_sense_ends_the_connection(fake, phone):
    asking = asyncio.create_task(phone.do.say("x"))
    await fake.messages.get()
    fake.disappear()
    fake.send("event seven yesterday\n<Method>A</Method>")
    with pytest.raises(ConnectionLost, match="^the connection was ended: "):
        await asking


@with_fake
async def test_words_of_a_later_version_are_members(fake, phone):
    asking = asyncio.create_task(phone.get_service_state())
    await fake.messages.get()
    fake.send("answer\nsfiSuccess,sfiServiceAsleep")
    fake.send("finished\n")
    state = await asking
    assert (state, state.name) == (ServiceState("sfiServiceAsleep"), "UNLISTED_sfiServiceAsleep")
    assert str(state) == "sfiServiceAsleep"


def test_enumerations_say_what_people_say():
    assert (str(CallState(3)), CallState.named("remote ringing"), CallState(3).name) == (
        "remote ringing", CallState.REMOTE_RINGING, "REMOTE_RINGING")
    assert (int(Feature(99)), repr(Feature(99))) == (99, "<Feature.UNLISTED_99: 99>")
    assert AgentState("loggedOn") is AgentState.LOGGED_ON
