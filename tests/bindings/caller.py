"""Makes calls of the bindings on a device's CPU for a test: caller.py. Reads pickled calls and writes pickled results.

A call is (name, arguments), a result (status or None, what was returned). A process of its own has the device's network
namespace and its own tables.
"""
import os
import pickle
import sys

import adp

HANDLER = "a function"  # stands for one, which cannot be pickled


def on_event(*_event):
    return 0


def result_of(name, arguments):
    arguments = [on_event if each == HANDLER else each for each in arguments]
    try:
        return 0, getattr(adp, name)(*arguments)
    except adp.Error as error:
        return error.status, error.outputs


def main():
    # What the library prints goes elsewhere.
    results = os.fdopen(os.dup(sys.stdout.fileno()), "wb")
    os.dup2(sys.stderr.fileno(), sys.stdout.fileno())
    while True:
        try:
            asked = pickle.load(sys.stdin.buffer)
        except EOFError:
            return
        pickle.dump(result_of(*asked), results)
        results.flush()


if __name__ == "__main__":
    main()
