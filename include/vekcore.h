/** @file vekcore.h
 *  The core library: memory, thread count and cache size, used by vekvc and by callers who free what vekvc allocated.
 *  Plain C99; every function may be called from any number of threads at once.
 */
#ifndef VEKCORE_H
#define VEKCORE_H

#if defined(__GNUC__)
#define VEKCORE_API __attribute__((visibility("default")))
#else
#define VEKCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Allocates @p size bytes aligned to 64 bytes.
 *  @param size number of bytes; 0 or less gives a null pointer
 *  @return the memory, its content undefined, or a null pointer when there is none. Release it with vekFree().
 */
VEKCORE_API void* vekMalloc(int size);

/** Releases memory from vekMalloc().
 *  @param ptr a pointer from vekMalloc(); null is allowed and does nothing
 */
VEKCORE_API void vekFree(void* ptr);

/** The number of threads that the libraries may use.
 *  @return the number of processors on which this process may run, or the first number of the environment variable
 *          OMP_NUM_THREADS where that is smaller; at least 1
 */
VEKCORE_API int ownGetNumThreads(void);

/** The size of the processor's largest data cache.
 *  @param[out] pSize receives the size in bytes
 *  @return 0 on success; -8 if @p pSize is null; -2, with nothing written, if the system does not tell
 */
VEKCORE_API int vekGetMaxCacheSizeB(int* pSize);

#ifdef __cplusplus
}
#endif

#endif
