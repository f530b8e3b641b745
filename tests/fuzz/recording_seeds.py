"""Seeds of the fuzz targets that read recordings."""
import pathlib
import sys


def recording():
    """The samples whole, each call of them alone, and what they do not have."""
    samples = pathlib.Path(__file__).parents[2] / "tools/adptrace/recording/samples"
    for sample in sorted(samples.glob("*.adptrace")):
        lines = sample.read_text().splitlines(keepends=True)
        start = "".join(lines[:2])
        yield sample.stem, "".join(lines).encode()
        for number, line in enumerate(lines[2:], 3):
            yield f"{sample.stem}_line_{number}", (start + line).encode()
    process = '{"process":1,"parent":0,"at":0,"program":"","library":null}\n'
    header = '{"adptrace":1,"byte_order":"big","word_bits":32,"started":"","command":[]}\n'
    call = '{"begin":%d,"within":%d,"thread":1,"at":0,"call":"adp_x","arguments":{}}\n'
    first = call.replace('"within":%d,', "") % 1
    yield "cut", (header + process + first[:-9]).encode()
    yield "nested", (header + process + first + "".join(call % (n + 1, n) for n in range(1, 199))).encode()
    yield "times", (header + process + first + '{"end":1,"at":9223372036854775807,"result":0,"outputs":{}}').encode()


def replay():
    """The same recordings."""
    yield from recording()
