// Reads the emulator's log of instructions from standard input. For each function that measure() calls it prints the
// name, the number of calls, and the number of instructions up to its returns.
//
// A line of the log is one instruction. It ends with the name of its function, if the program itself has that symbol.
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

/** The function's name in a line of the log, empty for none, or null when the line is no instruction. */
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

/** What is running: nothing of interest, measure() itself, or a function that it has called. */
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
