// Clang's thread-safety attributes, checked by a clang build with -Wthread-safety (tools/dev.sh
// test). Other compilers see nothing. Used through fmlib/mutex.h.
#pragma once

#if defined(__clang__)
#define RVL_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define RVL_THREAD_ANNOTATION(x)
#endif

#define CAPABILITY(name) RVL_THREAD_ANNOTATION(capability(name))
#define SCOPED_CAPABILITY RVL_THREAD_ANNOTATION(scoped_lockable)
#define GUARDED_BY(m) RVL_THREAD_ANNOTATION(guarded_by(m))
#define PT_GUARDED_BY(m) RVL_THREAD_ANNOTATION(pt_guarded_by(m))
#define REQUIRES(...) RVL_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) RVL_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) RVL_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) RVL_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define EXCLUDES(...) RVL_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS RVL_THREAD_ANNOTATION(no_thread_safety_analysis)
