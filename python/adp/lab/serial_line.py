"""Joins standard input and output to a serial line: serial_line.py DEVICE SPEED

It is a program of its own, so that a line that hangs can be ended like any process. It imports nothing of the package.
"""

import fcntl
import os
import select
import signal
import sys
import termios

CHUNK = 4096


def main(device, speed):
    try:
        line = os.open(device, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
    except OSError as problem:
        sys.exit(f"The serial line {device} cannot be opened: {problem.strerror}.")
    try:
        fcntl.flock(line, fcntl.LOCK_EX | fcntl.LOCK_NB)
        before = termios.tcgetattr(line)
        termios.tcsetattr(line, termios.TCSAFLUSH, raw(before, getattr(termios, f"B{speed}")))
    except BlockingIOError:
        sys.exit(f"The serial line {device} is in use by another program.")
    except (OSError, termios.error) as problem:
        sys.exit(f"{device} is no serial line that can be used: {problem.args[-1]}.")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    try:
        join(line)
    except OSError as problem:
        sys.exit(f"The serial line {device} is gone: {problem.strerror}.")
    finally:
        try:
            termios.tcsetattr(line, termios.TCSANOW, before)
        except termios.error:
            pass  # the line is gone


def raw(attributes, speed):
    """Eight bits without parity, each byte as it is."""
    characters = list(attributes[6])
    characters[termios.VMIN], characters[termios.VTIME] = 1, 0
    return [termios.IGNBRK, 0, termios.CS8 | termios.CREAD | termios.CLOCAL, 0, speed, speed, characters]


def join(line):
    """Until the input has ended and is sent."""
    waiting, has_ended = b"", False
    while waiting or not has_ended:
        sources = [line] if has_ended or waiting else [line, 0]
        readable, writable, _ = select.select(sources, [line] if waiting else [], [])
        if 0 in readable:
            waiting = os.read(0, CHUNK)
            has_ended = not waiting
        if writable:
            waiting = waiting[os.write(line, waiting) :]
        if line in readable:
            chunk = os.read(line, CHUNK)
            if not chunk:
                sys.exit("The serial line has ended.")
            write_all(chunk)


def write_all(chunk):
    while chunk:
        chunk = chunk[os.write(1, chunk) :]


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    main(*sys.argv[1:])
