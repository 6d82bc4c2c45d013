#pragma once

// Scoped lock guards used for every lock the library takes.
//
// They hold a QReadLocker / QWriteLocker / QMutexLocker and, in
// ThreadSanitizer builds only, tell the sanitizer about each acquisition and
// release. Qt's own lock code is not instrumented in distribution builds, so
// without these annotations the sanitizer cannot see that data written under
// a QReadWriteLock or QMutex is ordered, and reports races that are not
// there. Host code that reads instances under InstanceMgr::getLocker() can
// use the same guards so that its reads are checked as well.
//
// In other builds the annotations compile to nothing and the guards cost
// what the Qt lockers cost.

#include <QMutex>
#include <QMutexLocker>
#include <QReadLocker>
#include <QReadWriteLock>
#include <QWriteLocker>

#if defined(__SANITIZE_THREAD__)
#define ALGOLOGIC_TSAN_ANNOTATIONS 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ALGOLOGIC_TSAN_ANNOTATIONS 1
#endif
#endif

#ifdef ALGOLOGIC_TSAN_ANNOTATIONS
#include <sanitizer/tsan_interface.h>
#endif

namespace AlgoLogic {
namespace LockAnnotation {

enum class Mode { Exclusive, Shared };

#ifdef ALGOLOGIC_TSAN_ANNOTATIONS
inline unsigned flagsFor(Mode mode)
{
    return mode == Mode::Shared ? unsigned(__tsan_mutex_read_lock) : 0u;
}
inline void beforeLock(const void* lock, Mode mode)
{
    __tsan_mutex_pre_lock(const_cast<void*>(lock), flagsFor(mode));
}
inline void afterLock(const void* lock, Mode mode)
{
    __tsan_mutex_post_lock(const_cast<void*>(lock), flagsFor(mode), 0);
}
inline void beforeUnlock(const void* lock, Mode mode)
{
    __tsan_mutex_pre_unlock(const_cast<void*>(lock), flagsFor(mode));
}
inline void afterUnlock(const void* lock, Mode mode)
{
    __tsan_mutex_post_unlock(const_cast<void*>(lock), flagsFor(mode));
}
#else
inline void beforeLock(const void*, Mode) {}
inline void afterLock(const void*, Mode) {}
inline void beforeUnlock(const void*, Mode) {}
inline void afterUnlock(const void*, Mode) {}
#endif

// Evaluates to `lock` after announcing the acquisition, so that a guard can
// announce it before its Qt locker member is constructed.
template <typename Lock>
Lock* announceLock(Lock* lock, Mode mode)
{
    if (lock)
        beforeLock(lock, mode);
    return lock;
}

} // namespace LockAnnotation

// The shared state of the three guards: which lock, how, and whether held.
template <typename QtLocker, typename Lock, LockAnnotation::Mode mode>
class AnnotatedLocker
{
public:
    explicit AnnotatedLocker(Lock* lock)
        : m_lock(lock), m_locker(LockAnnotation::announceLock(lock, mode))
    {
        if (m_lock)
            LockAnnotation::afterLock(m_lock, mode);
    }
    ~AnnotatedLocker() { unlock(); }
    AnnotatedLocker(const AnnotatedLocker&) = delete;
    AnnotatedLocker& operator=(const AnnotatedLocker&) = delete;

    // Releases the lock before the end of the scope (no effect if released).
    void unlock()
    {
        if (!m_lock || !m_held)
            return;
        LockAnnotation::beforeUnlock(m_lock, mode);
        m_locker.unlock();
        LockAnnotation::afterUnlock(m_lock, mode);
        m_held = false;
    }
    // Takes the lock again after unlock() (no effect if held).
    void relock()
    {
        if (!m_lock || m_held)
            return;
        LockAnnotation::beforeLock(m_lock, mode);
        m_locker.relock();
        LockAnnotation::afterLock(m_lock, mode);
        m_held = true;
    }

private:
    Lock* m_lock;
    QtLocker m_locker;
    bool m_held = true;
};

using ReadLocker = AnnotatedLocker<QReadLocker, QReadWriteLock, LockAnnotation::Mode::Shared>;
using WriteLocker = AnnotatedLocker<QWriteLocker, QReadWriteLock, LockAnnotation::Mode::Exclusive>;
using MutexLocker = AnnotatedLocker<QMutexLocker, QMutex, LockAnnotation::Mode::Exclusive>;

} // namespace AlgoLogic
