/*
 * BusHarness.h: what the messaging fault tests and the messaging benchmarks share: a
 * private dbus-daemon at an address of our choosing (so it can be stopped and started
 * again at the same place), child processes with bounded waits, and this process playing
 * the host: the real plug-in loaded through the host core, its do-script events caught
 * and run as "host scripts" by the caller, the event loop pumped by hand.
 */
#ifndef TPX1_BUSHARNESS_H
#define TPX1_BUSHARNESS_H

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "host/HostCore.h"
#include "platform/MacTypes.h"

/* ---- Time, files, memory ---- */
uint64_t HarnessNowUsec(void);
std::string HarnessReadFile(const std::string &path);
void HarnessWriteFile(const std::string &path, const std::string &text, bool executable = false);
/* Resident set size in KiB of this process (pid 0) or another (from /proc/PID/statm). */
long HarnessResidentKiB(pid_t pid = 0);
/* True under the address sanitizer or valgrind, whose own bookkeeping (quarantine of
 * freed blocks) makes the resident size meaningless for leak checks. */
bool HarnessUnderMemoryChecker(void);
/* A program built beside the running executable (the build folder), or fallback. */
std::string HarnessSiblingPath(const char *name, const char *fallback);
/* Ends the process with a message when seconds pass before HarnessWatchdogOff (a hang
 * becomes a failure instead of a stuck run). */
void HarnessWatchdog(unsigned seconds, const char *what);
void HarnessWatchdogOff(void);

/* ---- Processes ---- */
/* Starts argv (environment inherited) with standard input from /dev/null and standard
 * output and error appended to the files ("" = /dev/null). */
pid_t HarnessSpawn(const std::vector<std::string> &argv, const std::string &outFile, const std::string &errFile);
/* Sends signal (0: none), then waits at most waitMs for the child to end; kills it when
 * it does not. Returns its exit status, 128 + signal when signalled, -1 when killed. */
int HarnessReap(pid_t pid, int signal, int waitMs);

/* ---- The private bus ---- */
struct HarnessDaemon {
    pid_t pid = -1;
    std::string address;
};
/* Starts dbus-daemon --session listening on the socket path and points
 * DBUS_SESSION_BUS_ADDRESS at it. False when it did not come up. */
bool HarnessDaemonStart(const std::string &socketPath, HarnessDaemon *daemon);
/* Stops it with signal (SIGTERM or SIGKILL) and waits for it. */
void HarnessDaemonStop(HarnessDaemon *daemon, int signal);

/* ---- The host ---- */
struct HarnessHost {
    HostPlugin plugin;
    bool loaded = false;
};
/* Declares signature as this process's, loads the plug-in, sends Init and installs the
 * do-script handler (and an activation counter). */
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
/* Times another process brought this one to the front, or it brought itself. */
long HarnessActivations(void);
/* Host blocks the plug-in holds now (handles and pointers). */
long HarnessLiveBlocks(void);
/* Pumps, idles and hands every script asked for to runScript until done() holds or
 * waitMs passed; true when done() held. */
bool HarnessRunUntil(HarnessHost *host, int waitMs, const std::function<bool()> &done,
                     const std::function<void(const std::string &)> &runScript = nullptr);
/* Shutdown and unload; returns the blocks the plug-in left behind. */
long HarnessHostStop(HarnessHost *host);

/* ---- Reading a vesk partner's log ---- */
/* The message ids of the VESK events logged, in order. */
std::vector<std::string> HarnessLoggedIds(const std::string &log);
/* The process id of the last "start" line, or -1. */
pid_t HarnessLoggedPid(const std::string &log);

#endif
