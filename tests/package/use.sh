#!/usr/bin/env bash
# In a fresh Debian: installs the packages, builds and runs the README's program with them, removes them, and compares
# the files with those before. use.sh ROOT
set -euo pipefail
. "$(dirname "$0")/inside.sh"
work=$root/tmp/adp
mkdir "$work"
fail() { echo "tests/package/use.sh: $*" >&2; exit 1; }

# What apt, dpkg and ldconfig keep for themselves is left out.
files() {
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./tmp -o -path ./var/cache -o -path ./var/log -o -path ./var/lib/apt \
        -o -path ./var/lib/dpkg \) -prune -o ! -path ./etc/ld.so.cache -printf '%p %y %m %u %l\n' -type f -path './etc/*' \
        -exec sha256sum {} +) | sort
}

inside apt-get update -qq
files >"$work/before"
mkdir "$work/packages"
cp build/packages/*_{"$(dpkg --print-architecture)",all}.deb "$work/packages"
rm "$work"/packages/*-dbgsym_*
inside sh -c 'apt-get install -y --no-install-recommends /tmp/adp/packages/*.deb'
[ -z "$(inside dpkg --audit)" ] || fail "packages are not whole"

for program in vdeviced vdevctl adpsh adptrace adp-lab adp-panel; do
    inside "$program" --help >"$work/help" || fail "$program --help"
    inside sh -c "test -e /usr/share/man/man?/$program.?.gz" || fail "$program has no manual page"
done
inside sh -c 'test -x "$(sed -n "s/^ExecStart=\([^ ]*\).*/\1/p" /lib/systemd/system/vdeviced.service)"' ||
    fail "the unit starts a program that is not there"

# The README's program and one in Python, and the device that it changes, in a network namespace of their own.
sed -n '/^```c file=build\/vlan.c$/,/^```$/p' README.md | sed '1d;$d' >"$work/vlan.c"
[ -s "$work/vlan.c" ] || fail "the README has no program vlan.c"
cat >"$work/run.sh" <<'RUN'
set -eu
cd /tmp/adp
gcc vlan.c -o vlan $(pkg-config --cflags --libs adp-virtual-device)
vdeviced --create-interfaces &
tries=0
until vdevctl version 2>/dev/null; do
    tries=$((tries + 1))
    [ "$tries" -lt 100 ] || exit 1
    sleep 0.1
done
./vlan
vdevctl vlans >vlans
echo 'adp_vlan_port_get 100' | adpsh
python3 -c 'import adp; adp.map_ports(); print(adp.vlan_port_get(100).members)' >members
kill $!
wait $!
RUN
inside unshare --net sh /tmp/adp/run.sh
grep -E '^ +100 +1-2 +1-2$' "$work/vlans" || { cat "$work/vlans"; fail "the program has not changed the device"; }
[ "$(cat "$work/members")" = 'PortSet({1, 2})' ] || fail "Python does not see what the program has changed"

inside sh -c 'apt-get purge -y --autoremove $(for file in /tmp/adp/packages/*.deb; do dpkg-deb -f "$file" Package; done)'
files >"$work/after"
diff "$work/before" "$work/after" || fail "files are left, or gone"
echo "installed, used and removed without a trace"
