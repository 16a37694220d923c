/*
 * BusHarness.h: what the messaging fault tests and the messaging benchmarks share on top
 * of ProcessHarness.h: this process playing the host, the real plug-in loaded through
 * the host core, its do-script events caught and run as "host scripts" by the caller,
 * the event loop pumped by hand.
 */
#ifndef TPX1_BUSHARNESS_H
#define TPX1_BUSHARNESS_H

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "ProcessHarness.h"
#include "host/HostCore.h"
#include "platform/MacTypes.h"

/* ---- The host ---- */
struct HarnessHost {
    HostPlugin plugin;
    bool loaded = false;
};
/* Declares signature as this process's, loads the plug-in, sends Init and installs the
 * do-script handler. */
bool HarnessHostStart(HarnessHost *host, const std::string &pluginPath, const char *signature, std::string *error);
/* Calls a plug-in function by display name; returns its result text (Mac Roman). */
std::string HarnessCall(HarnessHost *host, const char *function, const std::string &arg);
/* Waits at most waitMs for the event descriptor, then dispatches what waits. Returns the
 * number of events dispatched. */
int HarnessPump(int waitMs);
/* Idle at level 0, then dispatch (the do-script event the idle call may have sent). */
int HarnessIdle(HarnessHost *host);
/* The next host script a do-script event asked for. */
bool HarnessTakeScript(std::string *name);
/* Host blocks the plug-in holds now (handles and pointers). */
long HarnessLiveBlocks(void);
/* Pumps, idles and hands every script asked for to runScript until done() holds or
 * waitMs passed; true when done() held. */
bool HarnessRunUntil(HarnessHost *host, int waitMs, const std::function<bool()> &done,
                     const std::function<void(const std::string &)> &runScript = nullptr);
/* Shutdown and unload; returns the blocks the plug-in left behind. */
long HarnessHostStop(HarnessHost *host);

#endif
