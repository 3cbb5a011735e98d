"""What can go wrong, as exceptions. All are a TelephoneError, and their text is a sentence for people."""


class TelephoneError(Exception):
    """Any of the errors below."""


class RequestRefused(TelephoneError):
    """The service has answered that it did not do what was asked.

    request: the text of the request. answer: its answer, usually a word of Result. reasons: why, a sentence each; empty
    if the telephone gives none.
    """

    def __init__(self, request: str, answer: str, reasons: tuple[str, ...]) -> None:
        self.request = request
        self.answer = answer
        self.reasons = reasons
        super().__init__("; ".join(reasons) or f"{answer} to {request}")


class NoEffect(RequestRefused):
    """The answer is success, but the reasons say that nothing has happened, or not what was asked for."""


class MessageRefused(TelephoneError):
    """The telephone did not accept the message: a wrong value or name, a command that is not possible now."""


class ConnectionLost(TelephoneError, ConnectionError):
    """The connection ended before the reply came. Whether the telephone has done what was asked is not known."""


class NotConnected(ConnectionLost):
    """The client is not connected at present: nothing was sent."""


class ProtocolError(TelephoneError):
    """The telephone sent something that this client does not understand."""


class NotInTime(TelephoneError, TimeoutError):
    """What was waited for did not come in time."""


class CallOver(TelephoneError):
    """The call has ended, so that it cannot enter the state that was waited for."""


class FeatureError(TelephoneError):
    """A feature that had begun, such as a transfer, has failed."""


class EventsLost(TelephoneError):
    """An iterator of events was not read for so long that events were dropped; it has ended.

    first, last: numbers of the first and the last event that were dropped. The state contains what they reported.
    """

    def __init__(self, first: int, last: int) -> None:
        self.first = first
        self.last = last
        super().__init__(f"the events {first} to {last} were dropped, because nobody took them: take them faster, "
                         "or choose a greater capacity")
