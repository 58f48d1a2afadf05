// SPDX-License-Identifier: Apache-2.0
#include "str/core/exclusive.h"

#include <pthread.h>

namespace libstr::exclusive
{

namespace
{

pthread_mutex_t theMutex = PTHREAD_MUTEX_INITIALIZER;
thread_local int theDepth; // how often this thread has taken it
bool theForksAreWatched;

// A fork waits until the tables are whole.
void WatchForks()
{
    if (!theForksAreWatched)
        theForksAreWatched = pthread_atfork(Enter, Leave, Leave) == 0;
}

} // namespace

void Enter()
{
    if (theDepth++ != 0)
        return;
    pthread_mutex_lock(&theMutex);
    WatchForks();
}

void Leave()
{
    if (--theDepth == 0)
        pthread_mutex_unlock(&theMutex);
}

} // namespace libstr::exclusive
