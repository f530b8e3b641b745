"""The counts that are committed, and what has grown since."""

import json

ALLOWED_GROWTH = 0.02


def build_of(key):
    return key.partition(".")[0]


class Baseline:
    """bench/baseline.json: {benchmark: {key: count}}, a line for each count, so that its change is read in a diff."""

    def __init__(self, path):
        self._path = path
        self._kept = json.loads(path.read_text(encoding="utf-8")) if path.exists() else {}

    def replace(self, counts, builds):
        """These benchmarks' counts in these builds are the new ones; the others stay."""
        for name, found in counts.items():
            others = {key: count for key, count in self._kept.get(name, {}).items() if build_of(key) not in builds}
            self._kept[name] = others | found
        kept = {name: found for name, found in self._kept.items() if found}
        self._path.write_text(json.dumps(kept, indent=1, sort_keys=True) + "\n", encoding="utf-8")

    def complain(self, counts, builds, out):
        """Names every count that has grown, is new or is missing. Gives the status to exit with."""
        lines, compared, smaller = [], 0, 0
        for name, found in counts.items():
            kept = {key: count for key, count in self._kept.get(name, {}).items() if build_of(key) in builds}
            compared += len(kept.keys() & found.keys())
            lines += [f"{name}: {key} is not in the baseline" for key in sorted(found.keys() - kept.keys())]
            lines += [f"{name}: {key} was not measured" for key in sorted(kept.keys() - found.keys())]
            for key in sorted(kept.keys() & found.keys()):
                smaller += found[key] < kept[key]
                if found[key] > kept[key] * (1 + ALLOWED_GROWTH):
                    lines.append(f"{name}: {key} has grown from {growth(kept[key], found[key])}")
        print("\n".join(lines), file=out)
        if lines or not compared:
            print(f"FAILED: {len(lines)} of {compared} counts. If they are as they should be: "
                  "script/bench --update-baseline", file=out)  # fmt: skip
            return 1
        print(f"ok: {compared} counts, none over the baseline by more than {ALLOWED_GROWTH:.0%}, {smaller} below it",
              file=out)  # fmt: skip
        return 0


def growth(before, after):
    return f"{before} to {after}" + (f", {(after - before) / before:+.1%}" if before else "")
