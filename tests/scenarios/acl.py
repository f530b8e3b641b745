"""Rules of the field processor, removed after each scenario."""

from adp.lab.builds import Build
from adp.lab.rules import ALL_ONES, WORD_BITS, RuleText

REMARK_SUBMODULE = 1
REMARK_FORM_FIELD, REMARK_FORM_PORTS = 1, 7
REMARK_PRIORITY, REMARK_DSCP = 1, 2

# What the virtual device calls its actions.
SET_DSCP, SET_PRIORITY, TO_PORT, TO_PORTS, METER = 1, 11, 30, 33, 53
PERMIT, DROP, COPY_TO_CPU, TO_CPU, SET_VLAN, COUNT, MIRROR = 200, 201, 202, 203, 204, 205, 206
FRAMES, OCTETS = 0, 1


class Acl(RuleText):
    """The rules of one adpsh session."""

    def __init__(self, cpu, build):
        super().__init__(Build(build).byte_order)
        self._cpu = cpu
        self._rules = set()
        assert cpu.result("adp_fp_init") == 0

    # Rules

    def add_line(self, submodule, entity, *rest, **options):
        """The line that installs a rule, which tidy() removes."""
        self._rules.add((submodule, entity))
        return f"adp_fp_add_entity_rule {self.record(submodule, entity, *rest, **options)}"

    def add(self, submodule, entity, qualifiers=(), actions=(), priority=0):
        """Status of the installation."""
        return self._cpu.result(self.add_line(submodule, entity, qualifiers, actions, priority=priority))

    def install(self, *rule, **options):
        assert self.add(*rule, **options) == 0

    def delete(self, submodule, entity, action=0):
        self._rules.discard((submodule, entity))
        return self._cpu.result("adp_fp_delete_entity_rule", submodule, entity, action)

    def remark(self, rule, ports, kind, value, field=None, match=0, form=None):
        """Status of a remark rule. By default its form is 1 with a field to match, else 7."""
        self._rules.add((REMARK_SUBMODULE, rule))
        bits = sum(1 << (port - 1) for port in ports)
        usual = REMARK_FORM_PORTS if field is None else REMARK_FORM_FIELD
        return self._cpu.result(
            f"adp_add_remark_rule {{rule_id={rule} port_bitmap=[{bits >> WORD_BITS},{bits & ALL_ONES}]"
            f" remark_kind={kind} remark_value={value} rule_form={usual if form is None else form}"
            f" match_field={field or 0} match_value={self.block(match).ljust(8, b'.').hex()}}}"
        )

    def delete_remark(self, rule):
        self._rules.discard((REMARK_SUBMODULE, rule))
        return self._cpu.result("adp_del_remark_rule", rule)

    # What there is

    def count(self, counter):
        """(frames, octets) of a counter."""
        return tuple(self._cpu.result("adp_fp_get_statistics", counter, kind) for kind in (FRAMES, OCTETS))

    def listed_rules(self):
        """The number of rules in the library's list."""
        return self._cpu.call("show acl_fp_list_head")["value"]

    def entries(self):
        """The device's field entries by number."""
        return {row["entry"]: row for row in self._cpu.lab.device.control("fields")["fields"]}

    def meters(self):
        return {row["meter"]: row for row in self._cpu.lab.device.control("meters")["meters"]}

    def tidy(self):
        """Removes the rules one by one, so that the library frees them, then what remains in the device."""
        for submodule, entity in self._rules:
            self._cpu.result("adp_fp_delete_entity_rule", submodule, entity, METER)
        self._rules.clear()
        assert self.listed_rules() == 0
        assert self._cpu.result("adp_fp_init") == 0
