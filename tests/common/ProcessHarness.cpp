/*
 * ProcessHarness.cpp: time, files, child processes, a private dbus-daemon and the
 * reading of vesk partner logs, for the tests and benchmarks that run several
 * processes (see ProcessHarness.h).
 */
#include "ProcessHarness.h"

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

const int kDaemonStartMs = 10000;
const char *gWatchdogWhat = "";

void OnWatchdog(int)
{
    static const char head[] = "\nwatchdog: no progress in time: ";
    (void)!write(2, head, sizeof head - 1);
    (void)!write(2, gWatchdogWhat, strlen(gWatchdogWhat));
    (void)!write(2, "\n", 1);
    _exit(124);
}

int OpenForAppend(const std::string &file)
{
    return open(file.empty() ? "/dev/null" : file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
}

/* In a forked child: standard input, output and error from the descriptors, nothing
 * else open, then argv. */
[[noreturn]] void ExecChild(const std::vector<std::string> &argv, int in, int out, int err)
{
    dup2(in, 0);
    dup2(out, 1);
    dup2(err, 2);
    for (int fd = 3; fd < 1024; fd++) close(fd);
    std::vector<char *> args;
    for (const std::string &a : argv) args.push_back(const_cast<char *>(a.c_str()));
    args.push_back(nullptr);
    execvp(args[0], args.data());
    _exit(127);
}

} // namespace

uint64_t HarnessNowUsec(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (uint64_t)ts.tv_sec * 1000000u + (uint64_t)ts.tv_nsec / 1000u;
}

std::string HarnessReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void HarnessWriteFile(const std::string &path, const std::string &text, bool executable)
{
    std::ofstream(path, std::ios::binary) << text;
    if (executable) chmod(path.c_str(), 0755);
}

long HarnessResidentKiB(pid_t pid)
{
    long pages = 0, resident = 0;
    std::string path = pid ? "/proc/" + std::to_string(pid) + "/statm" : "/proc/self/statm";
    FILE *f = fopen(path.c_str(), "r");
    if (!f) return -1;
    if (fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = -1;
    fclose(f);
    return resident < 0 ? -1 : resident * (sysconf(_SC_PAGESIZE) / 1024);
}

bool HarnessUnderMemoryChecker(void)
{
#if defined(__SANITIZE_ADDRESS__)
    return true;
#else
    const char *preload = getenv("LD_PRELOAD");
    return preload && strstr(preload, "vgpreload") != nullptr;
#endif
}

std::string HarnessSiblingPath(const char *name, const char *fallback)
{
    char exe[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n > 0) {
        std::string path(exe, (size_t)n);
        std::string candidate = path.substr(0, path.rfind('/') + 1) + name;
        if (access(candidate.c_str(), R_OK) == 0) return candidate;
    }
    return fallback ? fallback : name;
}

void HarnessWatchdog(unsigned seconds, const char *what)
{
    gWatchdogWhat = what;
    signal(SIGALRM, OnWatchdog);
    alarm(seconds);
}

void HarnessWatchdogOff(void)
{
    alarm(0);
}

pid_t HarnessSpawn(const std::vector<std::string> &argv, const std::string &outFile, const std::string &errFile)
{
    pid_t pid = fork();
    if (pid != 0) return pid;
    ExecChild(argv, open("/dev/null", O_RDONLY), OpenForAppend(outFile), OpenForAppend(errFile));
}

int HarnessReap(pid_t pid, int signal, int waitMs)
{
    if (pid <= 0) return -1;
    if (signal) kill(pid, signal);
    int status = 0;
    uint64_t deadline = HarnessNowUsec() + (uint64_t)waitMs * 1000u;
    for (;;) {
        pid_t r = waitpid(pid, &status, WNOHANG);
        if (r == pid) break;
        if (r < 0) return -1;
        if (HarnessNowUsec() > deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        usleep(2000);
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : -1;
}

bool HarnessDaemonStart(const std::string &socketPath, HarnessDaemon *daemon)
{
    std::string printed = socketPath + ".address", line;
    unlink(printed.c_str());
    pid_t pid = HarnessSpawn({"dbus-daemon", "--session", "--nofork", "--print-address=1",
                              "--address=unix:path=" + socketPath}, printed, "");
    HarnessWaitFor(kDaemonStartMs, [&] {
        line = HarnessReadFile(printed);
        return pid <= 0 || line.find('\n') != std::string::npos || waitpid(pid, nullptr, WNOHANG) == pid;
    });
    if (line.find('\n') == std::string::npos) {
        HarnessReap(pid, SIGKILL, 1000);
        return false;
    }
    daemon->pid = pid;
    daemon->address = line.substr(0, line.find('\n'));
    setenv("DBUS_SESSION_BUS_ADDRESS", daemon->address.c_str(), 1);
    return true;
}

void HarnessDaemonStop(HarnessDaemon *daemon, int signal)
{
    HarnessReap(daemon->pid, signal, 5000);
    daemon->pid = -1;
}

pid_t HarnessSpawnPiped(const std::vector<std::string> &argv, int *toChild, int *fromChild,
                        const std::string &errFile)
{
    int in[2] = {-1, -1}, out[2] = {-1, -1};
    if (pipe(in) != 0) return -1;
    if (pipe(out) != 0) {
        close(in[0]);
        close(in[1]);
        return -1;
    }
    pid_t pid = fork();
    if (pid == 0) ExecChild(argv, in[0], out[1], OpenForAppend(errFile));
    close(in[0]);
    close(out[1]);
    *toChild = in[1];
    *fromChild = out[0];
    return pid;
}

bool HarnessWaitFor(int waitMs, const std::function<bool()> &condition)
{
    uint64_t deadline = HarnessNowUsec() + (uint64_t)waitMs * 1000u;
    while (!condition()) {
        if (HarnessNowUsec() > deadline) return false;
        usleep(20000);
    }
    return true;
}

std::vector<std::string> HarnessLoggedIds(const std::string &log)
{
    std::vector<std::string> ids;
    std::istringstream lines(log);
    std::string line;
    while (std::getline(lines, line)) {
        size_t at = line.find("\tMSSG=");
        if (line.rfind("event VESK/AEVT", 0) == 0 && at != std::string::npos)
            ids.push_back(line.substr(at + 6, line.find('\t', at + 1) - at - 6));
    }
    return ids;
}

std::string HarnessLoggedEvent(const std::string &log, const std::string &id)
{
    std::istringstream lines(log);
    std::string line;
    while (std::getline(lines, line))
        if (line.rfind("event VESK/AEVT", 0) == 0 && line.find("\tMSSG=" + id + "\t") != std::string::npos)
            return line;
    return "";
}
