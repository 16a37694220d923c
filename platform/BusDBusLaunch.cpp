/*
 * BusDBusLaunch.cpp: LaunchApplication on the bus: starts the executable detached (its
 * own session, standard input, output and error on /dev/null, the document's POSIX path
 * as its first argument, the bus address and the application file it was launched as
 * in its environment) and waits, bounded by TPX1_LAUNCH_TIMEOUT_MS (default 5000), until
 * the new process owns a name on the bus. An application is started once: while an
 * earlier copy is still starting (alive, not on the bus yet), a launch waits for that
 * copy instead. A copy that is slow to join is left to finish starting, never killed.
 * Started children are reaped when they end; one that ends before it joined the bus is
 * reported with its exit status.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

const int32_t kDefaultLaunchTimeoutMs = 5000;
const uint64_t kSayWaitingAfterUsec = 1000000;

struct Child {
    pid_t pid;
    std::string executable;
    bool joined;     /* seen owning a name on the bus */
};
/* Kept by PlatformResetAll: a child is reaped when it ends, forgotten it would linger. */
std::vector<Child> gChildren;

int32_t LaunchTimeoutMs(void)
{
    const char *setting = PlatformSetting("TPX1_LAUNCH_TIMEOUT_MS");
    if (!setting || !*setting) return kDefaultLaunchTimeoutMs;
    long value = strtol(setting, nullptr, 10);
    return value > 0 ? (int32_t)value : kDefaultLaunchTimeoutMs;
}

/* The environment of the child: ours, with the address of the bus we are on, and
 * TPX1_APP_PATH naming the file it was launched as. An application started through a
 * wrapper script then reports the script, the file a relaunch must start, and not the
 * program the script runs; nor does it inherit the path this process poses as. */
std::vector<std::string> ChildEnvironment(const std::string &executable)
{
    std::vector<std::string> env;
    const char *busKey = "DBUS_SESSION_BUS_ADDRESS=", *appKey = "TPX1_APP_PATH=";
    for (char **p = environ; p && *p; p++)
        if (strncmp(*p, busKey, strlen(busKey)) != 0 && strncmp(*p, appKey, strlen(appKey)) != 0)
            env.push_back(*p);
    const char *address = PlatformBusAddress();
    if (address) env.push_back(std::string(busKey) + address);
    env.push_back(std::string(appKey) + executable);
    return env;
}

OSErr Spawn(const std::string &executable, const std::string &document, pid_t *child)
{
    std::vector<std::string> env = ChildEnvironment(executable);
    std::vector<char *> envp;
    for (std::string &s : env) envp.push_back(&s[0]);
    envp.push_back(nullptr);
    std::vector<char *> argv;
    std::string program = executable, doc = document;
    argv.push_back(&program[0]);
    if (!doc.empty()) argv.push_back(&doc[0]);
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&actions);
    /* A launched application is on its own, as on the desktop: it does not write into
     * the host's terminal or pipes (which would keep a pipeline open after the host). */
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_init(&attr);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &all);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    int r = posix_spawn(child, executable.c_str(), &actions, &attr, argv.data(), envp.data());
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&actions);
    if (r) return PlatformErrnoToOSErr(r);
    gChildren.push_back(Child{*child, executable, false});
    return noErr;
}

/* "TOPOLUX (Linux:opt:TOPOLUX Folder:TOPOLUX)": the application's name and classic path. */
std::string Describe(const std::string &executable)
{
    std::string name = executable.substr(executable.rfind('/') + 1);
    char classic[1024];
    std::string where = executable;
    if (PlatformPOSIXPathToClassic(executable.c_str(), classic, sizeof classic) == noErr) {
        char utf8[3 * sizeof classic];
        if (PlatformMacRomanToUTF8(classic, (int32_t)strlen(classic), utf8, sizeof utf8) >= 0) where = utf8;
    }
    return BusDBusPrintable(name) + " (" + BusDBusPrintable(where) + ")";
}

Child *FindChild(pid_t pid)
{
    for (Child &child : gChildren)
        if (child.pid == pid) return &child;
    return nullptr;
}

/* A copy of the executable that was started and has not joined the bus yet. */
Child *StartingCopy(const std::string &executable)
{
    for (Child &child : gChildren)
        if (!child.joined && child.executable == executable) return &child;
    return nullptr;
}

/* Reaps the child if it ended: true then, after reporting a child that ended before it
 * joined the bus. */
bool ChildEnded(pid_t pid)
{
    int status;
    if (waitpid(pid, &status, WNOHANG) != pid) return false;
    Child *child = FindChild(pid);
    if (!child) return true;
    if (!child->joined) {
        std::string how = WIFEXITED(status) ? "with exit status " + std::to_string(WEXITSTATUS(status))
                                            : "by signal " + std::to_string(WTERMSIG(status));
        fprintf(stderr, "%s: %s ended %s before it joined the bus\n", program_invocation_short_name,
                Describe(child->executable).c_str(), how.c_str());
    }
    gChildren.erase(gChildren.begin() + (child - gChildren.data()));
    return true;
}

} // namespace

OSErr BusDBusLaunch(const std::string &executable, const std::string &document, OSType expected,
                    ProcessSerialNumber *psn)
{
    OSErr err = BusDBusEnsure(false);
    if (err) return err;
    if (access(executable.c_str(), X_OK) != 0) return PlatformErrnoToOSErr(errno);
    /* A copy still starting is waited for, not doubled (the document it was started
     * with, if any, is the one it gets). */
    Child *starting = StartingCopy(executable);
    if (starting && ChildEnded(starting->pid)) starting = nullptr;
    pid_t child = starting ? starting->pid : 0;
    if (!starting && (err = Spawn(executable, document, &child)) != noErr) return err;
    int32_t timeoutMs = LaunchTimeoutMs();
    uint64_t start = BusDBusNowUsec(), deadline = start + (uint64_t)timeoutMs * 1000u;
    bool saidWaiting = false;
    for (;;) {
        BusDBusDrain();
        sd_bus *bus = BusDBusConnection();
        if (!bus) return connectionInvalid;
        if (BusDBusFindByPid(child, expected, psn)) {
            if (FindChild(child)) FindChild(child)->joined = true;
            BusDBusDrain();
            return noErr;
        }
        if (ChildEnded(child)) return procNotFound;
        uint64_t now = BusDBusNowUsec();
        if (now >= deadline) {
            fprintf(stderr, "%s: %s did not join the bus within %d ms; it is left to finish starting\n",
                    program_invocation_short_name, Describe(executable).c_str(), (int)timeoutMs);
            return procNotFound;
        }
        if (!saidWaiting && now - start >= kSayWaitingAfterUsec) {
            fprintf(stderr, "%s: waiting for %s to join the bus\n", program_invocation_short_name,
                    Describe(executable).c_str());
            saidWaiting = true;
        }
        uint64_t wait = deadline - now;
        if (wait > 50000) wait = 50000;
        struct pollfd pfd = {sd_bus_get_fd(bus), (short)sd_bus_get_events(bus), 0};
        poll(&pfd, 1, (int)((wait + 999) / 1000));
    }
}

void BusDBusReapChildren(void)
{
    ProcessSerialNumber psn;
    for (size_t i = gChildren.size(); i-- > 0;) {
        pid_t pid = gChildren[i].pid;
        if (!gChildren[i].joined && BusDBusFindByPid(pid, 0, &psn)) gChildren[i].joined = true;
        ChildEnded(pid);
    }
}
