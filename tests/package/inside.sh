# Sourced by what script/package runs with the folder of a fresh Debian: a command inside it, without this machine's
# environment.
root=$1
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
mount -t proc proc "$root/proc"
cp /etc/resolv.conf "$root/etc/"
