#pragma once

/// Which lock guards what, as clang's thread-safety analysis checks it (./test --lint); nothing for
/// other compilers. See https://clang.llvm.org/docs/ThreadSafetyAnalysis.html.
#if defined(__clang__)
#define TONVALE_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define TONVALE_THREAD_SAFETY(attribute)
#endif

/// Of a variable: `mutex` must be held to use it; or to use what it points to.
#define GUARDED_BY(mutex) TONVALE_THREAD_SAFETY(guarded_by(mutex))
#define PT_GUARDED_BY(mutex) TONVALE_THREAD_SAFETY(pt_guarded_by(mutex))

/// Of a function or lambda: the caller must hold `mutex`; or must not.
#define REQUIRES(...) TONVALE_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) TONVALE_THREAD_SAFETY(locks_excluded(__VA_ARGS__))

/// Of the classes and functions of locks.
#define CAPABILITY(name) TONVALE_THREAD_SAFETY(capability(name))
#define SCOPED_CAPABILITY TONVALE_THREAD_SAFETY(scoped_lockable)
#define ACQUIRE(...) TONVALE_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) TONVALE_THREAD_SAFETY(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) TONVALE_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) TONVALE_THREAD_SAFETY(release_shared_capability(__VA_ARGS__))

/// Of a function that the analysis cannot follow; say why beside it.
#define NO_THREAD_SAFETY_ANALYSIS TONVALE_THREAD_SAFETY(no_thread_safety_analysis)
