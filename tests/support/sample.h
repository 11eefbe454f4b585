// How much of what takes long is tried.
#ifndef ZYMDB_TESTS_SUPPORT_SAMPLE_H
#define ZYMDB_TESTS_SUPPORT_SAMPLE_H

// With a sanitizer, and on an emulated machine, a process takes many times as long to begin, to work and to
// end: what is tried is then a sample, one of so many, of what the build that is shipped stands.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ZYMDB_EMULATED)
inline constexpr int kSample = 5;
#else
inline constexpr int kSample = 1;
#endif

#endif
