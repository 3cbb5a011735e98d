"""The messages of the socket, whatever the pieces are in which they arrive."""

from telephone_client._framing import RawMessage, Splitter

ANSWER = RawMessage("answer", (), "sfiSuccess")
FINISHED = RawMessage("finished", (), "")


def test_a_message_in_one_piece():
    assert Splitter().feed(b"answer\nsfiSuccess\0") == [ANSWER]


def test_several_messages_in_one_piece():
    assert Splitter().feed(b"answer\nsfiSuccess\0finished\n\0") == [ANSWER, FINISHED]


def test_a_message_byte_by_byte():
    splitter = Splitter()
    *before, last = [splitter.feed(bytes([each])) for each in b"answer\nsfiSuccess\0"]
    assert before == [[]] * (len(b"answer\nsfiSuccess"))
    assert last == [ANSWER]


def test_a_piece_that_ends_in_the_next_message():
    splitter = Splitter()
    assert splitter.feed(b"answer\nsfiSuccess\0fini") == [ANSWER]
    assert splitter.feed(b"shed\n\0") == [FINISHED]


def test_a_letter_that_is_divided_between_pieces():
    splitter = Splitter()
    assert splitter.feed(b"result\nZo\xc3") == []
    assert splitter.feed(b"\xab\0") == [RawMessage("result", (), "Zoë")]


def test_bytes_that_are_not_utf8_are_replaced():
    assert Splitter().feed(b"result\nZo\xff\0") == [RawMessage("result", (), "Zo\N{REPLACEMENT CHARACTER}")]


def test_the_words_of_the_first_line():
    assert Splitter().feed(b"event 7 2000-01-01T00:00:00.000Z\n<Method>A</Method>\nb\0") == [
        RawMessage("event", ("7", "2000-01-01T00:00:00.000Z"), "<Method>A</Method>\nb")
    ]


def test_an_empty_message_and_one_without_a_text():
    assert Splitter().feed(b"\0result\0") == [RawMessage("", (), ""), RawMessage("result", (), "")]


def test_a_large_message_in_pieces():
    splitter, text = Splitter(), "x" * 1_000_000
    data = f"result\n{text}\0".encode()
    messages = [one for at in range(0, len(data), 65536) for one in splitter.feed(data[at : at + 65536])]
    assert messages == [RawMessage("result", (), text)]
