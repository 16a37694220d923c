/*
 * FmhostSession.cpp: fmhost driven through its prompt on a private bus (see
 * FmhostSession.h).
 */
#include "FmhostSession.h"

#include <cstdlib>
#include <poll.h>
#include <unistd.h>

void FmhostTest::SetUp()
{
    PrivateBusTest::SetUp();
    setenv("TPX1_DIALOG_LOG", (temp + "/dialogs.jsonl").c_str(), 1);
}

void FmhostTest::TearDown()
{
    StopHost();
    PrivateBusTest::TearDown();
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

bool FmhostTest::HostSees(const char *signature)
{
    return WaitFor([&] { return Calc(std::string("TPX1IsAppRunning(\"") + signature + "\")") == "\"TRUE\"\n"; });
}
