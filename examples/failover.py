"""The demonstration's second half: an aggregation group of four cables, pulled one by one while frames flow.

Two virtual devices stand next to each other, each with the example program link_aggregation on its CPU. Every frame
is accounted for, and every step is compared with its expected result.
"""

from typing import NamedTuple

from adp.lab import Pair
from adp.lab.aggregation import GroupEvent, Handled
from adp.lab.failover import (
    CABLES,
    FAR_HOST,
    FAR_WITNESS,
    FLOWS,
    NEAR_HOST,
    NEAR_WITNESS,
    PLUGS,
    PULLS,
    FourCables,
)
from adp.lab.load import NOWHERE_ELSE

STEADY_SECONDS = 0.4
HEADING = ("step", "sent", "delivered", "lost", "until handled", "handled in", "near group")
WIDTHS = (26, 6, 10, 6, 14, 11, 32)


class Step(NamedTuple):
    """What is done to a cable, and the expected state of the near group afterwards."""

    verb: str
    number: int
    management_port: int
    members_left: int
    is_news: bool  # the group as a whole goes down or comes up

    @property
    def text(self):
        done = "pulled" if self.verb == "pull" else "plugged in again"
        return f"cable {CABLES[self.number][0]} {done}"


def steps():
    """All cables are pulled, the last one too, and plugged in again."""
    pulls = [Step("pull", *each, len(CABLES) - at, at == len(CABLES)) for at, each in enumerate(PULLS, 1)]
    plugs = [Step("plug", *each, at, at == 1) for at, each in enumerate(PLUGS, 1)]
    return pulls + plugs


def row(*cells):
    print("  " + " ".join(f"{cell!s:{width}}" for cell, width in zip(cells, WIDTHS, strict=True)).rstrip())


def group_text(is_up, management_port):
    return f"{'up' if is_up else 'DOWN'}, management port {management_port}"


class Failover:
    """Runs the steps; `wrong` has a sentence for each difference."""

    def __init__(self, joined):
        self._joined = joined
        self.wrong = []

    def run(self):
        """All of them, and what the devices' logs say of them."""
        announced = self._joined.announcements()
        self._run_steps()
        if self._joined.announcements() != [(down + 1, up + 1) for down, up in announced]:
            self.wrong.append("The devices' logs do not say exactly once that the group went down and came up")

    def _run_steps(self):
        row(*HEADING)
        self._steady("all cables in")
        for step in steps():
            self._change(step)
        self._steady("all cables in again")
        for load in self._joined.traffic.loads:
            self._check(load.repeated() == [], f"{len(load.repeated())} frames arrived more than once")

    def _check(self, good, sentence):
        if not good:
            self.wrong.append(sentence)

    def _steady(self, name):
        """Undisturbed traffic must use all cables, lose nothing and stay in order."""
        joined = self._joined
        start, before = joined.traffic.numbers(), joined.sent_by_members()
        joined.traffic.run_for(STEADY_SECONDS)
        astray = joined.traffic.settle()
        shares = [
            [later[port] - earlier[port] for port in sorted(later)]
            for earlier, later in zip(before, joined.sent_by_members(), strict=True)
        ]
        lost = sum(len(load.lost(start[load])) for load in joined.traffic.loads)
        sent = sum(load.sent - start[load] for load in joined.traffic.loads)
        row(name, sent, sent - lost, lost, "", "", "per cable: " + " ".join(map(str, shares[0])))
        overtaken = sum(len(load.overtaken(start[load])) for load in joined.traffic.loads)
        self._check(lost == 0, f"With {name}, {lost} frames were lost")
        self._check(overtaken == 0, f"With {name}, {overtaken} frames were overtaken by later ones of their flow")
        self._check(astray == NOWHERE_ELSE, f"With {name}, frames were astray: {astray}")
        self._check(min(map(min, shares)) > 0, f"With {name}, one of them was not used: {shares}")

    def _change(self, step):
        joined = self._joined
        for program in joined.programs:
            program.take_events()
        start = joined.traffic.numbers()
        made = joined.change(step.verb, step.number)
        near, far = (program.take_events() for program in joined.programs)
        handled = [made.meanwhile(load) for load in joined.traffic.loads]
        after = [made.afterwards(load) for load in joined.traffic.loads]
        whole = [load.tally(start[load]) for load in joined.traffic.loads]
        sent, delivered, lost = (sum(column) for column in zip(*whole, strict=True))
        lost_after = sum(tally.lost for tally in after)
        event = near[-1]
        group = group_text(event.group_is_up, event.management_port)
        row(step.text, sent, delivered, lost, lost - lost_after, f"{made.seconds * 1000:.0f} ms", group)
        self._check_losses(step, made, after)
        self._check_events(step, near, 0)
        self._check_events(step, far, 1)
        self._check(sum(tally.sent for tally in handled) > 0, f"No frames flowed while {step.text}")

    def _check_losses(self, step, made, after):
        self._check(made.astray.returned == 0, f"After {step.text}, {made.astray.returned} frames came back")
        for tally in after:
            wanted = 0 if step.members_left else tally.sent
            self._check(tally.sent > 0, f"After {step.text}, no frames were sent")
            self._check(
                tally.lost == wanted,
                f"{tally.lost} of {tally.sent} frames were lost after it was handled that {step.text}, not {wanted}",
            )

    def _check_events(self, step, events, side):
        is_up = step.verb == "plug"
        management = step.management_port + CABLES[0][side] - CABLES[0][0]
        wanted = [Handled(CABLES[step.number][side], is_up, step.members_left > 0, management)]
        if is_up or step.is_news:
            wanted.insert(0, GroupEvent(step.is_news, is_up))
        self._check(events == wanted, f"When {step.text}, side {side} reported {events} instead of {wanted}")


def run_failover(device_build, build, paint):
    """Shows the failover; true if everything was as expected."""
    near, far = (" ".join(map(str, ports)) for ports in zip(*CABLES, strict=True))
    print(f"\n{paint('Failover', 'bold')}: two devices joined by four cables, ports {near} of the near one to {far} of")
    print(f"the far one, as aggregation group 1. {FLOWS} flows each way between two hosts; link_aggregation runs on")
    print("both CPUs.\n")
    with Pair({NEAR_HOST, NEAR_WITNESS}, {FAR_HOST, FAR_WITNESS}, CABLES, device_build) as pair:
        with FourCables(pair, build) as joined:
            return show_failover(joined, paint)


def show_failover(joined, paint):
    """Runs the steps and prints them; true if everything was as expected."""
    failover = Failover(joined)
    failover.run()
    for sentence in failover.wrong:
        print(paint(f"  differs: {sentence}.", "red"))
    if not failover.wrong:
        print(f"\n{paint('ok', 'green')}: traffic continued over the remaining cables. Frames were lost only until both")
        print("devices had handled a change, and while no cable was in. Down and up were each announced once.")
    return not failover.wrong
