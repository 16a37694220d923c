/*
 * HostCore.h: the host side of the plug-in interface, shared by fmhost and the tests:
 * relocatable host memory behind the call block's callbacks (handles that move when
 * resized, locked handles that refuse to grow, new blocks filled with a pattern,
 * allocation failure injection, a leak report), and the calls a host makes to a plug-in
 * (Init, Idle, External, Shutdown, any raw selector). Texts here are Mac Roman.
 */
#ifndef TPX1_HOSTCORE_H
#define TPX1_HOSTCORE_H

#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>
#include "plugin/ExternalIds.h"
#include "text/FMXExtern.h"

/* ---- Host memory ---- */
enum HostFailMode { kHostFailOff = 0, kHostFailOnce = 1, kHostFailFromThenOn = 2 };
/* Fills the block's memory callbacks. */
void HostMemoryInstall(FMX_ExternCallBlock *block);
/* Makes allocation number nth (1 = the next new handle, handle growth or new pointer)
 * fail, once or from then on; kHostFailOff turns failures off. */
void HostMemorySetFailure(long nth, HostFailMode mode);
long HostMemoryAllocationCount(void);   /* allocations attempted since the last SetFailure */
long HostMemoryFailuresDelivered(void);
long HostMemoryLiveHandles(void);
long HostMemoryLivePointers(void);
/* Prints the handles and pointers still alive (one line each, with size and the first
 * bytes) and returns their number. */
long HostMemoryLeakReport(FILE *out);
/* Host-owned text handles (results and arguments are made by the host). */
FMX_Handle HostNewTextHandle(const std::string &bytes);
std::string HostHandleBytes(FMX_Handle h);
void HostDisposeHandle(FMX_Handle h);
/* While a handle is marked, the plug-in disposing of it is a fatal misuse (HostCallRaw
 * marks the argument and result handles for the length of the call). */
void HostMarkHandleInCall(FMX_Handle h, bool inCall);
/* Calls one external function of a core linked into this program directly (as the
 * plug-in's dispatcher does), with the argument as a NUL-terminated text handle; returns
 * the result handle's bytes. For tests and benchmarks of the core. */
std::string HostCallCoreFunction(void (*function)(long, char **, char **), long funcId, const std::string &argument);
/* The texts of the dialogs the platform's recorder took, in order; the record is emptied. */
std::vector<std::string> HostTakeRecordedDialogs(void);

/* ---- Calling a plug-in ---- */
struct HostPlugin {
    FMX_ExternCallProc entry = nullptr;
    void *library = nullptr;        /* dlopen handle, or null when linked in */
    int16_t resFileRef = -1;
    std::string path;
    std::string names[kFunctionCount]; /* display names from the resource file, "" if unknown */
    /* lower-cased display name -> function id, made from names at the first look-up */
    mutable std::unordered_map<std::string, int> ids;
};
/* dlopen a plug-in, find FMExternCallProc and open "<path>.rsrc" for its names.
 * Returns 0, or -1 with a message in *error. */
int HostLoadPlugin(const char *path, HostPlugin *plugin, std::string *error);
void HostUnloadPlugin(HostPlugin *plugin);
/* The raw call: a block with the host callbacks and the given fields; returns result.value. */
int32_t HostCallRaw(HostPlugin *plugin, uint8_t whichCall, int16_t hostVersion, int8_t parm1,
                    int32_t parm2, FMX_Handle parm3, FMX_Handle resultHandle);
int32_t HostInit(HostPlugin *plugin, int16_t hostVersion);
void HostIdle(HostPlugin *plugin, int8_t idleLevel);
/* External call: the argument handle is made from arg (without NUL); the result is the
 * result handle's bytes after the call. */
std::string HostCallExternal(HostPlugin *plugin, int32_t funcId, const std::string &arg);
void HostShutdown(HostPlugin *plugin);
/* Function id by display name (case-insensitive), -1 when unknown. */
int HostFunctionId(const HostPlugin *plugin, const std::string &name);

#endif
