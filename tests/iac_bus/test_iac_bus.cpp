/*
 * test_iac_bus.cpp: messaging between processes on a private D-Bus daemon: the real
 * fmhost with the plug-in, driven line by line through its prompt, talking to
 * "vesk partner" stand-ins (started by the test or launched by the plug-in) and to a
 * client that is not ours (busctl).
 */
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <poll.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

#include "ProcessHarness.h"

namespace {

const int kWaitMs = 30000;

/* Polls until the condition holds or kWaitMs passed; true when it held. */
bool WaitFor(const std::function<bool()> &condition)
{
    return HarnessWaitFor(kWaitMs, condition);
}

uint64_t NowMs()
{
    return HarnessNowUsec() / 1000;
}

class IacBusTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        signal(SIGPIPE, SIG_IGN);
        char tmpl[] = "/tmp/tpx1-iacbus-XXXXXX";
        temp = mkdtemp(tmpl);
        std::filesystem::create_directories(temp + "/Applications");
        ASSERT_TRUE(HarnessDaemonStart(temp + "/bus", &daemon)) << "no private dbus-daemon";
        address = daemon.address;
        setenv("HOME", temp.c_str(), 1);
        setenv("TPX1_DIALOG_LOG", (temp + "/dialogs.jsonl").c_str(), 1);
        setenv("TPX1_APPLICATIONS_FOLDER", (temp + "/Applications").c_str(), 1);
    }

    void TearDown() override
    {
        StopHost();
        for (pid_t pid : partners) HarnessReap(pid, SIGTERM, kWaitMs);
        for (const std::string &log : launchedLogs) {
            pid_t pid = HarnessLoggedPid(HarnessReadFile(log));
            if (pid <= 0) continue;
            kill(pid, SIGTERM);
            WaitFor([&] { return kill(pid, 0) != 0; });
        }
        HarnessDaemonStop(&daemon, SIGTERM);
        std::error_code ec;
        for (int i = 0; i < 50 && std::filesystem::exists(temp); i++) {
            std::filesystem::remove_all(temp, ec);
            if (ec) usleep(20000);
        }
    }

    void StartHost()
    {
        host = HarnessSpawnPiped({FMHOST_PATH, "--plugin", FMX_PATH, "--idle-ms", "10"}, &hostIn, &hostOut,
                                 temp + "/fmhost.err");
        ASSERT_GT(host, 0);
    }

    /* Sends lines to fmhost's prompt and returns what it printed for them. */
    std::string Run(const std::string &lines)
    {
        std::string mark = "@@done " + std::to_string(++marks);
        std::string text = lines + "\nShow [ \"" + mark + "\" ]\n";
        EXPECT_EQ(write(hostIn, text.data(), text.size()), (ssize_t)text.size());
        uint64_t deadline = NowMs() + kWaitMs;
        for (;;) {
            size_t at = pending.find(mark + "\n");
            if (at != std::string::npos) {
                std::string out = pending.substr(0, at);
                pending.erase(0, at + mark.size() + 1);
                transcript += out;
                return out;
            }
            struct pollfd pfd = {hostOut, POLLIN, 0};
            if (NowMs() > deadline || poll(&pfd, 1, 100) < 0) break;
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

    /* The last line fmhost printed for one calculation: what idle time printed before it
     * (host scripts, activation) comes first. */
    std::string Calc(const std::string &calculation)
    {
        std::string out = Run(calculation);
        size_t start = out.rfind('\n', out.size() >= 2 ? out.size() - 2 : 0);
        return start == std::string::npos || out.size() < 2 ? out : out.substr(start + 1);
    }

    /* Ends fmhost (Shutdown) and returns its exit status. A partner it launched keeps
     * fmhost's output open, so the end is the process's, not the pipe's. */
    int StopHost()
    {
        if (host <= 0) return -1;
        const char quit[] = "quit\n";
        EXPECT_EQ(write(hostIn, quit, sizeof quit - 1), (ssize_t)(sizeof quit - 1));
        close(hostIn);
        int status = -1, raw = 0;
        uint64_t deadline = NowMs() + kWaitMs;
        for (bool ended = false; !ended;) {
            ended = waitpid(host, &raw, WNOHANG) == host;
            if (ended)
                status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
            else if (NowMs() > deadline) {
                HarnessReap(host, SIGKILL, kWaitMs);
                ended = true;
            }
            struct pollfd pfd = {hostOut, POLLIN, 0};
            while (poll(&pfd, 1, ended ? 0 : 20) > 0 && (pfd.revents & POLLIN)) {
                char buffer[4096];
                ssize_t n = read(hostOut, buffer, sizeof buffer);
                if (n <= 0) break;
                transcript.append(buffer, (size_t)n);
            }
        }
        close(hostOut);
        host = -1;
        return status;
    }

    pid_t StartPartner(const char *signature, const std::string &rules, const std::string &log)
    {
        pid_t pid = HarnessStartPartner(VESK_PATH, temp, signature, rules, log);
        partners.push_back(pid);
        return pid;
    }

    bool HostSees(const char *signature)
    {
        return WaitFor([&] { return Calc(std::string("TPX1IsAppRunning(\"") + signature + "\")") == "\"TRUE\"\n"; });
    }

    std::string Dialogs() { return HarnessReadFile(temp + "/dialogs.jsonl"); }

    std::string temp, address;
    HarnessDaemon daemon;
    pid_t host = -1;
    int hostIn = -1, hostOut = -1;
    int marks = 0;
    std::string pending, transcript;
    std::vector<pid_t> partners;
    std::vector<std::string> launchedLogs;
};

}   // namespace

TEST_F(IacBusTest, RoundTripWithAPartnerTheHostLaunches)
{
    /* TOPOLUX in its default place: a script that becomes a vesk partner. */
    std::string log = HarnessInstallTopolux(VESK_PATH, temp + "/Applications", "on SHOW send MSSG=INFO LST2=$LST2\n");
    launchedLogs.push_back(log);

    StartHost();
    Run("Script \"Handle\"\n"
        "$$got = TPX1GetNextMessage()\n"
        "$$list = TPX1GetParameter(\"LST2\")\n"
        "TPX1ClearIncomingMessage()\n"
        "End Script\n"
        "TPX1SetMessageHandlingScriptTo(\"Handle\")\n"
        "TPX1SetHandledMessages(\"INFO\")\n"
        "TPX1SetTopoluxFirstView(\"-90,40,-80,30\")\n"
        "TPX1InitIAC()");
    EXPECT_EQ(Calc("TPX1IsAppRunning(\"TPX1\")"), "\"FALSE\"\n");
    Run("TPX1SetParameter(\"MSSG|SHOW\")\n"
        "TPX1SetParameter(\"LST2|0000000000000001\" & TPX1TabChar() & \"Roads\" & TPX1TabChar() & \"City\" & ¶)\n"
        "TPX1SendMessageTo(\"TPX1\")");
    EXPECT_TRUE(WaitFor([&] { return Calc("$$got") == "\"INFO\"\n"; })) << transcript;
    EXPECT_EQ(Calc("$$list"), "\"0000000000000001\\tRoads\\tCity\\r\"\n");
    EXPECT_EQ(Calc("TPX1IsAppRunning(\"TPX1\")"), "\"TRUE\"\n");

    /* The partner was greeted with the first view before the message; at Shutdown it
     * hears "BYE ". */
    EXPECT_EQ(StopHost(), 0);
    EXPECT_TRUE(WaitFor([&] { return HarnessLoggedIds(HarnessReadFile(log)).size() >= 5; }));
    std::string partnerLog = HarnessReadFile(log);
    /* FRWD: running the handling script brings the host forward and tells TOPOLUX. */
    EXPECT_EQ(HarnessLoggedIds(partnerLog), (std::vector<std::string>{"HOLA", "VIEW", "SHOW", "FRWD", "BYE "}))
        << partnerLog;
    EXPECT_NE(HarnessLoggedEvent(partnerLog, "VIEW").find("\tLLNG=-90\t"), std::string::npos) << partnerLog;
    EXPECT_NE(partnerLog.find("sent INFO to FMP7"), std::string::npos) << partnerLog;
    EXPECT_EQ(Dialogs(), "");
}

TEST_F(IacBusTest, BuiltInRepliesAcrossProcesses)
{
    std::string log = temp + "/topolux.log";
    StartPartner("TPX1",
                 "on HOLA send MSSG=MHIT ITEM=1\n"
                 "on MYOD send MSSG=YROD XTRA=$XTRA NUM =0\n"
                 "on ALRT send MSSG=MHIT ITEM=2\n",
                 log);
    StartHost();
    ASSERT_TRUE(HostSees("TPX1"));
    Run("TPX1SetKnownFriend(\"TPX1|\")\n"
        "TPX1SetTopoluxSharingMenu(\"Sites|Get info;Go to the sites\")\n"
        "TPX1SetTopoluxSharingMenuActions(\"GETINFO|GOTOME\")\n"
        "TPX1SetTopoluxNoneSelectedGetInfoAlert(\"Select a site first.\")\n"
        "TPX1SetHandledMessages(\"MHIT|YROD\")\n"
        "TPX1InitIAC()");
    /* HOLA -> MHIT 1 -> MYOD -> YROD none selected -> ALRT -> MHIT 2 -> FRWD. */
    EXPECT_TRUE(WaitFor([&] {
        Run("Idle");
        return HarnessLoggedEvent(HarnessReadFile(log), "FRWD") != "";
    })) << HarnessReadFile(log);
    std::string partnerLog = HarnessReadFile(log);
    EXPECT_EQ(HarnessLoggedIds(partnerLog), (std::vector<std::string>{"HOLA", "MENU", "MYOD", "ALRT", "FRWD"}))
        << partnerLog;
    EXPECT_NE(HarnessLoggedEvent(partnerLog, "MYOD").find("\tXTRA=GETINFO\t"), std::string::npos);
    EXPECT_NE(HarnessLoggedEvent(partnerLog, "MYOD").find("\tOPTN=SELECTED"), std::string::npos);
    EXPECT_NE(HarnessLoggedEvent(partnerLog, "ALRT").find("\tTEXT=Select a site first."), std::string::npos);
    EXPECT_NE(HarnessLoggedEvent(partnerLog, "FRWD").find("\tWHO =FMP7"), std::string::npos);
    /* All of it handled by the plug-in: nothing waits for the solution. */
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");
    EXPECT_EQ(StopHost(), 0);
    EXPECT_NE(transcript.find("fmhost: brought to front"), std::string::npos) << transcript;
}

TEST_F(IacBusTest, EventFromAForeignClientIsArchivedExactly)
{
    StartHost();
    Run("TPX1SetHandledMessages(\"ZZZZ\")\nTPX1InitIAC()");
    int status = -1;
    std::string reply = HarnessCapture({"/usr/bin/busctl", "--address=" + address, "call", "org.vesk.App.s464d5037",
                                 "/org/vesk/App", "org.vesk.AppleEvent1", "Event", "sssa(ssv)", "VESK", "AEVT", "",
                                 "7", "QQQQ", "TEXT", "s", "not kept", "MSSG", "TEXT", "s", "ZZZZ", "SIGN", "TEXT",
                                 "s", "BUSC", "NAME", "TEXT", "s", "Caf\xc3\xa9 \xc2\xb6", "TEXT", "TEXT", "s",
                                 "a\xe4\xb8\xad" "b", "LST2", "TEXT", "s", "0000000000000001\tRoads\tCity\r", "XTRA",
                                 "TEXT", "s", ""},
                                &status, kWaitMs);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(reply, "i 0\n");
    EXPECT_TRUE(WaitFor([&] { return Calc("TPX1GetNextMessage()") == "\"ZZZZ\"\n"; })) << transcript;
    EXPECT_EQ(Calc("TPX1GetParameter(\"SIGN\")"), "\"BUSC\"\n");
    EXPECT_EQ(Calc("Show [ TPX1GetParameter(\"NAME\") ]"), "Caf\xc3\xa9 \xc2\xb6\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"TEXT\")"), "\"a?b\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"LST2\")"), "\"0000000000000001\\tRoads\\tCity\\r\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"QQQQ\")"), "\"\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"PSIG\")"), "\"\"\n");
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");

    /* Without MSSG nothing is stored, and the caller still hears noErr. */
    reply = HarnessCapture({"/usr/bin/busctl", "--address=" + address, "call", "org.vesk.App.s464d5037", "/org/vesk/App",
                     "org.vesk.AppleEvent1", "Event", "sssa(ssv)", "VESK", "AEVT", "", "1", "SIGN", "TEXT", "s",
                     "BUSC"},
                    &status, kWaitMs);
    EXPECT_EQ(reply, "i 0\n");
    Run("Idle 3");
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");

    /* A value that is neither a string nor bytes is refused; text that comes as bytes is
     * taken as it is. */
    const std::vector<std::string> call = {"/usr/bin/busctl", "--address=" + address, "call", "org.vesk.App.s464d5037",
                                           "/org/vesk/App", "org.vesk.AppleEvent1", "Event", "sssa(ssv)", "VESK",
                                           "AEVT", ""};
    std::vector<std::string> wrong = call, asBytes = call;
    for (const char *arg : {"2", "MSSG", "TEXT", "s", "ZZZZ", "NUM ", "TEXT", "i", "5"}) wrong.push_back(arg);
    for (const char *arg : {"2", "MSSG", "TEXT", "ay", "4", "90", "90", "90", "90", "SIGN", "TEXT", "s", "BUSC"})
        asBytes.push_back(arg);
    reply = HarnessCapture(wrong, &status, kWaitMs);
    EXPECT_NE(status, 0) << reply;
    reply = HarnessCapture(asBytes, &status, kWaitMs);
    EXPECT_EQ(reply, "i 0\n");
    EXPECT_TRUE(WaitFor([&] { return Calc("TPX1GetNextMessage()") == "\"ZZZZ\"\n"; })) << transcript;
    EXPECT_EQ(StopHost(), 0);
    /* The only dialogs: the failed "MSSG" lookups of the two calls that found no message. */
    std::istringstream dialogs(Dialogs());
    std::vector<std::string> lines;
    for (std::string line; std::getline(dialogs, line);) lines.push_back(line);
    ASSERT_EQ(lines.size(), 2u);
    for (const std::string &line : lines)
        EXPECT_NE(line.find("TPX1GetNextMessage.\\r\\rError: -2802"), std::string::npos) << line;
}

TEST_F(IacBusTest, HostKeepsWorkingWhenAPartnerDies)
{
    std::string log = temp + "/nimbo.log";
    pid_t nimbo = StartPartner("NMB5", "", log);
    StartHost();
    ASSERT_TRUE(HostSees("NMB5"));
    Run("TPX1SetKnownFriend(\"NMB5|\")\nTPX1InitIAC()");
    EXPECT_TRUE(WaitFor([&] { return HarnessLoggedIds(HarnessReadFile(log)).size() == 1; }));

    /* NIMBO dies; the next message finds it gone: alerts and an error report, no hang. */
    kill(nimbo, SIGKILL);
    HarnessReap(nimbo, 0, kWaitMs);
    partners.clear();
    EXPECT_TRUE(WaitFor([&] { return Calc("TPX1IsAppRunning(\"NMB5\")") == "\"FALSE\"\n"; }));
    Run("TPX1SetParameter(\"MSSG|RUN!\")\nTPX1SendMessageTo(\"NMB5\")");
    std::string dialogs = Dialogs();
    EXPECT_NE(dialogs.find("Unable to locate NIMBO."), std::string::npos) << dialogs;
    EXPECT_NE(dialogs.find("Error: -600"), std::string::npos) << dialogs;

    /* The host goes on: a new NIMBO is greeted and gets the next message. */
    std::string log2 = temp + "/nimbo2.log";
    StartPartner("NMB5", "", log2);
    ASSERT_TRUE(HostSees("NMB5"));
    Run("TPX1SetParameter(\"MSSG|RUN!\")\nTPX1SendMessageTo(\"NMB5\")");
    EXPECT_TRUE(WaitFor([&] { return HarnessLoggedIds(HarnessReadFile(log2)).size() == 2; }));
    EXPECT_EQ(HarnessLoggedIds(HarnessReadFile(log2)), (std::vector<std::string>{"HOLA", "RUN!"}));
    EXPECT_EQ(Calc("TPX1Version()"), "\"TOPOLUX plugin ver 8.0\"\n");
    EXPECT_EQ(StopHost(), 0);
}
