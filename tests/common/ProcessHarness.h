/*
 * ProcessHarness.h: what the tests and benchmarks that run several processes share:
 * time and files, child processes with bounded waits, a private dbus-daemon at an
 * address of our choosing (so it can be stopped and started again at the same place),
 * and the reading of a vesk partner's log.
 */
#ifndef TPX1_PROCESSHARNESS_H
#define TPX1_PROCESSHARNESS_H

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

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
/* The same with standard input and output on pipes (*toChild, *fromChild). */
pid_t HarnessSpawnPiped(const std::vector<std::string> &argv, int *toChild, int *fromChild,
                        const std::string &errFile);
/* Polls every 20 ms until condition holds (true) or waitMs passed (false). */
bool HarnessWaitFor(int waitMs, const std::function<bool()> &condition);
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

/* ---- Reading a vesk partner's log ---- */
/* The message ids of the VESK events logged, in order. */
std::vector<std::string> HarnessLoggedIds(const std::string &log);
/* The logged line of the first VESK event with this id, or "". */
std::string HarnessLoggedEvent(const std::string &log, const std::string &id);

#endif
