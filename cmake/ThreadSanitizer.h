// ThreadSanitizer: comes first in every source of the tsan preset. The one of
// GCC 12 does not know pthread_mutex_clocklock(3) and takes a std::timed_mutex
// that was locked with it for unlocked; without it, the library uses
// pthread_mutex_timedlock(3), which it knows.
#pragma once

#include <cstddef>  // any header of the standard library: its configuration

#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
