// SPDX-License-Identifier: Apache-2.0
#include "base/thread_memory.h"

#include <atomic>
#include <pthread.h>

namespace libstr
{

namespace
{

thread_local KeptByThread *theKept;

pthread_once_t theStart = PTHREAD_ONCE_INIT;
pthread_key_t theKey; // its value tells only whether the thread is watched
bool theKeyIsMade;
std::atomic<bool> theCodeEnds; // with the process, or since it is unloaded

void ReleaseAll(void *)
{
    while (theKept != nullptr) {
        KeptByThread *const kept = theKept;
        void (*const release)(KeptByThread *) = kept->release;
        theKept = kept->next;
        *kept = {nullptr, nullptr};
        release(kept);
    }
}

void MakeKey() { theKeyIsMade = pthread_key_create(&theKey, ReleaseAll) == 0; }

// Code that is unloaded can release nothing.
[[gnu::destructor]] void DropKey()
{
    theCodeEnds = true;
    if (theKeyIsMade)
        pthread_key_delete(theKey);
}

bool IsWatched()
{
    if (theCodeEnds)
        return true;
    pthread_once(&theStart, MakeKey);
    return theKeyIsMade && (theKept != nullptr || pthread_setspecific(theKey, &theKey) == 0);
}

} // namespace

bool KeepByThread(KeptByThread *kept, void (*release)(KeptByThread *kept))
{
    if (kept->release != nullptr)
        return true;
    if (!IsWatched())
        return false;
    *kept = {release, theKept};
    theKept = kept;
    return true;
}

} // namespace libstr
