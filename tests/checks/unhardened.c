/* A program built without any hardening, although it has a buffer that would be guarded: the check must say so. */
#include <stdio.h>
#include <string.h>

int main(int count, char **arguments) {
    char name[64];
    strncpy(name, arguments[count - 1], sizeof name - 1);
    name[sizeof name - 1] = '\0';
    return printf("%s\n", name) < 0;
}
