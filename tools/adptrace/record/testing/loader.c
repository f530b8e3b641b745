// A program that loads libadp for itself alone: of the library's calls only those of the driver can be recorded.
#include <dlfcn.h>
#include <stddef.h>
#include <stdint.h>

enum { kPhysicalPort = 9, kMode = 3 };

int main(int argc, char **argv) {
    if (argc < 3 || dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL) == NULL)
        return 1;
    void *library = dlopen(argv[2], RTLD_LAZY | RTLD_LOCAL);
    if (library == NULL)
        return 2;
    int32_t (*count)(uint32_t) = NULL;
    int32_t (*add)(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t) = NULL;
    int32_t (*set)(uint32_t, uint32_t) = NULL;
    *(void **)&count = dlsym(library, "adp_set_max_phy_port_num");
    *(void **)&add = dlsym(library, "adp_add_phy_port");
    *(void **)&set = dlsym(library, "adp_double_tag_set");
    return count(1) != 0 || add(1, 0, 0, kPhysicalPort, 0) != 0 || set(1, kMode) != 0;
}
