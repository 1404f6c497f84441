#pragma once

/// For Clang's thread-safety analysis: marks locks and the state that they guard. Empty for other compilers.
#if defined(__clang__)
#define VX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VX_THREAD_ANNOTATION(x)
#endif

#define VX_CAPABILITY(name) VX_THREAD_ANNOTATION(capability(name))
#define VX_SCOPED_CAPABILITY VX_THREAD_ANNOTATION(scoped_lockable)
#define VX_GUARDED_BY(lock) VX_THREAD_ANNOTATION(guarded_by(lock))
#define VX_PT_GUARDED_BY(lock) VX_THREAD_ANNOTATION(pt_guarded_by(lock))
#define VX_REQUIRES(...) VX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define VX_REQUIRES_SHARED(...) VX_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define VX_EXCLUDES(...) VX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define VX_ACQUIRE(...) VX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define VX_ACQUIRE_SHARED(...) VX_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define VX_RELEASE(...) VX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define VX_RELEASE_SHARED(...) VX_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define VX_TRY_ACQUIRE(...) VX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define VX_TRY_ACQUIRE_SHARED(...) VX_THREAD_ANNOTATION(try_acquire_shared_capability(__VA_ARGS__))
/// For the inside of a lock, which takes itself by other means than those that the analysis knows.
#define VX_NO_THREAD_SAFETY_ANALYSIS VX_THREAD_ANNOTATION(no_thread_safety_analysis)
