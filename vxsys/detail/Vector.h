#pragma once

// VX_VECTOR_PATHS: whether code for SSE2 is compiled. The build option VX_VECTOR=OFF leaves it out, so that the scalar
// code that replaces it is tested on the same machine. VX_VECTOR=128 (VX_NO_AVX512) does so for AVX-512, which is used
// where the processor has it.
#if defined(__SSE2__) && !defined(VX_NO_VECTOR)
#define VX_VECTOR_PATHS 1
#else
#define VX_VECTOR_PATHS 0
#endif
