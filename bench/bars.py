"""Plots of bars in groups."""


def plot_bars(path, labels, series, what):
    """A group of bars for each label, one bar of each of the series {name: heights}; None leaves a gap."""
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    picture, axes = pyplot.subplots(figsize=(max(6, 0.7 * len(labels)), 5))
    width = 1 / (len(series) + 1)
    for number, (name, heights) in enumerate(series.items()):
        places = [at + number * width for at in range(len(heights))]
        axes.bar(places, [height or 0 for height in heights], width, label=name)
    axes.set_xticks([at + width * (len(series) - 1) / 2 for at in range(len(labels))], labels, fontsize=7)
    axes.set_ylabel(what)
    axes.legend(loc="lower center", bbox_to_anchor=(0.5, 1.0), ncol=len(series), frameon=False)
    axes.grid(axis="y", alpha=0.3)
    picture.tight_layout()
    picture.savefig(path)
    pyplot.close(picture)
