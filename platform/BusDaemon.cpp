/*
 * BusDaemon.cpp: a private session bus for a process that has none (fmhost without a
 * desktop session): dbus-daemon started for the life of the process, its address put in
 * DBUS_SESSION_BUS_ADDRESS for this process and the ones it launches, stopped at exit.
 * The daemon never outlives the process, however it ends: it gets SIGTERM as its
 * parent-death signal, and PlatformBusKillPrivateDaemon serves a signal handler.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"
#include "platform/Toolbox.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const int kDaemonStartMs = 10000;
/* Kept by PlatformResetAll: the private daemon runs until PlatformBusStopPrivateDaemon
 * or exit, and the exit hook is set once. Read by a signal handler too. */
volatile pid_t gDaemonPid = 0;
std::string gDaemonAddress;
bool gStopAtExit = false;

void StopAtExit(void)
{
    PlatformBusStopPrivateDaemon();
}

/* Reads the address line the daemon prints; "" when it does not come in time. */
std::string ReadAddress(int fd)
{
    std::string line;
    uint64_t deadline = BusDBusNowUsec() + (uint64_t)kDaemonStartMs * 1000u;
    while (line.find('\n') == std::string::npos) {
        uint64_t now = BusDBusNowUsec();
        if (now >= deadline) return "";
        struct pollfd pfd = {fd, POLLIN, 0};
        if (poll(&pfd, 1, (int)((deadline - now) / 1000) + 1) <= 0) continue;
        char buffer[256];
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n <= 0) return "";
        line.append(buffer, n);
    }
    return line.substr(0, line.find('\n'));
}

} // namespace

extern "C" {

OSErr PlatformBusStartPrivateDaemon(void)
{
    if (gDaemonPid) return noErr;
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return PlatformErrnoToOSErr(errno);
    fcntl(fds[1], F_SETFD, 0);
    char printAddress[64];
    snprintf(printAddress, sizeof printAddress, "--print-address=%d", fds[1]);
    pid_t parent = getpid();
    pid_t pid = fork();
    if (pid == 0) {
        /* Ends with its parent, whatever ends the parent (a crash, SIGKILL): the signal
         * comes when the thread that forked it ends, here the process's only one. */
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) _exit(0);
        int null = open("/dev/null", O_RDWR);
        dup2(null, 0);
        /* The daemon's own chatter (fd limits and the like) is not the user's business. */
        dup2(null, 2);
        execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", printAddress, (char *)nullptr);
        _exit(127);
    }
    int r = pid < 0 ? errno : 0;
    close(fds[1]);
    if (r) {
        close(fds[0]);
        fprintf(stderr, "%s: cannot start dbus-daemon: %s\n", program_invocation_short_name, strerror(r));
        return PlatformErrnoToOSErr(r);
    }
    std::string address = ReadAddress(fds[0]);
    close(fds[0]);
    gDaemonPid = pid;
    if (address.empty()) {
        PlatformBusStopPrivateDaemon();
        return connectionInvalid;
    }
    gDaemonAddress = address;
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    if (!gStopAtExit) {
        atexit(StopAtExit);
        gStopAtExit = true;
    }
    return noErr;
}

void PlatformBusKillPrivateDaemon(void)
{
    if (gDaemonPid > 0) kill(gDaemonPid, SIGTERM);
}

void PlatformBusStopPrivateDaemon(void)
{
    if (!gDaemonPid) return;
    kill(gDaemonPid, SIGTERM);
    int status;
    waitpid(gDaemonPid, &status, 0);
    gDaemonPid = 0;
    const char *current = getenv("DBUS_SESSION_BUS_ADDRESS");
    if (current && gDaemonAddress == current) unsetenv("DBUS_SESSION_BUS_ADDRESS");
    gDaemonAddress.clear();
}

} // extern "C"
