// Clones of a kernel for processors with fused operations too. Only for sources whose fused operations round like the
// product and the sum that they stand for; they say why.
#pragma once

#include <orbimg/core/row_kernel.h>

#if defined(__x86_64__) && !defined(ORB_SANITIZED) && !defined(ORB_NO_CLONES)
#define ORB_WIDEST_CLONES __attribute__((target_clones("avx512f", "arch=haswell", "default")))
#else
#define ORB_WIDEST_CLONES
#endif
