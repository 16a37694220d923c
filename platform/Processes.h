/*
 * Processes.h: the Process Manager calls the core uses. On Linux an application is
 * "running" when it owns its signature's name on the message bus; the process table is
 * kept current from the bus's name-owner signals. The host declares its own signature
 * (PlatformSetProcessSignature) before it loads a plug-in.
 */
#ifndef TPX1_PROCESSES_H
#define TPX1_PROCESSES_H

#include "platform/MacTypes.h"
#include "platform/Files.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ProcessSerialNumber {
    uint32_t highLongOfPSN;
    uint32_t lowLongOfPSN;
} ProcessSerialNumber;

enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

typedef struct ProcessInfoRec {
    uint32_t processInfoLength;        /* set by the caller (60) */
    StringPtr processName;             /* NULL or a 256-byte buffer: Pascal string */
    ProcessSerialNumber processNumber;
    OSType processType;
    OSType processSignature;
    uint32_t processMode;
    int32_t processPID;                /* Linux: the process id */
    FSSpec *processAppSpec;            /* NULL or the application file's FSSpec */
} ProcessInfoRec;

TPX1_API OSErr GetCurrentProcess(ProcessSerialNumber *psn);
/* From kNoProcess: the first process; procNotFound after the last. */
TPX1_API OSErr GetNextProcess(ProcessSerialNumber *psn);
TPX1_API OSErr GetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info);
TPX1_API OSErr SetFrontProcess(const ProcessSerialNumber *psn);
TPX1_API OSErr SameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b, Boolean *result);

enum { extendedBlock = 0x4C43, extendedBlockLen = 32 };
enum { launchContinue = 0x4000, launchNoFileFlags = 0x0800, launchDontSwitch = 0x0200 };

typedef struct AppParameters AppParameters;   /* opaque: from AECoerceDesc(..., 'appa') */

typedef struct LaunchParamBlockRec {
    uint32_t reserved1;
    uint16_t reserved2;
    uint16_t launchBlockID;
    uint32_t launchEPBLength;
    uint16_t launchFileFlags;
    uint16_t launchControlFlags;
    FSSpec *launchAppSpec;
    ProcessSerialNumber launchProcessSN;     /* out */
    uint32_t launchPreferredSize;
    uint32_t launchMinimumSize;
    uint32_t launchAvailableSize;
    AppParameters *launchAppParameters;
} LaunchParamBlockRec;

/* Starts the application file and waits until it is on the bus; without launchDontSwitch
 * in launchControlFlags it is then activated. procNotFound: a process was started (or an
 * earlier copy, still starting, was waited for) but did not join the bus in time or
 * ended first; a copy still starting is never started again. Any other error: nothing
 * was started. */
TPX1_API OSErr LaunchApplication(LaunchParamBlockRec *block);

/* The host's identity: its signature (and so its bus name) and, optionally, a name. */
TPX1_API void PlatformSetProcessSignature(OSType signature);
TPX1_API OSType PlatformProcessSignature(void);
/* Called when another process brings this one to the front (SetFrontProcess). */
typedef void (*PlatformActivateProc)(void);
TPX1_API void PlatformSetActivateHandler(PlatformActivateProc proc);

#ifdef __cplusplus
}
#endif

#endif
