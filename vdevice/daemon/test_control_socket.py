"""The control socket, and clients that send what they like."""
import json

import pytest

from testing.daemon import BROADCAST, PAYLOAD, Control, station


@pytest.fixture(name="device", scope="module")
def share_device(standing_device):
    return standing_device


@pytest.mark.parametrize("line", [b"", b"{", b"[]", b"7", b"\xff\xfe", b'{"command": 3}', b'{"command": "none"}',
                                  b'{"command": "pull", "port": "x"}', b'{"command": "pull", "port": 1e99}',
                                  b'{"command": "pull"}', b'{"command": "trace"}',
                                  b'{"command": "gpio", "pin": 3}', b'{"command": "gpio", "level": 1}',
                                  b'{"command": "gpio", "pin": 1e99, "level": 1}',
                                  b'{"command": "gpio", "pin": 3, "level": true}',
                                  b'{"command": "ports", "form": "table"}', b'{"command": "ports", "form": 7}',
                                  b'{"command": "pull", "arguments": "1"}', b'{"command": "pull", "arguments": [[]]}',
                                  b'{"command": "pull", "arguments": [{"port": 1}]}',
                                  b'{"command": "version", "arguments": [1]}', b'{"command": "ports", "port": "x"}',
                                  b'{"command": "counters", "since": []}', b'{"command": "vlans", "since": {"time": 0}}',
                                  b'{"command": "counters", "since": {"time": 0}, "per_second": 7}',
                                  b'{"command": "clear"}', b'{"command": "clear", "what": 1}',
                                  b'{"command": "clear", "what": "counters", "port": 31}', b'{"command": "trace", "value": 2147483648}',
                                  b'{"command": "trace", "arguments": ["\\u0000"]}'])
def test_malformed_requests_get_an_error_and_the_line_stays_open(device, line):
    client = Control(device)
    client.say(line + b"\n")
    assert client.hear()["error"].endswith(".")
    client.say(b'{"command": "version"}\n')
    assert client.hear()["user_ports"] == 4


def test_requests_may_come_in_pieces_and_together(device):
    client = Control(device)
    request = b'{"command": "version"}\n'
    for octet in request[:-1]:
        client.say(bytes([octet]))
    client.say(b"\n" + request * 3)
    for _ in range(4):
        assert client.hear()["user_ports"] == 4


def test_an_endless_request_closes_only_its_client(device):
    greedy, other = Control(device), Control(device)
    try:
        greedy.say(b"x" * 1000000)
    except (BrokenPipeError, ConnectionResetError):
        pass  # closed while still talking, as it should be
    with pytest.raises((ConnectionResetError, json.JSONDecodeError)):
        greedy.hear()
    other.say(b'{"command": "version"}\n')
    assert other.hear()["user_ports"] == 4


def test_clients_that_do_not_listen_do_not_stop_the_device(device):
    one, two = device.nics("host1", "host2")
    deaf = Control(device)
    deaf.socket.setblocking(False)
    try:
        while True:
            deaf.socket.send(b'{"command": "counters"}\n')
    except BlockingIOError:
        pass
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.ask("version")["user_ports"] == 4


def test_an_answer_comes_as_json_or_as_text(device):
    client = Control(device)
    client.say(b'{"command": "gpio", "arguments": ["3", 1], "form": "text"}\n')
    assert client.hear() == {"text": "direction  0x00000000\noutput     0x00000000\ninput      0x00000008\n"}
    client.say(b'{"command": "gpio", "form": "json", "unknown": "ignored"}\n')
    assert client.hear() == {"direction": 0, "output": 0, "input": 8}
    client.say(b'{"command": "pull", "port": 1, "form": "text"}\n')
    assert client.hear() == {"text": ""}
