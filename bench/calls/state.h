/**
 * @file state.h
 * The state of the library's tables in which every call is recorded and measured: the default board's map, group 2 with
 * three members, group 8 with eight, and receivers for every kind of event.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Brings the exported tables into that state, whatever they held. Gives 0 when that succeeded. */
int bring_up(void);

#ifdef __cplusplus
}
#endif
