// Reads the emulator's log of every instruction from standard input, and adds up those below measure(): for each
// function that measure() calls, its name, how often it was called and how many instructions that took, up to its
// return.
//
// A line of the log is one instruction and ends with the name of the function it belongs to, as far as the program's
// own symbols tell; those of libraries have none.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MEASURE "measure"
#define MOST_FUNCTIONS 4096
#define LONGEST_NAME 128
#define LONGEST_LINE 512

struct count {
    char name[LONGEST_NAME];
    unsigned long long calls;
    unsigned long long instructions;
};

static struct count counts[MOST_FUNCTIONS];
static size_t count_of_counts;

static struct count *find(const char *name) {
    for (size_t index = count_of_counts; index > 0; --index) {
        if (strcmp(counts[index - 1].name, name) == 0) {
            return &counts[index - 1];
        }
    }
    const size_t length = strlen(name);
    if (count_of_counts == MOST_FUNCTIONS || length >= LONGEST_NAME) {
        fprintf(stderr, "count_log: there is no room for %s\n", name);
        exit(EXIT_FAILURE);
    }
    memcpy(counts[count_of_counts].name, name, length + 1);
    return &counts[count_of_counts++];
}

/** The function's name in a line of the log, empty for none, or null when the line is another. */
static const char *name_in(char *line) {
    if (strncmp(line, "Trace ", strlen("Trace ")) != 0) {
        return NULL;
    }
    char *name = strchr(line, ']');
    if (name == NULL || name[1] != ' ') {
        return NULL;
    }
    name[strcspn(name, "\n")] = '\0';
    return name + 2;
}

/** What is under way: nothing, measure() itself, or a function that it has called. */
static struct count *follow(struct count *under_way, int *in_measure, const char *name) {
    if (strcmp(name, MEASURE) == 0) {
        *in_measure = 1;
        return NULL;
    }
    if (*in_measure) {
        *in_measure = 0;
        under_way = find(name);
        ++under_way->calls;
    }
    if (under_way != NULL) {
        ++under_way->instructions;
    }
    return under_way;
}

int main(void) {
    char line[LONGEST_LINE];
    struct count *under_way = NULL;
    int in_measure = 0;
    while (fgets(line, sizeof line, stdin) != NULL) {
        const char *name = name_in(line);
        if (name != NULL) {
            under_way = follow(under_way, &in_measure, name);
        }
    }
    for (size_t index = 0; index < count_of_counts; ++index) {
        printf("%s %llu %llu\n", counts[index].name, counts[index].calls, counts[index].instructions);
    }
    return EXIT_SUCCESS;
}
