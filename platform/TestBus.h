/*
 * TestBus.h: the deterministic in-memory bus behind the event and process tables, for
 * unit tests and fuzzing. Other "applications" are records in a table; events sent to
 * them are kept for the test to read; the test can deliver events to this process as if
 * they came over the bus (they are dispatched by AEProcessEvents like any other).
 */
#ifndef TPX1_TESTBUS_H
#define TPX1_TESTBUS_H

#include "platform/AppleEvents.h"
#include "platform/Processes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Replace the D-Bus bus with the in-memory one (and back). Clears its tables. */
TPX1_API void PlatformBusUseMemory(void);
TPX1_API void PlatformBusUseDBus(void);
/* A running application on the memory bus. */
TPX1_API void PlatformMemoryBusAddApp(OSType signature, const char *name, const char *posixExecutable);
TPX1_API void PlatformMemoryBusRemoveApp(OSType signature);
/* When set, LaunchApplication on the memory bus makes the launched file's application
 * appear with this signature (0: launches fail with procNotFound... as a process that
 * never registers). The POSIX paths launched are recorded. */
TPX1_API void PlatformMemoryBusSetLaunchSignature(OSType signature);
TPX1_API int32_t PlatformMemoryBusLaunchCount(void);
TPX1_API const char *PlatformMemoryBusLaunchPath(int32_t i);
/* Events sent to applications on the memory bus, oldest first. TakeSent moves the oldest
 * event sent to signature (0: to anyone) into *event (dispose it with AEDisposeDesc);
 * errAEDescNotFound when none is waiting. */
TPX1_API int32_t PlatformMemoryBusSentCount(OSType signature);
TPX1_API OSErr PlatformMemoryBusTakeSent(OSType signature, AppleEvent *event);
/* Processes to which SetFrontProcess was applied, in order (signatures). */
TPX1_API int32_t PlatformMemoryBusFrontCount(void);
TPX1_API OSType PlatformMemoryBusFront(int32_t i);
/* Delivers an event to this process as if senderSignature had sent it over the bus. */
TPX1_API OSErr PlatformMemoryBusDeliver(const AppleEvent *event, OSType senderSignature);

#ifdef __cplusplus
}
#endif

#endif
