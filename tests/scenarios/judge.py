"""Raw messages about multicast that a host sends to the snooping program, and what becomes of them."""

from stage import ONE, VLAN

SENTINEL = 1
SOLICITED_NODES = "33:33:ff"


class Judge:
    """Sends raw messages of one protocol and asks what has become of them when the program has read them."""

    def __init__(self, stage, dialect):
        self.stage, self.dialect = stage, dialect
        self.sentinel = dialect.group(SENTINEL)

    def say(self, *messages):
        for message in messages:
            self.stage.say(ONE, self.dialect.frame(message))

    def wait(self):
        """Whatever was sent before has been read when a port has joined and left another group after it."""
        for kind, joins in ((self.dialect.join, True), (self.dialect.leave, False)):
            self.say(self.dialect.about(self.sentinel, kind))
            self.stage.agent.await_change(VLAN, self.sentinel, f"port {ONE}", joins)

    def groups(self):
        """The groups besides those that hosts' kernels join on their own, to find their neighbours."""
        self.wait()
        return {(vid, mac): ports for (vid, mac), ports in self.stage.entries().items() if mac[:8] != SOLICITED_NODES}

    def carried(self, port, message, **fields):
        """The ports that a message leaves, once each and unchanged, after a host behind this port has sent it."""
        return self.carried_frame(port, self.dialect.frame(message, **fields))

    def carried_frame(self, port, frame):
        """The same of a frame, which is sent with padding."""
        marker = self.stage.bench.marker()
        self.stage.say(port, frame + marker)
        self.wait()
        arrived = self.stage.bench.arrivals(marker)
        assert arrived == dict.fromkeys(arrived, [frame + marker])
        return set(arrived)
