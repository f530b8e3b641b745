"""One style for all plots."""

import contextlib

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402  (the way of drawing has to be set first)

# Without a date and with fixed identifiers, so that the same figures give the same file.
METADATA = {"Date": None}
matplotlib.rcParams["svg.hashsalt"] = "adp"
WIDTH = 6.4


@contextlib.contextmanager
def saved(path, columns=1, height=4.0, width=1):
    """A list of axes side by side, `width` times the usual width. The plot is written to the path at the end."""
    size = (WIDTH * columns * width, height)
    drawing, axes = pyplot.subplots(1, columns, figsize=size, squeeze=False, layout="constrained")
    try:
        yield list(axes[0])
        drawing.savefig(path, format="svg", metadata=METADATA)
    finally:
        pyplot.close(drawing)
