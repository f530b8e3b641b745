"""What a rule costs beside 1, 100 and 900 others: instructions of the library and of a driver that answers at once."""

from adp.lab.builds import Build

from bench import figure
from bench.instructions import per_call

NAME = "rules"
TITLE = "Rules: instructions per operation, by the number of other rules in the list"
TARGETS = {"host": ["bench_rules", "bench_count_log"], "mips": ["bench_rules"]}

OTHERS = (1, 100, 900)
MEANINGS = {
    "install": "a new rule, behind the others",
    "find": "the rule behind the others",
    "replace": "the rule behind the others, by one of the same number",
    "delete": "the rule behind the others",
}


def measure(options):
    counts = {}
    tables = []
    for build in options.builds:
        found = per_call(build, "bench_rules", environment={"LD_LIBRARY_PATH": str(Build(build).folder / "instant")})
        rows = []
        for act, meaning in MEANINGS.items():
            each = [round(found[f"{act}_{others}"]) for others in OTHERS]
            counts |= {f"{build}.{act}_{others}": count for others, count in zip(OTHERS, each)}
            rows.append([act, meaning, *each, (each[-1] - each[0]) / (OTHERS[-1] - OTHERS[0])])
        columns = ["", "of", *(f"{others} other" + "s" * (others > 1) for others in OTHERS), "per other rule"]
        tables.append({"title": build, "columns": columns, "rows": rows})
    return {"tables": tables, "counts": counts, "notes": [
        "Of a rule with one condition and one action. The list is walked from its start and each walk is to its end, so "
        "these are the most that a list of this length can cost.",
    ]}  # fmt: skip


def plot(result, path):
    with figure.saved(path, columns=len(result["tables"])) as axes:
        for table, axis in zip(result["tables"], axes):
            for act, _, *counts, _ in table["rows"]:
                axis.plot(OTHERS, counts, marker="o", label=act)
            axis.set(title=table["title"], xlabel="other rules in the list", ylabel="instructions", ylim=0)
            axis.legend()
