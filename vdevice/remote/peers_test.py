#!/usr/bin/env python3
"""Lets two builds of remote_peer talk: every call of the interface, checked on both ends.

    peers_test.py --server=COMMAND --client=COMMAND

The words of a command are separated by semicolons; the last one is the program. If one has not been built, the exit
status is 77: skipped.
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
PATIENCE = 90  # seconds


def words(text):
    return text.split(";")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--server", type=words, required=True)
    parser.add_argument("--client", type=words, required=True)
    options = parser.parse_args()
    for command in (options.server, options.client):
        if not os.path.exists(command[-1]):
            print(f"skipped: {command[-1]} has not been built")
            return SKIPPED
    with tempfile.TemporaryDirectory(prefix="remote-peers-") as folder:
        path = os.path.join(folder, "driver")
        with subprocess.Popen(options.server + ["serve", path]) as server:
            try:
                end = time.monotonic() + PATIENCE
                while not os.path.exists(path) and server.poll() is None and time.monotonic() < end:
                    time.sleep(0.02)
                client = subprocess.run(options.client + ["call", path], timeout=PATIENCE, check=False)
                status = server.wait(timeout=PATIENCE)
            finally:
                server.kill()
        return 0 if client.returncode == 0 and status == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
