// Mutexes the thread-safety analysis can follow: the standard ones, declared as capabilities,
// with scoped locks that say what they hold.
#pragma once

#include <mutex>

#include "fmlib/thread_annotations.h"

namespace fmlib {

template <class StdMutex>
class CAPABILITY("mutex") BasicMutex {
public:
    void lock() ACQUIRE() { m_.lock(); }
    void unlock() RELEASE() { m_.unlock(); }
    bool try_lock() TRY_ACQUIRE(true) { return m_.try_lock(); }

private:
    StdMutex m_;
};

using Mutex = BasicMutex<std::mutex>;
// May be locked again by the thread that holds it. The analysis cannot count: it reports a
// function that takes it twice itself, not one that calls another that takes it.
using RecursiveMutex = BasicMutex<std::recursive_mutex>;

// Holds `m` from construction to destruction.
template <class M>
class SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(M& m) ACQUIRE(m) : m_(m) { m_.lock(); }
    ~ScopedLock() RELEASE() { m_.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    M& m_;
};

}  // namespace fmlib
