// The rights that the daemon keeps.
#pragma once

namespace switchd {

/**
 * Keeps CAP_NET_ADMIN and CAP_NET_RAW alone, for good: programs that this one starts get no others either. Rights are a
 * thread's, so this comes before the first further thread. Throws a vdevice::io::Error if one of the two is missing, or
 * others cannot be given up. As root, as root of a user namespace, and as a user with ambient capabilities.
 */
void keep_network_capabilities();

}  // namespace switchd
