"""Recordings of management programs, line by line."""

import json

ID = 412
HEADER = (
    '{"adptrace":1,"byte_order":"big","word_bits":32,"started":"2026-01-01T00:00:00Z","command":["agent"]}\n'
    f'{{"process":{ID},"parent":0,"at":0,"program":"/agent","library":null}}\n'
)
EXIT = f'{{"exit":{ID},"at":9,"status":0}}\n'


def begin(number, within=0, vid=1):
    place = f'"within":{within},' if within else ""
    return (
        f'{{"begin":{number},{place}"thread":1,"at":5,"call":"adp_vlan_create","arguments":{{"vid":{json.dumps(vid)}}}}}\n'
    )


def end(number, result=0):
    return f'{{"end":{number},"at":5,"result":{result},"outputs":{{}}}}\n'


def call(number, result=0):
    return begin(number, vid=number) + end(number, result)


def write(path, text):
    with open(path, "a", encoding="ascii") as file:
        file.write(text)
