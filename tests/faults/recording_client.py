"""A client that keeps every event of a telephone in a file, and goes on where the file ends:

    recording_client.py SOCKET FILE

One event a line: number, time and text. Half a line at the end, from a client that was killed, is removed. Writes one byte to standard output when it is connected, and one for each event.
It never ends by itself.
"""

import os
import socket
import sys

path, file = sys.argv[1:]
with open(file, "a+b") as kept:
    kept.seek(0)
    whole = kept.read()
    *lines, half = whole.split(b"\n")
    kept.truncate(len(whole) - len(half))
    last = int(lines[-1].split(b" ")[0]) if lines else 0
    telephone = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    telephone.connect(path)
    telephone.sendall(b"events after %d\0" % last)
    received = b""
    while data := telephone.recv(65536):
        *messages, received = (received + data).split(b"\0")
        for message in messages:
            head, text = message.split(b"\n", 1)
            kind, *details = head.split(b" ")
            if kind == b"event":
                os.write(kept.fileno(), b" ".join([*details, text]) + b"\n")
            elif kind != b"result":
                sys.exit(message)
            os.write(1, b".")
