"""Plays an adpsh on a board that does something wrong: false_adpsh.py FAULT [OPTION ...]"""

import itertools
import json
import sys
import time


def say(text):
    sys.stdout.write(text)
    sys.stdout.flush()


def answer(number, line):
    say(json.dumps({"line": number, "echo": line.removeprefix("echo ")}) + "\n")


def say_for_ever(text):
    for _ in itertools.count():
        say(text)


def write_errors():
    for _ in itertools.count():
        sys.stderr.write("\33[2Jerror " * 1000)


# What happens at the call "fault"; without an entry, nothing.
FAULTS = {
    "ends": lambda: sys.exit("\33[31mSegmentation fault"),
    "ends in a record": lambda: (say('{"line":2,"res'), sys.exit(1)),
    "garbage": lambda: sys.stdout.buffer.write(b"\xff\xfe\33]0;title\7{]\n" * 100) and sys.stdout.flush(),
    "garbage in a record": lambda: say('{"line":2,"result":[\33[2J\n'),
    "deep": lambda: say('{"line":' + "[" * 100_000 + "\n"),
    "digits": lambda: say('{"line":2,"result":' + "9" * 100_000 + "}\n"),
    "bad error": lambda: say('{"line":2,"error":"' + "\\u001b[2J" * 10_000 + '"}\n'),
    "no result": lambda: say('{"line":2}\n'),
    "endless lines": lambda: say_for_ever("spam\n" * 1000),
    "endless line": lambda: say_for_ever("spam" * 1000),
    "endless errors": write_errors,
    "late": lambda: (time.sleep(0.6), say('{"line":2,"result":0}\n')),
    "noise": lambda: say('[ 1.0] eth0: link up\nadp> fault\r\nadp> {"line":2,"result":7}\r\n'),
}


def main(fault):
    for number, line in enumerate(map(str.strip, sys.stdin), 1):
        if line == "fault":
            FAULTS.get(fault, lambda: None)()
        else:
            answer(number, line)


if __name__ == "__main__":
    main(sys.argv[1])
