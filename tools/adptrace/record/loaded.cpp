// Looks up the libraries of the process.
#include "tools/adptrace/record/loaded.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <stddef.h>
#include <stdint.h>

#include <cstring>
#include <string_view>
#include <vector>

namespace adptrace::record {
namespace {

size_t lasting_objects = 0;
const char kOwn = 0; /**< an address in this library */

/** Calls a function with each object in the order in which they were loaded, until it gives true. */
template <typename F>
void each_object(F function) {
    dl_iterate_phdr(
        [](struct dl_phdr_info *info, size_t, void *data) { return (*static_cast<F *>(data))(*info) ? 1 : 0; },
        &function);
}

bool has_address(const struct dl_phdr_info &object, const void *address) {
    const auto at = reinterpret_cast<uintptr_t>(address);
    for (size_t index = 0; index < object.dlpi_phnum; ++index) {
        const ElfW(Phdr) &segment = object.dlpi_phdr[index];
        const uintptr_t begin = object.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD && at >= begin && at - begin < segment.p_memsz) {
            return true;
        }
    }
    return false;
}

bool is_lasting(const void *address) {
    size_t index = 0;
    bool found = false;
    each_object([&](const struct dl_phdr_info &object) {
        found = has_address(object, address);
        return found || ++index == lasting_objects;
    });
    return found;
}

/** In a library that the program has loaded for itself alone (RTLD_LOCAL). */
void *find_in_each(const char *name) {
    std::vector<std::string> names;
    each_object([&](const struct dl_phdr_info &object) {
        if (!has_address(object, &kOwn) && object.dlpi_name != nullptr && *object.dlpi_name != '\0') {
            names.emplace_back(object.dlpi_name);
        }
        return false;
    });
    void *address = nullptr;
    for (const std::string &file : names) {
        if (void *handle = dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD); handle != nullptr) {
            address = dlsym(handle, name);
            dlclose(handle);
        }
        if (address != nullptr) {
            break;
        }
    }
    return address;
}

constexpr size_t aligned(size_t size) {
    return (size + sizeof(uint32_t) - 1) / sizeof(uint32_t) * sizeof(uint32_t);
}

std::string hexadecimal(const unsigned char *octets, size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    constexpr unsigned kNibble = 4;
    constexpr unsigned kMask = 0xF;
    std::string text;
    for (size_t index = 0; index < count; ++index) {
        text += kDigits[octets[index] >> kNibble];
        text += kDigits[octets[index] & kMask];
    }
    return text;
}

std::string build_id(const unsigned char *notes, size_t size) {
    while (size >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) note;
        std::memcpy(&note, notes, sizeof note);
        const size_t whole = sizeof note + aligned(note.n_namesz) + aligned(note.n_descsz);
        if (whole > size) {
            break;
        }
        if (note.n_type == NT_GNU_BUILD_ID) {
            return hexadecimal(notes + sizeof note + aligned(note.n_namesz), note.n_descsz);
        }
        notes += whole;
        size -= whole;
    }
    return {};
}

}  // namespace

void remember_loaded() {
    each_object([](const struct dl_phdr_info &) {
        ++lasting_objects;
        return false;
    });
}

std::string build_id_of_libadp() {
    std::string id;
    each_object([&](const struct dl_phdr_info &object) {
        const std::string_view name = object.dlpi_name == nullptr ? "" : object.dlpi_name;
        if (!name.substr(name.rfind('/') + 1).starts_with("libadp.so")) {
            return false;
        }
        for (size_t index = 0; index < object.dlpi_phnum && id.empty(); ++index) {
            const ElfW(Phdr) &segment = object.dlpi_phdr[index];
            if (segment.p_type == PT_NOTE) {
                id = build_id(reinterpret_cast<const unsigned char *>(object.dlpi_addr + segment.p_vaddr),
                              segment.p_memsz);
            }
        }
        return true;
    });
    return id;
}

void *Symbol::keep(void *address) {
    if (address != nullptr && is_lasting(address)) {
        lasting_.store(address, std::memory_order_release);
    }
    return address;
}

void *Symbol::function(const char *name) {
    if (void *known = lasting_.load(std::memory_order_acquire); known != nullptr) {
        return known;
    }
    void *next = dlsym(RTLD_NEXT, name);
    return keep(next != nullptr ? next : find_in_each(name));
}

void *Symbol::table(const char *name) {
    void *known = lasting_.load(std::memory_order_acquire);
    return known != nullptr ? known : keep(dlsym(RTLD_DEFAULT, name));
}

}  // namespace adptrace::record
