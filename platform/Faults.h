/*
 * Faults.h: fault injection for the platform calls. Each call that can fail has a point
 * in FaultPoints.def; its wrapper asks PlatformFaultCheck(kFault<Name>) before it calls
 * the implementation. A test can make the Nth call of a point (counted from the moment
 * the fault is set) fail with a chosen Mac OS error, once or from then on. The
 * environment variable TPX1_FAULTS sets faults when the library loads, as a
 * comma-separated list of NAME:N:ERROR[:always], so that fmhost scripts can use them too.
 */
#ifndef TPX1_FAULTS_H
#define TPX1_FAULTS_H

#include "platform/MacTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum PlatformFaultPoint {
#define TPX1_FAULT_POINT(Name, Manager) kFault##Name,
#include "platform/FaultPoints.def"
#undef TPX1_FAULT_POINT
    kFaultPointCount
} PlatformFaultPoint;

typedef enum PlatformFaultManager {
    kFaultManagerFile,
    kFaultManagerEvent,
    kFaultManagerProcess,
    kFaultManagerResource,
    kFaultManagerDialog
} PlatformFaultManager;

/* The point's name ("FSRead"), or NULL for a number that names no point. */
TPX1_API const char *PlatformFaultPointName(int point);
TPX1_API PlatformFaultManager PlatformFaultPointManager(PlatformFaultPoint point);
/* The point called name, or -1 when there is none. */
TPX1_API int PlatformFaultPointNamed(const char *name);

/* Make call number nth (1 = the next one) of point fail with err; with persistent set,
 * that call and every later one fail. Replaces an earlier fault of the point. */
TPX1_API void PlatformFaultSet(PlatformFaultPoint point, int32_t nth, OSErr err, Boolean persistent);
/* Remove the fault of point; its call count restarts at 0. */
TPX1_API void PlatformFaultClear(PlatformFaultPoint point);
/* Remove every fault; every call count restarts at 0. */
TPX1_API void PlatformFaultClearAll(void);
/* How many times point has been called since its fault was last set or cleared. */
TPX1_API int32_t PlatformFaultCalls(PlatformFaultPoint point);
/* How many injected failures point has delivered since its fault was set. */
TPX1_API int32_t PlatformFaultHits(PlatformFaultPoint point);
/* Called by a wrapper on entry: counts the call and returns the injected error or noErr. */
TPX1_API OSErr PlatformFaultCheck(PlatformFaultPoint point);
/* Applies a TPX1_FAULTS-style list: every good item is set, even around bad ones. A
 * point holds one fault, so of two items naming the same point the later one wins.
 * Returns how many items were not applied (malformed, unknown point, or replaced by a
 * later item); report (when not NULL) receives one line for each, saying why, cut to
 * reportSize with "..." at the end. */
TPX1_API int PlatformFaultParse(const char *list, char *report, int32_t reportSize);

#ifdef __cplusplus
}
#endif

#endif
