// What the daemon and the keeper of its descriptors tell each other.
#pragma once

#include <stdint.h>
#include <optional>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace switchd {

enum class KeeperVerb : uint8_t {
    kHold, /**< with a descriptor; also the answer for each one held */
    kDrop,
    kList,
    kEnd, /**< the process's end; in an answer the end of the list */
};

struct KeeperMessage {
    KeeperVerb verb = KeeperVerb::kEnd;
    std::string name;
    vdevice::UniqueFd fd;
};

/** Makes the calls below wait, but not for ever. */
void wait_on(int socket);
/** False if nobody is there, or nobody reads. */
bool send_message(int socket, KeeperVerb verb, const std::string &name = "", int fd = -1);
/** Nothing if nobody is there, nobody sends, or it is no message. */
std::optional<KeeperMessage> receive_message(int socket);

}  // namespace switchd
