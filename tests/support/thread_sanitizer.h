// Included first in every file of the build with the thread sanitizer, which does not know pthread_mutex_clocklock():
// the standard library's timed mutexes then use a call that it does know.
#pragma once

#include <version>

#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK

// gcc's name for this build; clang has none.
#ifndef __SANITIZE_THREAD__
#define __SANITIZE_THREAD__ 1
#endif
