// A program that loads a library for itself alone, and with it libadp; twice, anew each time.
#include <dlfcn.h>
#include <stddef.h>

int main(int argc, char **argv) {
    for (int i = 0; i < 2; i++) {
        void *library = argc > 1 ? dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL) : NULL;
        if (library == NULL)
            return 1;
        int (*run)(int) = NULL;
        *(void **)&run = dlsym(library, "run_plugin");
        if (run(i) != 0 || dlclose(library) != 0)
            return 2;
    }
    return 0;
}
