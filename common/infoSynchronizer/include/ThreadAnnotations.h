// Which lock guards what, in a form that clang's thread-safety analysis checks.

#pragma once

// The analysis knows std::mutex only where the standard library annotates it: libc++ with
// _LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS. Everywhere else these macros are documentation.
#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
#define INFOSYNC_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define INFOSYNC_THREAD_ATTRIBUTE(attribute)
#endif

// A member that may be touched only while `mutex` is held.
#define INFOSYNC_GUARDED_BY(mutex) INFOSYNC_THREAD_ATTRIBUTE(guarded_by(mutex))
// A function that must be called with `mutex` held.
#define INFOSYNC_REQUIRES(mutex) INFOSYNC_THREAD_ATTRIBUTE(requires_capability(mutex))
// A function that takes `mutex` itself, so that the caller must not hold it.
#define INFOSYNC_EXCLUDES(mutex) INFOSYNC_THREAD_ATTRIBUTE(locks_excluded(mutex))
// A class whose objects hold a mutex from construction to destruction.
#define INFOSYNC_SCOPED_CAPABILITY INFOSYNC_THREAD_ATTRIBUTE(scoped_lockable)
#define INFOSYNC_ACQUIRE(mutex) INFOSYNC_THREAD_ATTRIBUTE(acquire_capability(mutex))
#define INFOSYNC_RELEASE() INFOSYNC_THREAD_ATTRIBUTE(release_capability())
// A function whose locking the analysis cannot follow. Each use says why.
#define INFOSYNC_NO_THREAD_SAFETY_ANALYSIS INFOSYNC_THREAD_ATTRIBUTE(no_thread_safety_analysis)
