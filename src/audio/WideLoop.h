#pragma once

// Marks a function whose loop over a block of samples should also be compiled for AVX2; the
// loader picks the widest version the processor runs, once, when the program starts. Elsewhere
// (other architectures, or without the loader's support) the function is compiled once, as usual.
#if defined(__x86_64__) && defined(__ELF__) && defined(__GNUC__)
#define MIRL_WIDE_LOOP __attribute__((target_clones("avx2", "default")))
#else
#define MIRL_WIDE_LOOP
#endif
