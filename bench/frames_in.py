"""The cost of a received frame: both receive calls, beside a bare move of the same bytes."""

from adp.lab.builds import Build

from bench import figure, instructions

NAME = "frames_in"
TITLE = "Frames in: instructions per frame, beside a bare memmove of the same bytes"
TARGETS = {"host": ["bench_frames_in", "bench_count_log"], "mips": ["bench_frames_in"]}
SIZES = (64, 512, 1514)
FLOOR = "move"
WAYS = {
    "receive": "adp_receive_frame",
    "parse": "__adp_receive_frame",
    "parse_checked": "__adp_receive_frame with the VLAN check",
}


def count(build):
    """{(way, size): instructions}"""
    environment = {"LD_LIBRARY_PATH": str(Build(build).folder / "instant")}
    counts = instructions.per_call(build, "bench_frames_in", environment=environment)
    return {(way, size): int(counts[f"{way}_{size}"]) for way in (*WAYS, FLOOR) for size in SIZES}


def measure(options):
    result = {"tables": [], "counts": {}, "rows": {}, "notes": [
        "The move alone is memmove of everything behind the addresses, called from C. The VLAN's record comes from a "
        "service that answers at once."]}  # fmt: skip
    for build in options.builds:
        counts = count(build)
        rows = [[WAYS[way], size, counts[way, size], counts[FLOOR, size], counts[way, size] - counts[FLOOR, size],
                 counts[way, size] / counts[FLOOR, size]] for way in WAYS for size in SIZES]  # fmt: skip
        result["rows"][build] = rows
        result["tables"].append({"title": f"Build {build}", "rows": rows,
                                 "columns": ["call", "bytes", "instructions", "memmove", "more", "ratio"]})  # fmt: skip
        result["counts"] |= {f"{build}.{way}.{size}": counts[way, size] for way in WAYS for size in SIZES}
    return result


def plot(result, path):
    with figure.saved(path, columns=len(result["rows"])) as axes:
        for axis, (build, rows) in zip(axes, result["rows"].items()):
            for way, call in WAYS.items():
                axis.plot(SIZES, [row[2] for row in rows if row[0] == call], marker="o", label=f"{way}: {call}")
            axis.plot(SIZES, [row[3] for row in rows[: len(SIZES)]], marker="o", color="grey", label="memmove")
            axis.set(title=f"Build {build}", xlabel="bytes of the frame", ylabel="instructions", ylim=(0, None))
            axis.legend()
