// Names for clang's thread-safety attributes, so that a member's lock is part of its
// declaration. Nothing for other compilers.
#pragma once

#ifdef __clang__
#define KELP_TS(x) __attribute__((x))
#else
#define KELP_TS(x)
#endif

#define KELP_CAPABILITY(name) KELP_TS(capability(name))
#define KELP_SCOPED_CAPABILITY KELP_TS(scoped_lockable)
#define KELP_GUARDED_BY(lock) KELP_TS(guarded_by(lock))
#define KELP_REQUIRES(...) KELP_TS(requires_capability(__VA_ARGS__))
#define KELP_ACQUIRE(...) KELP_TS(acquire_capability(__VA_ARGS__))
#define KELP_TRY_ACQUIRE(...) KELP_TS(try_acquire_capability(__VA_ARGS__))
#define KELP_RELEASE(...) KELP_TS(release_capability(__VA_ARGS__))
#define KELP_EXCLUDES(...) KELP_TS(locks_excluded(__VA_ARGS__))
#define KELP_NO_ANALYSIS KELP_TS(no_thread_safety_analysis)
