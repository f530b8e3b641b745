// The functions to which the linker redirects the wrapped calls: they call the fake while it is on, else the system.
#include <sys/socket.h>
#include <unistd.h>

#include <stddef.h>
#include <cerrno>
#include <cstdarg>
#include <ctime>

#include "tests/support/fake_system.h"

namespace {

// The fake's own containers allocate too: these allocations are neither counted nor failed.
bool inside = false;

class Inside {
  public:
    Inside() : was_(inside) { inside = true; }
    ~Inside() { inside = was_; }
    Inside(const Inside &) = delete;
    Inside &operator=(const Inside &) = delete;

  private:
    bool was_;
};

/** The fake if it is on and does not make the call itself, else null. */
fake_system::System *fake() {
    return inside ? nullptr : fake_system::active;
}

}  // namespace

// The linker's names for the wrapped calls and the originals are fixed: they begin with two underscores.
extern "C" {

int __real_socket(int domain, int type, int protocol);
int __real_ioctl(int descriptor, unsigned long request, void *argument);
ssize_t __real_sendto(int descriptor, const void *data, size_t size, int flags, const sockaddr *to, socklen_t length);
int __real_close(int descriptor);
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void __real_free(void *memory);
int __real_usleep(useconds_t microseconds);
time_t __real_time(time_t *out);

int __wrap_socket(int domain, int type, int protocol);
int __wrap_ioctl(int descriptor, unsigned long request, ...);
ssize_t __wrap_sendto(int descriptor, const void *data, size_t size, int flags, const sockaddr *to, socklen_t length);
int __wrap_close(int descriptor);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void __wrap_free(void *memory);
int __wrap_usleep(useconds_t microseconds);
time_t __wrap_time(time_t *out);

int __wrap_socket(int domain, int type, int protocol) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_socket(domain, type, protocol);
    }
    const Inside guard;
    return system->socket(domain, type, protocol);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
    va_list values;
    va_start(values, request);
    void *argument = va_arg(values, void *);
    va_end(values);
    auto *system = fake();
    if (system == nullptr) {
        return __real_ioctl(descriptor, request, argument);
    }
    const Inside guard;
    return system->ioctl(descriptor, request, argument);
}

ssize_t __wrap_sendto(int descriptor, const void *data, size_t size, int flags, const sockaddr *to, socklen_t length) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_sendto(descriptor, data, size, flags, to, length);
    }
    const Inside guard;
    return system->sendto(descriptor, data, size, flags, to, length);
}

int __wrap_close(int descriptor) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_close(descriptor);
    }
    const Inside guard;
    return system->close(descriptor);
}

void *__wrap_malloc(size_t size) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_malloc(size);
    }
    const Inside guard;
    if (system->fails_allocation()) {
        errno = ENOMEM;
        return nullptr;
    }
    return system->allocated(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_calloc(count, size);
    }
    const Inside guard;
    if (system->fails_allocation()) {
        errno = ENOMEM;
        return nullptr;
    }
    return system->allocated(__real_calloc(count, size));
}

void __wrap_free(void *memory) {
    if (auto *system = fake()) {
        const Inside guard;
        system->freed(memory);
    }
    __real_free(memory);
}

int __wrap_usleep(useconds_t microseconds) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_usleep(microseconds);
    }
    const Inside guard;
    return system->usleep(microseconds);
}

time_t __wrap_time(time_t *out) {
    auto *system = fake();
    if (system == nullptr) {
        return __real_time(out);
    }
    const time_t now = system->time();
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

}  // extern "C"
