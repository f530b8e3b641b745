// A library with nothing in it: what loading costs that is not the library's.
int bench_size_empty(void);

int bench_size_empty(void) {
    return 0;
}
