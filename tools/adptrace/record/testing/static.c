// A program without a loader.
int main(void) {
    return 0;
}
