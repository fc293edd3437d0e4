// The core library: aligned memory, thread count, cache size. See include/vekcore.h for the contracts.
#include "vekcore.h"

#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

#include <initializer_list>

namespace {

constexpr size_t kAlignment = 64;

// The first number of OMP_NUM_THREADS ("4", or "4,3" for nested regions); 0 if it is not set or not a positive number.
int threadsFromEnvironment() {
    const char* text = getenv("OMP_NUM_THREADS");
    if (text == nullptr) return 0;
    char* end = nullptr;
    const long count = strtol(text, &end, 10);
    return end != text && count > 0 && count < 0x7fffffff ? static_cast<int>(count) : 0;
}

int processorsOfThisProcess() {
#if defined(__linux__)
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) return CPU_COUNT(&set);
#endif
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<int>(online) : 1;
}

}  // namespace

void* vekMalloc(int size) {
    if (size <= 0) return nullptr;
    // aligned_alloc wants a multiple of the alignment.
    const size_t rounded = (static_cast<size_t>(size) + kAlignment - 1) & ~(kAlignment - 1);
    return aligned_alloc(kAlignment, rounded);
}

void vekFree(void* ptr) { free(ptr); }

int ownGetNumThreads(void) {
    const int processors = processorsOfThisProcess();
    const int wanted = threadsFromEnvironment();
    return wanted > 0 && wanted < processors ? wanted : processors;
}

int vekGetMaxCacheSizeB(int* pSize) {
    if (pSize == nullptr) return -8;
    long largest = 0;
#if defined(_SC_LEVEL1_DCACHE_SIZE)
    for (const int level : {_SC_LEVEL1_DCACHE_SIZE, _SC_LEVEL2_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE}) {
        const long size = sysconf(level);
        if (size > largest) largest = size;
    }
#endif
    if (largest <= 0) return -2;
    *pSize = largest < 0x7fffffff ? static_cast<int>(largest) : 0x7fffffff;
    return 0;
}
