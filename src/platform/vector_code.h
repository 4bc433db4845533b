// Marks short loops over many pixels: compilers make a second version of them for wider vectors, and the
// machine's own abilities choose between the two when the program starts.
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__GLIBC__) && \
    !defined(__SANITIZE_ADDRESS__)
#define VANTREL_VECTOR_CODE __attribute__((target_clones("avx2", "default")))
#else
#define VANTREL_VECTOR_CODE
#endif
