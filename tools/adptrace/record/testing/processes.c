// Threads, signals and processes of the program that the tests record.
#include <adp/adp.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <spawn.h>
#include <stddef.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/adptrace/record/testing/driver.h"
#include "tools/adptrace/record/testing/program.h"

enum { kThreads = 4, kCallsOfThread = 50, kInterrupted = 2000, kMicroseconds = 200, kStackOctets = 8192 };

extern char **environ;

static void *make_thread_calls(void *number) {
    for (uint32_t i = 0; i < kCallsOfThread; i++) {
        if (adp_double_tag_set(1, i) != 0)
            return number;
    }
    return NULL;
}

int use_threads(void) {
    pthread_t threads[kThreads];
    if (set_up() != 0)
        return 1;
    for (int i = 0; i < kThreads; i++)
        pthread_create(&threads[i], NULL, make_thread_calls, threads);
    int failed = 0;
    for (int i = 0; i < kThreads; i++) {
        void *result = NULL;
        pthread_join(threads[i], &result);
        failed |= result != NULL;
    }
    return failed;
}

static void *wait_in_driver(void *arguments) {
    adp_double_tag_set(1, DRIVER_WAITS);
    return arguments;
}

int cancel_thread(void) {
    pthread_t thread;
    if (set_up() != 0 || pthread_create(&thread, NULL, wait_in_driver, NULL) != 0)
        return 1;
    usleep(kMicroseconds);
    pthread_cancel(thread);
    void *result = NULL;
    pthread_join(thread, &result);
    return result == PTHREAD_CANCELED ? adp_double_tag_set(1, kMode) : 2;
}

static volatile int interrupts;

static void call_in_handler(int number) {
    (void)number;
    uint32_t mode = 0;
    adp_double_tag_get(1, &mode);
    interrupts++;
}

int interrupt_calls(void) {
    const struct itimerval often = {{0, kMicroseconds}, {0, kMicroseconds}};
    const struct itimerval never = {{0, 0}, {0, 0}};
    if (set_up() != 0)
        return 1;
    signal(SIGALRM, call_in_handler);
    setitimer(ITIMER_REAL, &often, NULL);
    int failed = 0;
    for (uint32_t i = 0; i < kInterrupted; i++)
        failed |= adp_double_tag_set(1, i % 2);
    setitimer(ITIMER_REAL, &never, NULL);
    return failed != 0 ? 2 : interrupts == 0;
}

static sigjmp_buf outside;

static void leave_call(int number) {
    (void)number;
    siglongjmp(outside, 1);
}

/* What was on the stack below is nothing any more. */
static int overwrite_stack(void) {
    volatile unsigned char octets[kStackOctets];
    for (size_t i = 0; i < sizeof octets; i++)
        octets[i] = UINT8_MAX;
    return octets[0] == UINT8_MAX;
}

int jump_out(void) {
    if (set_up() != 0)
        return 1;
    signal(SIGSEGV, leave_call);
    if (sigsetjmp(outside, 1) == 0)
        adp_double_tag_set(1, DRIVER_CRASHES);
    return overwrite_stack() ? adp_double_tag_set(2, kMode) : 2;
}

int crash(void) {
    return set_up() != 0 ? 1 : adp_double_tag_set(1, DRIVER_CRASHES);
}

int kill_self(void) {
    return make_calls() != 0 ? 1 : raise(SIGKILL);
}

static int status_of(pid_t child) {
    int status = 1;
    return waitpid(child, &status, 0) == child ? status : 1;
}

int fork_child(void) {
    if (set_up() != 0)
        return 1;
    const pid_t child = fork();
    if (child == 0)
        _exit(adp_double_tag_set(2, kMode) != 0);
    return status_of(child) != 0 ? 2 : adp_double_tag_set(1, kMode);
}

/* Another program, which the tests name. */
static char *const kOther[] = {(char[]){"sh"}, (char[]){"-c"}, (char[]){"exec $OTHER_PROGRAM"}, NULL};

int execute_other(void) {
    if (set_up() != 0)
        return 1;
    execv("/bin/sh", kOther);
    return 2;
}

int spawn_other(void) {
    pid_t child = 0;
    if (set_up() != 0 || posix_spawn(&child, "/bin/sh", NULL, NULL, kOther, environ) != 0)
        return 1;
    return status_of(child) != 0 ? 2 : adp_double_tag_set(1, kMode);
}

int become_daemon(void) {
    if (set_up() != 0 || daemon(0, 0) != 0)
        return 1;
    return adp_double_tag_set(1, kMode);
}
