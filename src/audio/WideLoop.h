#pragma once

// Marks a function whose loop over a block of samples should also be compiled for AVX2 and for
// the AVX-512 level of x86-64 (v4); the loader picks the widest version the processor runs, once,
// when the program starts. Processors of the v4 level gain wider vectors, twice the vector
// registers and two-source shuffles; here that is about a twentieth of the analysis.
// Elsewhere (other architectures, or without the loader's support) the function is compiled once,
// as usual. MIRL_PLAIN_LOOPS builds the plain form everywhere, for bench/analysis to compare.
#if defined(__x86_64__) && defined(__ELF__) && defined(__GNUC__) && !defined(MIRL_PLAIN_LOOPS)
#define MIRL_WIDE_LOOP __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define MIRL_WIDE_LOOP
#endif

// Marks a helper of such a loop that takes or returns a vector value (GCC's vector_size types).
// It must be inlined, in every build: the helper itself is compiled for the baseline processor,
// and a vector value passed between a baseline function and an AVX version of the loop travels
// in different registers on each side of the call.
#if defined(__GNUC__)
#define MIRL_VECTOR_HELPER __attribute__((always_inline)) inline
#else
#define MIRL_VECTOR_HELPER inline
#endif
