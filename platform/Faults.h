/*
 * Faults.h: fault injection for every platform call. Each toolbox wrapper asks
 * PlatformFaultCheck with its own name ("FSRead", "HOpenDF", "AESend", ...) before it
 * calls the implementation; a test can make the Nth call of a named operation (counted
 * from the moment the fault is set) fail with a chosen Mac OS error, once or from then
 * on. The environment variable TPX1_FAULTS sets faults when the library loads, as a
 * comma-separated list of NAME:N:ERROR[:always], so that fmhost scripts can use them too.
 */
#ifndef TPX1_FAULTS_H
#define TPX1_FAULTS_H

#include "platform/MacTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Make call number nth (1 = the next one) of operation op fail with err; with
 * persistent set, that call and every later one fail. Replaces an earlier fault of op. */
TPX1_API void PlatformFaultSet(const char *op, int32_t nth, OSErr err, Boolean persistent);
/* Remove the fault of op, or every fault when op is NULL. Call counts restart at 0. */
TPX1_API void PlatformFaultClear(const char *op);
/* How many times op has been called since its fault was set or cleared (0 if never). */
TPX1_API int32_t PlatformFaultCalls(const char *op);
/* How many injected failures op has delivered so far. */
TPX1_API int32_t PlatformFaultHits(const char *op);
/* Called by a wrapper on entry: counts the call and returns the injected error or noErr. */
TPX1_API OSErr PlatformFaultCheck(const char *op);
/* Parse a TPX1_FAULTS-style list; returns 0, or -1 naming the bad item in *bad. */
TPX1_API int PlatformFaultParse(const char *theSpec, const char **bad);

#ifdef __cplusplus
}
#endif

#endif
