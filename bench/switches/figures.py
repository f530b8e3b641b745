"""What the rows of a course come to: medians, ratios between switches, and how flat the virtual device is."""

import statistics

POINT = ("size", "flows", "stations", "rules")
THOUSAND = 1000


class Figures:
    """Rates by point and switch, as medians over the rounds."""

    def __init__(self, rows):
        self._rows = rows
        self.points = sorted({point_of(row) for row in rows})

    def _median(self, switch, point, figure):
        values = [row[figure] for row in self._rows_of(switch, point) if figure in row]
        return statistics.median(values) if values else None

    def _rows_of(self, switch, point):
        return [row for row in self._rows if (row["switch"], point_of(row)) == (switch, point)]

    def arrived(self, switch, point):
        """Frames in a second."""
        return self._median(switch, point, "arrived")

    def per_core(self, switch, point):
        """Frames for each second of a core that the switch's process has used."""
        return self._median(switch, point, "per_core")

    def bridge_per_core(self, point):
        """What the bridge adds to the sender's work: that with it less that without it."""
        with_bridge, alone = (self._seconds_per_frame(name, point) for name in ("bridge", "none"))
        return 1 / (with_bridge - alone) if with_bridge and alone and with_bridge > alone else None

    def _seconds_per_frame(self, switch, point):
        values = [row["stream_core"] / row["offered"] for row in self._rows_of(switch, point)]
        return statistics.median(values) if values else None

    def offered(self, switch, point):
        """Frames that were sent in a second. Where more were sent than arrived, the switch did what it could."""
        return self._median(switch, point, "offered")

    def flatness(self, switch, changed):
        """How the rate per core at the larger number compares with that at the smaller one, at each point that has
        both, as (point without this number, ratio). `changed` is a member of POINT.
        """
        at = POINT.index(changed)
        found = {}
        for point in self.points:
            if rate := self.per_core(switch, point):
                found.setdefault(point[:at] + point[at + 1 :], []).append(rate)
        return [(rest, rates[-1] / rates[0]) for rest, rates in found.items() if len(rates) > 1]


def point_of(row):
    return tuple(row[name] for name in POINT)


def thousands(rate):
    return round(rate / THOUSAND) if rate else None


def ratio(one, other):
    return one / other if one and other else None


def rate_table(figures, size):
    rows = []
    for point in (point for point in figures.points if point[0] == size):
        device, ovs = (figures.per_core(switch, point) for switch in ("device", "ovs"))
        bridge = figures.bridge_per_core(point)
        passed = [figures.arrived(switch, point) for switch in ("device", "ovs", "bridge")]
        sent = figures.offered("device", point)
        rows.append([*point[1:], *map(thousands, (device, ovs, bridge)), ratio(device, ovs), ratio(device, bridge),
                     *map(thousands, passed), ratio(*passed[:2]), thousands(sent)])  # fmt: skip
    return {
        "title": f"Frames of {size} bytes, in thousands: for each second of a core, and in a second (*)",
        "columns": ["flows", "addresses", "rules", "device", "OVS", "bridge", "device/OVS", "device/bridge", "device *",
                    "OVS *", "bridge *", "device/OVS *", "sent *"],
        "rows": rows,
    }  # fmt: skip


def flatness_table(figures):
    rows = []
    for what, name in (("addresses", "stations"), ("rules", "rules"), ("flows", "flows")):
        of_device, of_ovs = ([ratio for _, ratio in figures.flatness(switch, name)] for switch in ("device", "ovs"))
        if of_device:
            rows.append([what, *worst_and_median(of_device), *worst_and_median(of_ovs)])
    return {
        "title": "Rate with many over that with one (rules: with 900 over that without any)",
        "columns": ["of", "device, worst", "device, median", "OVS, worst", "OVS, median"],
        "rows": rows,
    }


def worst_and_median(ratios):
    return (min(ratios), statistics.median(ratios)) if ratios else (None, None)
