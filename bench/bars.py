"""Plots of bars in groups."""

BARS_PER_COLUMN = 30


def plot_bars(path, labels, series, what):
    """A group of bars for each label, one bar of each of the series {name: heights}; None leaves a gap."""
    from bench import figure  # what draws is not needed for measuring

    columns = 1 + len(labels) * len(series) // BARS_PER_COLUMN
    width = 1 / (len(series) + 1)
    with figure.saved(path, width=columns) as [axes]:
        for number, (name, heights) in enumerate(series.items()):
            places = [at + number * width for at in range(len(heights))]
            axes.bar(places, [height or 0 for height in heights], width, label=name)
        axes.set_xticks([at + width * (len(series) - 1) / 2 for at in range(len(labels))], labels, fontsize=7)
        axes.set_ylabel(what)
        axes.legend(loc="lower center", bbox_to_anchor=(0.5, 1.0), ncol=len(series), frameon=False)
        axes.grid(axis="y", alpha=0.3)
