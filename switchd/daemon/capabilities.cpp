// By the kernel's own calls: the target has no library for them.
#include "switchd/daemon/capabilities.h"

#include <linux/capability.h>
#include <stdint.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "vdevice/io/error.h"

namespace switchd {
namespace {

constexpr std::array<unsigned long, 2> kKept = {CAP_NET_ADMIN, CAP_NET_RAW};

/** The words of the calls, 32 capabilities each. */
using Words = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

uint32_t bit_of(unsigned long capability) {
    return uint32_t{1} << (capability % 32);
}

__user_cap_header_struct this_thread() {
    __user_cap_header_struct header{};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    return header;
}

Words kept_words() {
    Words words{};
    for (const unsigned long capability : kKept) {
        auto &word = words[capability / 32];
        word.permitted |= bit_of(capability);
        word.effective |= bit_of(capability);
    }
    return words;
}

void check_permitted() {
    __user_cap_header_struct header = this_thread();
    Words now{};
    if (syscall(SYS_capget, &header, now.data()) != 0) {
        throw vdevice::io::error_from_errno("read the process's capabilities");
    }
    const Words wanted = kept_words();
    for (size_t i = 0; i < now.size(); ++i) {
        if ((wanted[i].permitted & ~now[i].permitted) != 0) {
            throw vdevice::io::Error{
                "adp-switchd needs the capabilities CAP_NET_ADMIN and CAP_NET_RAW. Run it as root, by its systemd unit "
                "or "
                "inside 'unshare -Urn'."};
        }
    }
}

/** Only who has CAP_SETPCAP can make the bounding set smaller; for others no_new_privs does the same. */
void limit_bounding_set() {
    for (unsigned long capability = 0; prctl(PR_CAPBSET_READ, capability, 0UL, 0UL, 0UL) >= 0; ++capability) {
        const bool is_kept = std::find(kKept.begin(), kKept.end(), capability) != kKept.end();
        if (!is_kept && prctl(PR_CAPBSET_DROP, capability, 0UL, 0UL, 0UL) != 0 && errno == EPERM) {
            return;
        }
    }
}

}  // namespace

void keep_network_capabilities() {
    check_permitted();
    limit_bounding_set();
    // Without inheritable capabilities there are no ambient ones.
    __user_cap_header_struct header = this_thread();
    const Words words = kept_words();
    if (prctl(PR_SET_NO_NEW_PRIVS, 1UL, 0UL, 0UL, 0UL) != 0 || syscall(SYS_capset, &header, words.data()) != 0) {
        throw vdevice::io::error_from_errno("give up capabilities");
    }
}

}  // namespace switchd
