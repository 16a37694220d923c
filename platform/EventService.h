/*
 * EventService.h: the tables behind the Apple Event Manager calls (AppleEvents.h) and the
 * Process Manager calls (Processes.h), and the few extra calls of the event service that
 * the host, the vesk tool and the tests use. The exported toolbox calls are thin
 * wrappers: a fault check under the call's own name, then the installed table.
 * PlatformInstallEvents / PlatformInstallProcesses swap a table and return the previous
 * one (NULL restores the default implementation and still returns the previous table).
 *
 * The default tables keep descriptors in memory and route events: an event addressed to
 * this process's own signature is queued in-process; any other goes to the bus (D-Bus,
 * or the in-memory test bus of TestBus.h).
 */
#ifndef TPX1_EVENTSERVICE_H
#define TPX1_EVENTSERVICE_H

#include "platform/AppleEvents.h"
#include "platform/Processes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Tpx1EventMethods {
    void (*xInitializeDesc)(AEDesc *desc);
    OSErr (*xCreateDesc)(DescType typeCode, const void *dataPtr, int32_t dataSize, AEDesc *result);
    OSErr (*xCreateAppleEvent)(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc *target,
                               int16_t returnID, int32_t transactionID, AppleEvent *result);
    OSErr (*xPutParamPtr)(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr,
                          int32_t dataSize);
    OSErr (*xGetParamPtr)(const AppleEvent *event, AEKeyword keyword, DescType desiredType,
                          DescType *actualType, void *dataPtr, int32_t maximumSize, int32_t *actualSize);
    OSErr (*xSizeOfParam)(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, int32_t *dataSize);
    OSErr (*xGetAttributePtr)(const AppleEvent *event, AEKeyword keyword, DescType desiredType,
                              DescType *typeCode, void *dataPtr, int32_t maximumSize, int32_t *actualSize);
    OSErr (*xCountItems)(const AEDesc *list, int32_t *count);
    OSErr (*xSend)(const AppleEvent *event, AppleEvent *reply, int32_t sendMode, int16_t sendPriority,
                   int32_t timeOutInTicks);
    OSErr (*xInstallEventHandler)(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                                  intptr_t refcon, Boolean isSysHandler);
    OSErr (*xRemoveEventHandler)(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                                 Boolean isSysHandler);
    OSErr (*xDisposeDesc)(AEDesc *desc);
    OSErr (*xCoerceDesc)(const AEDesc *desc, DescType toType, AEDesc *result);
    int (*xGetEventFD)(void);
    int32_t (*xProcessEvents)(void);
} Tpx1EventMethods;

typedef struct Tpx1ProcessMethods {
    OSErr (*xGetCurrentProcess)(ProcessSerialNumber *psn);
    OSErr (*xGetNextProcess)(ProcessSerialNumber *psn);
    OSErr (*xGetProcessInformation)(const ProcessSerialNumber *psn, ProcessInfoRec *info);
    OSErr (*xSetFrontProcess)(const ProcessSerialNumber *psn);
    OSErr (*xSameProcess)(const ProcessSerialNumber *a, const ProcessSerialNumber *b, Boolean *result);
    OSErr (*xLaunchApplication)(LaunchParamBlockRec *block);
} Tpx1ProcessMethods;

TPX1_API const Tpx1EventMethods *PlatformInstallEvents(const Tpx1EventMethods *methods);
TPX1_API const Tpx1ProcessMethods *PlatformInstallProcesses(const Tpx1ProcessMethods *methods);

/* ---- Reading an event whole (vesk, tests): parameter index (1-based) in the order the
 * parameters were put; errAEDescNotFound past the last one. The data is copied as it is
 * stored (no coercion); *actualSize is the full size even when maximumSize is smaller. */
TPX1_API OSErr PlatformEventGetNthParam(const AppleEvent *event, int32_t index, AEKeyword *keyword,
                                        DescType *typeCode, void *dataPtr, int32_t maximumSize,
                                        int32_t *actualSize);

/* ---- The D-Bus connection ----
 * PlatformBusClose flushes and closes the connection (it is opened again on the next
 * need); it also runs at exit. PlatformBusStartPrivateDaemon starts a private
 * dbus-daemon for the life of the process and sets DBUS_SESSION_BUS_ADDRESS to it (for
 * this process and everything it launches); PlatformBusStopPrivateDaemon stops it. The
 * address of the bus in use (or of the one that would be used) is PlatformBusAddress.
 * The private daemon ends when the process ends, even by a signal or a crash;
 * PlatformBusKillPrivateDaemon only sends it SIGTERM, which a signal handler may do.
 * PlatformBusOpen opens the connection now (again, if it was lost): noErr, or
 * connectionInvalid when there is no bus to reach (the reason went to stderr). */
TPX1_API OSErr PlatformBusOpen(void);
TPX1_API void PlatformBusClose(void);
TPX1_API OSErr PlatformBusStartPrivateDaemon(void);
TPX1_API void PlatformBusStopPrivateDaemon(void);
TPX1_API void PlatformBusKillPrivateDaemon(void);
TPX1_API const char *PlatformBusAddress(void);

/* Well-known bus name of a signature: "org.vesk.App.s" + 8 lowercase hex digits.
 * name must hold at least 23 bytes. */
TPX1_API void PlatformBusNameForSignature(OSType signature, char *name);

/* Whether this process owns the bus name of its signature (opening the bus if needed). */
TPX1_API Boolean PlatformBusOwnsSignatureName(void);

/* Blocks until an event or bus message is waiting or timeoutMs passed (-1: forever),
 * then runs AEProcessEvents. For programs whose whole loop is the bus (vesk); the host
 * polls AEGetEventFD itself. Returns the number of events dispatched. */
TPX1_API int32_t PlatformEventWait(int32_t timeoutMs);

/* Memory bus: documents handed to launched applications (POSIX path, "" for none). */
TPX1_API const char *PlatformMemoryBusLaunchDocument(int32_t i);

#ifdef __cplusplus
}
#endif

#endif
