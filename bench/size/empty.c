// An empty library: the cost of loading any library.
int bench_size_empty(void);

int bench_size_empty(void) {
    return 0;
}
