"""Plots in one manner."""

import contextlib

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402  (the way of drawing has to be set first)

# Without a date and with fixed names inside, so that the same figures give the same file.
METADATA = {"Date": None}
matplotlib.rcParams["svg.hashsalt"] = "adp"
WIDTH = 6.4


@contextlib.contextmanager
def saved(path, columns=1, height=4.0, width=1):
    """Axes side by side, as a list; what was drawn on them is written to the path. Each is `width` times as wide as
    usual.
    """
    size = (WIDTH * columns * width, height)
    drawing, axes = pyplot.subplots(1, columns, figsize=size, squeeze=False, layout="constrained")
    try:
        yield list(axes[0])
        drawing.savefig(path, format="svg", metadata=METADATA)
    finally:
        pyplot.close(drawing)
