#pragma once

// Internal to the library.
//
// A scope that holds the instance-content lock for writing around an
// instance handler, and the notifications that handler raises. Qt's recursive
// QReadWriteLock does not let a thread that holds it for writing lock it for
// reading, so a receiver connected directly that reads the instance under the
// lock would deadlock if a handler emitted while the router still held the
// write lock. Handlers therefore raise their notifications through notify():
// inside a section of the current thread they are queued and emitted, in
// order, right after the outermost section has released the lock; outside
// any section they are emitted at once.

#include "common/locking.h"

#include <functional>

class ContentWriteSection
{
public:
    ContentWriteSection();
    ~ContentWriteSection();
    ContentWriteSection(const ContentWriteSection&) = delete;
    ContentWriteSection& operator=(const ContentWriteSection&) = delete;

    // Runs `emitter` now, or after the current thread's outermost section.
    static void notify(std::function<void()> emitter);

private:
    AlgoLogic::WriteLocker m_locker;
};
