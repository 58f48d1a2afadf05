// SPDX-License-Identifier: Apache-2.0
//
// What a thread keeps from one call to the next, and how it is released when the thread ends.
//
// A thread-local object with a destructor would need the C++ runtime, which a C host does not have.
// So what is kept is a plain record, thread-local too, which the thread's list refers to.
#ifndef BASE_THREAD_MEMORY_H
#define BASE_THREAD_MEMORY_H

namespace libstr
{

struct KeptByThread {
    void (*release)(KeptByThread *kept); // null while the list does not have it
    KeptByThread *next;
};

// Has `release` called for the record when this thread ends; the record may then be kept anew.
// Does nothing for one that is kept already.  Returns false when the end of the thread cannot be
// watched.
bool KeepByThread(KeptByThread *kept, void (*release)(KeptByThread *kept));

} // namespace libstr

#endif
