"""A client of the telephone for Python programs.

    async with Telephone.connect() as phone:
        call = await phone.line("4711").dial("100")
        await call.connected()
        await call.hold()

docs/clients.md shows how to use it. The enumerations and events are in telephone_client.protocol, the records of the
state in telephone_client.state.
"""

from ._errors import (
    CallOver,
    ConnectionLost,
    EventsLost,
    FeatureError,
    MessageRefused,
    NoEffect,
    NotConnected,
    NotInTime,
    ProtocolError,
    RequestRefused,
    TelephoneError,
)
from ._feed import Gap, Pauses
from ._hub import EventIterator
from ._messages import Event, Reply, UnknownEvent
from ._socket import default_path
from ._version import __version__
from .calls import Call, Key, Line
from . import protocol
from .protocol import *
from .telephone import Telephone

__all__ = [
    "Call",
    "CallOver",
    "ConnectionLost",
    "Event",
    "EventIterator",
    "EventsLost",
    "FeatureError",
    "Gap",
    "Key",
    "Line",
    "MessageRefused",
    "NoEffect",
    "NotConnected",
    "NotInTime",
    "Pauses",
    "ProtocolError",
    "Reply",
    "RequestRefused",
    "Telephone",
    "TelephoneError",
    "UnknownEvent",
    "__version__",
    "default_path",
]
__all__ += protocol.__all__
