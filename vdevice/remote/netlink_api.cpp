// libnetlink_api of the virtual device: every driver call goes to the daemon.
#include "calls/stub.h"
#include "vdevice/remote/library.h"

const char *vdevice_library_name() {
    return "libnetlink_api";
}

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    return vdevice::remote::library_client().call(id, arguments);
}
