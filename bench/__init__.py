"""Benchmarks: how fast and how large things are.

Each module in this folder with a function `measure` is a benchmark, which `script/bench` runs:

    NAME = "calls"                     the module's own name
    TITLE = "Cost of a call"
    TARGETS = {"host": ["bench_calls"], "mips": ["bench_calls"]}    what has to be built first
    HAS_COUNTS = True                  whether it has counts for the baseline; --check leaves out the others

    def measure(options): ...          a dict, see below
    def plot(result, path): ...        may be left out: draws an SVG with matplotlib

`options.builds` lists the builds to measure ("host", "mips"), `options.quick` asks for the short form and
`options.counts_only` for nothing but the counts. The result's parts:

    tables   [{"title", "columns", "rows"}]   printed and kept
    counts   {"BUILD.what": number}           instruction counts and sizes that are the same in each run, in the short
                                              form too; --check compares them with bench/baseline.json
    notes    [sentence]                       printed below the tables

Most figures are a ratio within one run, an instruction count or a size, so that they are the same on any machine. A
benchmark's programs are in the folder of its name, and it checks their results before it measures.
"""
