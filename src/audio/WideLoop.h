#pragma once

// Marks a function whose loop over a row or block should also be compiled for AVX2 and for the
// AVX-512 level of x86-64 (v4); the loader picks the widest version the processor runs, once,
// when the program starts. Elsewhere (other architectures, or without the loader's support) the
// function is compiled once, as usual. The analysis does without it: there the copies did not
// show in the program's CPU time (see HACKING.md, Audio analysis).
#if defined(__x86_64__) && defined(__ELF__) && defined(__GNUC__)
#define MIRL_WIDE_LOOP __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define MIRL_WIDE_LOOP
#endif
