/* What the test program can be told to do, in its files. Each gives a status. */
#pragma once

enum { kMode = 3 };

int make_calls(void);
int call_back(void);
int use_threads(void);
int cancel_thread(void);
int interrupt_calls(void);
int jump_out(void);
int crash(void);
int kill_self(void);
int fork_child(void);
int execute_other(void);
int spawn_other(void);
int become_daemon(void);
int close_all(void);
int keep_errno(void);
int reach_limit(void);
int lower_limit(void);
int count_beyond(void);
int log_values(void);
int transfer_frames(void);

/* A port map of two ports, and a mode. 0 if all is well. */
int set_up(void);
