"""Shows what the programs of a lab have written."""

import shutil
import sys

from ..problem import LabError
from .words import did_you_mean, listed
from .up import LOG


def _print_log(path):
    try:
        with open(path, encoding="utf-8", errors="replace") as log:
            shutil.copyfileobj(log, sys.stdout)
    except FileNotFoundError:
        pass


def show_logs(record, node, program):
    """The log of the background process, those of a node, or that of one program. Gives the exit status."""
    if node is None:
        _print_log(record.folder.path / LOG)
        return 0
    record.node(node)
    logs = {name: state["log"] for name, state in record.nodes[node]["processes"].items() if state["log"]}
    if program is not None and program not in logs:
        runs = f"It has {listed(list(logs))}." if logs else "It has none."
        raise LabError(f"{node} has no program '{program}'.{did_you_mean(program, logs)} {runs}")
    if program is not None:
        _print_log(logs[program])
        return 0
    for name, path in logs.items():
        print(f"==> {name} <==", flush=True)
        _print_log(path)
    return 0
