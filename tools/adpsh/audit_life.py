"""A random life of a management program: calls that are valid when they are made, as lines for the shell."""
GROUPS = range(1, 9)
USER_PORTS = range(1, 27)
VIDS = range(2, 4095)
MOST_MEMBERS = 8  # more are not listed, and elect no manager
DROP = 201


def mask(ports):
    return sum(1 << port for port in ports)


def listed(items):
    return "[" + ",".join(map(str, items)) + "]"


class Life:
    """Knows what its calls have made, so that each is valid. next() gives the lines of one operation."""

    def __init__(self, random):
        self.random = random
        self.vlans = set()
        self.trunks = {}  # group -> members
        self.configured = {}  # group -> configured members
        self.instances = {}  # MST instance -> VLANs
        self.rules = set()  # (submodule, entity)
        self.snooped = {}  # (address, VLAN) -> user ports
        self.made = set()  # names of the operations that had something to do
        self.operations = [self.vlan, self.trunk, self.members, self.standby, self.instance, self.move, self.rule,
                           self.group, self.group_members]

    def next(self):
        operation = self.random.choice(self.operations)
        lines = operation()
        self.made |= {operation.__name__} if lines else set()
        return lines

    def pick(self, items):
        return self.random.choice(sorted(items))

    def some(self, items, most=3):
        items = sorted(items)
        return self.random.sample(items, min(len(items), self.random.randint(1, most)))

    def vlan(self):
        vid = self.random.choice(VIDS)
        if vid in self.vlans:
            self.vlans.discard(vid)
            return [f"adp_vlan_destroy {vid}"]
        self.vlans.add(vid)
        ports = self.some(USER_PORTS)
        return [f"adp_vlan_create {vid}", f"adp_vlan_port_set {vid} {{{listed(ports)[1:-1]}}} {{}}"]

    def trunk(self):
        group = self.random.choice(GROUPS)
        if group in self.trunks:
            del self.trunks[group], self.configured[group]
            return [f"adp_delete_agg_group agg{group}"]
        self.trunks[group], self.configured[group] = [], set()
        return [f"adp_create_agg_group agg{group}"]

    def members(self):
        if not self.trunks:
            return []
        group = self.pick(self.trunks)
        members = self.trunks[group]
        free = set(USER_PORTS).difference(*self.trunks.values())
        if members and (self.random.random() < 0.5 or len(members) == MOST_MEMBERS or not free):
            leaving = self.some(members)
            self.trunks[group] = [port for port in members if port not in leaving]
            return [f"adp_del_agg_member agg{group} {listed(leaving)}"]
        joining = self.some(free, min(3, MOST_MEMBERS - len(members)))
        members += joining
        if self.random.random() < 0.5:
            return [f"adp_add_agg_member_by_map agg{group} {mask(joining)} 0"]
        return [f"adp_add_agg_member agg{group} {listed(joining)}"]

    def standby(self):
        """Who changes the configured members elects anew, which nothing else does."""
        if not self.trunks:
            return []
        group = self.pick(self.trunks)
        mine = self.configured[group]
        free = set(USER_PORTS).difference(*self.configured.values())
        if mine and self.random.random() < 0.5:
            changed, call = self.some(mine), "del"
            mine.difference_update(changed)
        else:
            changed, call = self.some(free), "add"
            mine.update(changed)
        return [f"adp_{call}_agg_standby_member agg{group} {mask(changed)} 0", f"ANEW_SELECT_MANAGE_INTF agg{group}"]

    def instance(self):
        stg = self.random.randint(1, 15)
        if stg in self.instances:
            del self.instances[stg]
            return [f"adp_delete_mstp_instance {stg}"]
        self.instances[stg] = set()
        return [f"adp_create_mstp_instance {stg}"]

    def move(self):
        if not self.instances:
            return []
        stg = self.pick(self.instances)
        if self.instances[stg] and self.random.random() < 0.3:
            vid = self.pick(self.instances[stg])
            self.instances[stg].discard(vid)
            return [f"adp_del_msti_member {stg} {vid}"]
        vids = {vid for vids in self.instances.values() for vid in vids}
        vid = self.pick(vids) if vids and self.random.random() < 0.3 else self.random.choice(VIDS)
        for others in self.instances.values():
            others.discard(vid)
        self.instances[stg].add(vid)
        return [f"adp_add_msti_member {stg} {vid}"]

    def rule(self):
        submodule, entity = self.random.choice((3, 4, 6)), self.random.randrange(4)
        if (submodule, entity) in self.rules and self.random.random() < 0.7:
            self.rules.discard((submodule, entity))
            return [f"adp_fp_delete_entity_rule {submodule} {entity} 0"]
        self.rules.add((submodule, entity))
        return [f"adp_fp_add_entity_rule {{submodule_type={submodule} entity_id={entity} action_num=1 "
                f"actions=[{{type={DROP}}}]}}"]

    def group(self):
        key = f"01005e0102{self.random.randrange(8):02x}", 1
        if key in self.snooped:
            del self.snooped[key]
            return [f"adp_delete_igmpsn_group {key[0]} {key[1]}"]
        ports = set(self.some(USER_PORTS))
        intfs = list(ports)
        if self.trunks and self.random.random() < 0.3:
            group = self.pick(self.trunks)
            intfs.append(f"agg{group}")
            ports |= self.configured[group] or set(self.trunks[group])
        self.snooped[key] = ports
        return [f"adp_create_igmpsn_group {key[0]} {key[1]} {listed(intfs)}"]

    def group_members(self):
        if not self.snooped:
            return []
        key = self.pick(self.snooped)
        ports = self.snooped[key]
        if ports and self.random.random() < 0.5:
            leaving = self.some(ports)
            ports.difference_update(leaving)
            return [f"adp_del_igmpsn_member {key[0]} {key[1]} {listed(leaving)}"]
        joining = self.some(USER_PORTS)
        ports.update(joining)
        return [f"adp_add_igmpsn_member {key[0]} {key[1]} {listed(joining)} 0"]
