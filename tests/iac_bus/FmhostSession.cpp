/*
 * FmhostSession.cpp: fmhost driven through its prompt on a private bus (see
 * FmhostSession.h).
 */
#include "FmhostSession.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <sstream>
#include <unistd.h>

size_t Occurrences(const std::string &text, const std::string &what)
{
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) count++;
    return count;
}

void FmhostTest::SetUp()
{
    signal(SIGPIPE, SIG_IGN);
    char tmpl[] = "/tmp/tpx1-iacbus-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    temp = tmpl;
    std::filesystem::create_directories(temp + "/Applications");
    ASSERT_TRUE(HarnessDaemonStart(temp + "/bus", &daemon)) << "no private dbus-daemon";
    setenv("HOME", temp.c_str(), 1);
    setenv("TPX1_DIALOG_LOG", (temp + "/dialogs.jsonl").c_str(), 1);
    setenv("TPX1_APPLICATIONS_FOLDER", (temp + "/Applications").c_str(), 1);
}

void FmhostTest::TearDown()
{
    StopHost();
    for (pid_t pid : partners) HarnessReap(pid, SIGTERM, kWaitMs);
    for (pid_t pid : Started()) {
        kill(pid, SIGTERM);
        WaitFor([&] { return kill(pid, 0) != 0; });
    }
    HarnessDaemonStop(&daemon, SIGTERM);
    std::error_code ec;
    for (int i = 0; i < 50 && std::filesystem::exists(temp); i++) {
        std::filesystem::remove_all(temp, ec);
        if (ec) usleep(20000);
    }
    unsetenv("TPX1_LAUNCH_TIMEOUT_MS");
}

void FmhostTest::StartHost()
{
    host = HarnessSpawnPiped({FMHOST_PATH, "--plugin", FMX_PATH, "--idle-ms", "10"}, &hostIn, &hostOut,
                             temp + "/fmhost.err");
    ASSERT_GT(host, 0);
}

std::string FmhostTest::Run(const std::string &lines)
{
    std::string mark = "@@done " + std::to_string(++marks);
    std::string text = lines + "\nShow [ \"" + mark + "\" ]\n";
    EXPECT_EQ(write(hostIn, text.data(), text.size()), (ssize_t)text.size());
    uint64_t deadline = HarnessNowUsec() + kWaitMs * 1000u;
    for (;;) {
        size_t at = pending.find(mark + "\n");
        if (at != std::string::npos) {
            std::string out = pending.substr(0, at);
            pending.erase(0, at + mark.size() + 1);
            transcript += out;
            return out;
        }
        struct pollfd pfd = {hostOut, POLLIN, 0};
        if (HarnessNowUsec() > deadline || poll(&pfd, 1, 100) < 0) break;
        char buffer[4096];
        if (pfd.revents) {
            ssize_t n = read(hostOut, buffer, sizeof buffer);
            if (n <= 0) break;
            pending.append(buffer, (size_t)n);
        }
    }
    ADD_FAILURE() << "fmhost did not answer: " << pending;
    return "";
}

std::string FmhostTest::Calc(const std::string &calculation)
{
    /* What idle time printed before it (host scripts, activation) comes first. */
    std::string out = Run(calculation);
    size_t start = out.rfind('\n', out.size() >= 2 ? out.size() - 2 : 0);
    return start == std::string::npos || out.size() < 2 ? out : out.substr(start + 1);
}

int FmhostTest::StopHost()
{
    if (host <= 0) return -1;
    const char quit[] = "quit\n";
    EXPECT_EQ(write(hostIn, quit, sizeof quit - 1), (ssize_t)(sizeof quit - 1));
    close(hostIn);
    int status = HarnessReap(host, 0, kWaitMs);
    /* A partner it launched may keep fmhost's output open: what is there, not to the end. */
    struct pollfd pfd = {hostOut, POLLIN, 0};
    char buffer[4096];
    for (ssize_t n; poll(&pfd, 1, 0) > 0 && (n = read(hostOut, buffer, sizeof buffer)) > 0;)
        transcript.append(buffer, (size_t)n);
    close(hostOut);
    host = -1;
    return status;
}

pid_t FmhostTest::StartPartner(const char *signature, const std::string &rules, const std::string &log)
{
    pid_t pid = HarnessStartPartner(VESK_PATH, temp, signature, rules, log);
    partners.push_back(pid);
    return pid;
}

bool FmhostTest::HostSees(const char *signature)
{
    return WaitFor([&] { return Calc(std::string("TPX1IsAppRunning(\"") + signature + "\")") == "\"TRUE\"\n"; });
}

std::vector<pid_t> FmhostTest::Started()
{
    std::vector<pid_t> pids;
    std::istringstream lines(HarnessReadFile(temp + "/started"));
    for (pid_t pid; lines >> pid;) pids.push_back(pid);
    return pids;
}

std::string FmhostTest::Classic(const std::string &posix)
{
    std::string classic = "Linux" + posix;
    std::replace(classic.begin(), classic.end(), '/', ':');
    return classic;
}
