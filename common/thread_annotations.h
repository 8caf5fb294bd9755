// Names for clang's thread-safety analysis (-Wthread-safety); other compilers see nothing.
#pragma once

#if defined(__clang__)
#define K740_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define K740_THREAD_ATTRIBUTE(x)
#endif

#define K740_CAPABILITY(name) K740_THREAD_ATTRIBUTE(capability(name))
#define K740_SCOPED_CAPABILITY K740_THREAD_ATTRIBUTE(scoped_lockable)
#define K740_GUARDED_BY(lock) K740_THREAD_ATTRIBUTE(guarded_by(lock))
#define K740_REQUIRES(...) K740_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define K740_ACQUIRE(...) K740_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define K740_RELEASE(...) K740_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define K740_NO_THREAD_SAFETY_ANALYSIS K740_THREAD_ATTRIBUTE(no_thread_safety_analysis)
