// Makes the client at the first call.
#include "vdevice/remote/library.h"

#include <pthread.h>

#include "vdevice/remote/protocol.h"

namespace vdevice::remote {
namespace {

Client *make_client() {
    auto *client = new Client(vdevice_library_name(), driver_socket());
    // A fork while another thread is in a call would leave the child with a lock that nobody releases.
    pthread_atfork([] { library_client().lock(); }, [] { library_client().unlock(); },
                   [] { library_client().unlock(); });
    return client;
}

}  // namespace

Client &library_client() {
    // Never destroyed: other libraries may still call while the process ends.
    static Client *const client = make_client();
    return *client;
}

}  // namespace vdevice::remote
