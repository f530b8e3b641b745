// Makes the client at the first call.
#include "vdevice/remote/library.h"

#include <pthread.h>

#include "vdevice/sockets/run_dir.h"

namespace vdevice::remote {
namespace {

// Other libraries may still call while the process ends.
std::atomic<Client *> the_client{nullptr};

void start_client_anew_in_child() {
    if (Client *const client = the_client) {
        client->start_anew_in_child();
    }
}

// Registered before there is a client, so that no fork misses it.
[[maybe_unused]] const int kClientSeesForks = pthread_atfork(nullptr, nullptr, start_client_anew_in_child);

}  // namespace

std::unique_ptr<Client> make_client() {
    return std::make_unique<Client>(vdevice_library_name(), driver_socket(default_run_dir()));
}

Client &library_client() {
    return object_of_process(the_client, make_client);
}

}  // namespace vdevice::remote
