"""The virtual device as a switch, beside the Linux bridge and Open vSwitch's user-space datapath."""

from bench.bars import plot_bars
from bench.isolated import measure_in_namespaces
from bench.switches import course
from bench.switches.figures import Figures, flatness_table, rate_table, thousands

NAME = "device"
TITLE = "The virtual device, port to port, beside the Linux bridge and Open vSwitch in user space"
TARGETS = {"host": ["bench_traffic", "vdeviced", "vdevctl", "adpsh"]}
HAS_COUNTS = False
NOTES = [
    "The switch has one core to itself, the sender another one; the rates for each second of a core hold what the "
    "switch's process and the kernel on its behalf have used there.",
    "The bridge has no process: it works on the sender's core, in the sender's time. Its rate for each second of a "
    "core is what it adds to a sender whose frames end at the port.",
    "'sent' is what the device is sent. Where that is hardly more than what arrives, the device would have done more.",
    "No bridge has rules, so those points have none.",
]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    rows = course.run(course.parse_options(["--quick"] if options.quick else []))
    figures = Figures(rows)
    sizes = sorted({point[0] for point in figures.points})
    return {
        "tables": [*(rate_table(figures, size) for size in sizes), flatness_table(figures)],
        "notes": [*NOTES, f"Flows take turns, {rows[0]['train']} frames of each at a time."],
        "rows": rows,
    }


def plot(result, path):
    figures = Figures(result["rows"])
    rates = {
        "virtual device": lambda point: figures.per_core("device", point),
        "Open vSwitch, user space": lambda point: figures.per_core("ovs", point),
        "Linux bridge (added to the sender's work)": figures.bridge_per_core,
    }
    series = {name: [thousands(rate(point)) for point in figures.points] for name, rate in rates.items()}
    labels = ["{} bytes\n{} flows\n{} addr.\n{} rules".format(*point) for point in figures.points]
    plot_bars(path, labels, series, "thousand frames for each second of a core")
