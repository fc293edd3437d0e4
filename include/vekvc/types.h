/** @file types.h
 *  Element types, region size, status codes and the version record of vekvc. Plain C99; usable from C and C++.
 */
#ifndef VEKVC_TYPES_H
#define VEKVC_TYPES_H

#include <stdint.h>

/** Stands before every function of the library. */
#if defined(__GNUC__)
#define VEKVC_API __attribute__((visibility("default")))
#else
#define VEKVC_API
#endif

/** The version of these headers. The library that runs tells its own: vekvcGetLibVersion. */
#define VEKVC_VERSION_MAJOR 6
#define VEKVC_VERSION_MINOR 1 /**< grows with each release that adds functions */

#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t Vek8u;   /**< 8 bits, unsigned; "8u" in a name */
typedef int16_t Vek16s;  /**< 16 bits, signed; "16s" in a name */
typedef uint16_t Vek16u; /**< 16 bits, unsigned; "16u" in a name */
typedef int32_t Vek32s;  /**< 32 bits, signed; "32s" in a name */
typedef uint32_t Vek32u; /**< 32 bits, unsigned; "32u" in a name */
typedef float Vek32f;    /**< IEEE single precision */

/** A region's size, passed by value. Compared as signed values: a negative field fails like a zero one. */
typedef struct {
    Vek32s width;  /**< samples per row */
    Vek32s height; /**< rows */
} VekiSize;

/** What an export reports. Zero is success; a negative value is an error, found before any work unless the export says
 *  otherwise; a positive value is a warning: the work was done, with the reservation that the code names. */
typedef enum {
    vekStsOk = 0,                         /**< success */
    vekStsWrnUnavailableNeighbour = 11,   /**< done; a prediction used 128 for neighbours marked unavailable */
    vekStsWrnOddSize = 35,                /**< done; the region's width or height was odd */
    vekStsErrUnsupported = -2,            /**< the operation is not provided for these arguments */
    vekStsErrBadArg = -5,                 /**< a selector outside its set of values */
    vekStsErrSize = -6,                   /**< a size or count is zero, negative or too small */
    vekStsErrNullPtr = -8,                /**< a pointer is null */
    vekStsErrMemAlloc = -9,               /**< an allocation failed */
    vekStsErrDivByZero = -10,             /**< a divisor is zero */
    vekStsErrOutOfRange = -11,            /**< a number is outside its range */
    vekStsErrStep = -14,                  /**< a row step is too small for the width */
    vekStsErrContextMatch = -17,          /**< a state buffer was not initialised for this operation */
    vekStsErrInterpolation = -22,         /**< an interpolation selector outside its set of values */
    vekStsErrResizeFactor = -23,          /**< a resize factor outside its set of values */
    vekStsErrVlcData = -74,               /**< no valid variable-length code at the cursor */
    vekStsErrUnavailableNeighbour = -117, /**< an intra mode needs neighbours marked unavailable */
    vekStsErrCoeffDecode = -191,          /**< no valid coefficient code */
    vekStsErrQPRange = -192,              /**< a quantiser parameter outside the standard's range */
    vekStsErrBitOffset = -193             /**< the bit offset of a byte cursor is outside 0..7 */
} VekStatus;

/** The version record; constant, alive as long as the library is loaded. */
typedef struct {
    Vek32s versionMajor;     /**< 6 */
    Vek32s versionMinor;     /**< 1 */
    Vek32s buildMajor;       /**< 137 */
    Vek32s buildNumber;      /**< 779 */
    char cpuCode[4];         /**< the variant's two-letter code, zero-filled: "px", "sf", "av" or "az" */
    const char* libraryName; /**< the variant's own file name */
    const char* versionText; /**< "6.1 build 137.36" */
    const char* buildDate;   /**< "Sep 29 2009" */
} VekLibraryVersion;

/** The version record of the loaded library: which variant runs, and its version.
 *  @return always the same pointer; do not modify or free it
 */
VEKVC_API const VekLibraryVersion* vekvcGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
