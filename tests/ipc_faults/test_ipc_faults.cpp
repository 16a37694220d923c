/*
 * test_ipc_faults.cpp: faults between processes. This test process is the host: it loads
 * the real plug-in through the host core and pumps its events by hand, on its own
 * private dbus-daemon, against vesk partners and a flood sender in other processes. A
 * partner killed in mid-conversation, a partner that never answers (or is frozen), the
 * bus daemon going away and coming back, an event over the bus's size limit and a flood
 * of 10 000 events: the host keeps working, reports clearly and does not hang (a
 * watchdog turns a hang into a failure).
 */
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <set>
#include <unistd.h>

#include "BusHarness.h"
#include "PrivateBusTest.h"
#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Toolbox.h"

namespace {

const unsigned kWatchdogSeconds = 90;
const char kHost[] = "FMP7";

struct TakenMessage {
    std::string id, sign, num, list;
};

class IpcFaults : public PrivateBusTest {
protected:
    void SetUp() override
    {
        HarnessWatchdog(kWatchdogSeconds, "an ipc fault test hung");
        PrivateBusTest::SetUp();
        setenv("TPX1_LAUNCH_TIMEOUT_MS", "3000", 1);
        PlatformDialogUseRecorder();
        std::string error;
        ASSERT_TRUE(HarnessHostStart(&host, HarnessSiblingPath("tpx1.fmx", FMX_PATH), kHost, &error)) << error;
    }

    void TearDown() override
    {
        RestoreStderr();
        HarnessHostStop(&host);
        PlatformBusClose();
        PrivateBusTest::TearDown();
        HarnessWatchdogOff();
    }

    std::string Call(const char *function, const std::string &arg = "") { return HarnessCall(&host, function, arg); }

    /* Fills outgoing list 1 and sends it; returns the result text. */
    std::string Send(const char *to, const std::string &id, const std::vector<std::string> &params)
    {
        Call("TPX1SetParameter", "MSSG|" + id);
        for (const std::string &p : params) Call("TPX1SetParameter", p);
        return Call("TPX1SendMessageTo", to);
    }

    /* The message-handling script "Handle": takes one message, keeps what it read. */
    void RunScript(const std::string &name)
    {
        if (name != "Handle") return;
        TakenMessage m;
        m.id = Call("TPX1GetNextMessage");
        if (m.id.empty()) return;
        m.sign = Call("TPX1GetParameter", "SIGN");
        m.num = Call("TPX1GetParameter", "NUM ");
        m.list = Call("TPX1GetParameter", "LST2");
        Call("TPX1ClearIncomingMessage");
        taken.push_back(m);
    }

    bool RunUntil(const std::function<bool()> &done, int waitMs = kWaitMs)
    {
        return HarnessRunUntil(&host, waitMs, done, [this](const std::string &name) { RunScript(name); });
    }

    void UseHandlingScript(const char *handledIds)
    {
        Call("TPX1SetMessageHandlingScriptTo", "Handle");
        Call("TPX1SetHandledMessages", handledIds);
        Call("TPX1InitIAC");
    }

    bool Running(const char *signature) { return Call("TPX1IsAppRunning", signature) == "TRUE"; }

    std::string PartnerLog(const char *signature) { return temp + "/partner-" + signature + ".log"; }

    /* The texts of the dialogs shown, one a line. */
    std::string Dialogs()
    {
        std::string texts;
        for (int32_t i = 0; const DialogSpec *d = PlatformDialogRecorded(i); i++) texts += d->text + std::string("\n");
        return texts;
    }

    bool DialogSays(const std::string &text) { return Dialogs().find(text) != std::string::npos; }

    /* Standard error of this process goes to a file until RestoreStderr. */
    void CaptureStderr()
    {
        fflush(stderr);
        savedStderr = dup(2);
        int fd = open((temp + "/stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 2);
        close(fd);
    }

    void RestoreStderr()
    {
        if (savedStderr < 0) return;
        fflush(stderr);
        dup2(savedStderr, 2);
        close(savedStderr);
        savedStderr = -1;
    }

    std::string CapturedStderr() { return HarnessReadFile(temp + "/stderr"); }

    HarnessHost host;
    std::vector<TakenMessage> taken;
    int savedStderr = -1;
};

const char kSelectionRules[] =
    "on MYOD send MSSG=YROD XTRA=$XTRA NUM =$NUM LST2=00000000000000A1\\tWells\\tCounty\\r\n";
const char kSelectionList[] = "00000000000000A1\tWells\tCounty\r";

std::vector<std::string> Only(const std::vector<std::string> &ids, const std::string &id)
{
    std::vector<std::string> kept;
    for (const std::string &i : ids)
        if (i == id) kept.push_back(i);
    return kept;
}

} // namespace

TEST_F(IpcFaults, PartnerKilledInMidConversation)
{
    std::string log = PartnerLog("TPX1");
    Install("Applications/TOPOLUX Folder", "TOPOLUX", Partner("TPX1", "TOPOLUX", log, kSelectionRules));
    UseHandlingScript("YROD");
    const std::string version = Call("TPX1Version");

    /* The plug-in launches TOPOLUX; one round trip. */
    EXPECT_EQ(Send("TPX1", "MYOD", {"XTRA|GETINFO", "NUM |1"}), "");
    ASSERT_TRUE(RunUntil([&] { return taken.size() == 1; })) << HarnessReadFile(log);
    ASSERT_EQ(Started().size(), 1u);
    pid_t first = Started()[0];

    /* Ten requests go out back to back and TOPOLUX dies while answering them. */
    for (int i = 2; i <= 11; i++) Send("TPX1", "MYOD", {"XTRA|GETINFO", "NUM |" + std::to_string(i)});
    kill(first, SIGKILL);
    /* The host sees TOPOLUX gone, or started again: each taken answer brings the host
     * forward with a notice to TOPOLUX, and a notice sent just after the death launches
     * it, as every send to a partner that is not running does. */
    ASSERT_TRUE(RunUntil([&] { return !Running("TPX1") || Started().back() != first; }))
        << HarnessReadFile(log);
    RunUntil([] { return false; }, 200);

    /* Whatever arrived before the crash arrived whole, once, in order. */
    std::set<std::string> seen;
    int previous = 0;
    for (const TakenMessage &m : taken) {
        EXPECT_EQ(m.id, "YROD");
        EXPECT_EQ(m.sign, "TPX1");
        EXPECT_EQ(m.list, kSelectionList);
        EXPECT_GT(atoi(m.num.c_str()), previous);
        previous = atoi(m.num.c_str());
        EXPECT_TRUE(seen.insert(m.num).second);
    }
    EXPECT_LE(previous, 11);
    EXPECT_EQ(Call("TPX1Version"), version);
    EXPECT_EQ(Dialogs(), "");

    /* The next message launches TOPOLUX again and the conversation goes on. */
    size_t before = taken.size();
    EXPECT_EQ(Send("TPX1", "MYOD", {"XTRA|GETINFO", "NUM |12"}), "");
    ASSERT_TRUE(RunUntil([&] { return taken.size() == before + 1; })) << HarnessReadFile(log);
    EXPECT_EQ(taken.back().num, "12");
    EXPECT_NE(Started().back(), first);
    EXPECT_EQ(HarnessHostStop(&host), 0);
}

TEST_F(IpcFaults, PartnerThatNeverAnswersDoesNotHoldTheHost)
{
    pid_t nimbo = StartPartner("NMB5", "# answers nothing beyond the greeting\n", PartnerLog("NMB5"));
    ASSERT_TRUE(RunUntil([&] { return Running("NMB5"); }));
    Call("TPX1InitIAC");

    /* Sends are no-reply: every one returns at once with no error, answered or not. */
    for (int i = 1; i <= 100; i++) EXPECT_EQ(Send("NMB5", "RUN!", {"NUM |" + std::to_string(i)}), "");
    /* Frozen, it cannot even read: the daemon keeps the events and the host goes on. */
    kill(nimbo, SIGSTOP);
    for (int i = 101; i <= 200; i++) EXPECT_EQ(Send("NMB5", "RUN!", {"NUM |" + std::to_string(i)}), "");
    RunUntil([] { return false; }, 200);
    EXPECT_TRUE(Running("NMB5"));
    EXPECT_EQ(Call("TPX1Version"), "TOPOLUX plugin ver 8.0");
    EXPECT_EQ(Dialogs(), "");

    /* Thawed, it gets every message, in order, each after its greeting. */
    kill(nimbo, SIGCONT);
    std::string log = PartnerLog("NMB5");
    ASSERT_TRUE(RunUntil([&] { return Only(HarnessLoggedIds(HarnessReadFile(log)), "RUN!").size() == 200; }))
        << HarnessReadFile(log);
    std::vector<std::string> ids = HarnessLoggedIds(HarnessReadFile(log));
    ASSERT_EQ(ids.size(), 400u);
    for (size_t i = 0; i < ids.size(); i++) EXPECT_EQ(ids[i], i % 2 ? "RUN!" : "HOLA") << i;
    std::string text = HarnessReadFile(log);
    size_t at = 0;
    for (int i = 1; i <= 200; i++, at++) {
        at = text.find("\tMSSG=RUN!\t", at);
        ASSERT_NE(at, std::string::npos) << i;
        EXPECT_EQ(at, text.find("\tMSSG=RUN!\tSIGN=FMP7\tPSIG=FMP7\tXTRA=\tNUM =" + std::to_string(i) + "\n", at));
    }
    EXPECT_EQ(HarnessHostStop(&host), 0);
}

TEST_F(IpcFaults, BusDaemonGoesAwayAndInitIACBringsMessagingBack)
{
    StartPartner("TPX1", kSelectionRules, PartnerLog("TPX1"));
    ASSERT_TRUE(RunUntil([&] { return Running("TPX1"); }));
    UseHandlingScript("YROD");
    EXPECT_EQ(Send("TPX1", "MYOD", {"NUM |1"}), "");
    ASSERT_TRUE(RunUntil([&] { return taken.size() == 1; }));

    /* The daemon dies. The host notices at its next pump and says so, once, plainly. */
    const int eventFD = AEGetEventFD();
    CaptureStderr();
    HarnessDaemonStop(&daemon, SIGKILL);
    ASSERT_TRUE(RunUntil([&] { return CapturedStderr().find("messaging") != std::string::npos; }, 5000))
        << CapturedStderr();
    EXPECT_NE(CapturedStderr().find("lost the D-Bus connection"), std::string::npos) << CapturedStderr();
    EXPECT_NE(CapturedStderr().find("messaging with other applications stopped"), std::string::npos)
        << CapturedStderr();

    /* The host keeps working: plain calls, and a host script through its own events. */
    EXPECT_EQ(Call("TPX1Version"), "TOPOLUX plugin ver 8.0");
    EXPECT_FALSE(Running("TPX1"));
    Call("TPX1CallScript", "Handle");
    size_t scriptsBefore = taken.size();
    bool ran = false;
    HarnessRunUntil(&host, 2000, [&] { return ran; }, [&](const std::string &name) { ran = name == "Handle"; });
    EXPECT_TRUE(ran);
    EXPECT_EQ(taken.size(), scriptsBefore);
    /* A send fails with an error report and returns. */
    Send("TPX1", "MYOD", {"NUM |2"});
    EXPECT_TRUE(DialogSays("An error occurred in the plug-in function TPX1SendMessageTo.")) << Dialogs();

    /* A daemon at the same address and a new TOPOLUX: messaging stays off until
     * TPX1InitIAC, which reconnects. */
    ASSERT_TRUE(HarnessDaemonStart(temp + "/bus", &daemon));
    for (pid_t pid : partners) HarnessReap(pid, SIGKILL, 5000);
    partners.clear();
    std::filesystem::remove(PartnerLog("TPX1"));
    StartPartner("TPX1", kSelectionRules, PartnerLog("TPX1"));
    RunUntil([] { return false; }, 300);
    EXPECT_FALSE(Running("TPX1"));
    Call("TPX1InitIAC");
    ASSERT_TRUE(RunUntil([&] { return Running("TPX1"); }));
    EXPECT_TRUE(PlatformBusOwnsSignatureName());
    PlatformDialogClearRecord();
    /* The descriptor the host polls is the one it had, and wakes for the new bus. */
    EXPECT_EQ(AEGetEventFD(), eventFD);
    EXPECT_EQ(Send("TPX1", "MYOD", {"NUM |3"}), "");
    struct pollfd ready = {eventFD, POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, kWaitMs), 1);
    ASSERT_TRUE(RunUntil([&] { return taken.size() == 2; })) << HarnessReadFile(PartnerLog("TPX1"));
    EXPECT_EQ(taken.back().num, "3");
    EXPECT_EQ(Dialogs(), "");
    RestoreStderr();
    EXPECT_EQ(HarnessHostStop(&host), 0);
}

TEST_F(IpcFaults, EventOverTheBusLimitIsRefusedAndTheConnectionKept)
{
    StartPartner("TPX1", "on SHOW send MSSG=SHWN NUM =$NUM\n", PartnerLog("TPX1"));
    ASSERT_TRUE(RunUntil([&] { return Running("TPX1"); }));
    UseHandlingScript("SHWN");

    /* 65 MiB of text: over the daemon's limit, refused before sending (-50). */
    EXPECT_EQ(Send("TPX1", "SHOW", {"NUM |1", "LST2|" + std::string(65u << 20, 'A')}), "");
    EXPECT_TRUE(DialogSays("Error: -50")) << Dialogs();
    /* 33 MiB of Mac Roman that doubles on the wire (UTF-8) is refused the same way. */
    PlatformDialogClearRecord();
    EXPECT_EQ(Send("TPX1", "SHOW", {"NUM |2", "LST2|" + std::string(33u << 20, '\x8e')}), "");
    EXPECT_TRUE(DialogSays("Error: -50")) << Dialogs();

    /* The connection and the host's name are kept; the next message goes through. */
    EXPECT_TRUE(PlatformBusOwnsSignatureName());
    EXPECT_TRUE(Running("TPX1"));
    PlatformDialogClearRecord();
    EXPECT_EQ(Send("TPX1", "SHOW", {"NUM |3", "LST2|0000000000000001\tRoads\tCity\r"}), "");
    ASSERT_TRUE(RunUntil([&] { return taken.size() == 1; })) << HarnessReadFile(PartnerLog("TPX1"));
    EXPECT_EQ(taken[0].id, "SHWN");
    EXPECT_EQ(taken[0].num, "3");
    EXPECT_EQ(Dialogs(), "");
    /* It was greeted before each try but got only the last message. */
    std::vector<std::string> ids = HarnessLoggedIds(HarnessReadFile(PartnerLog("TPX1")));
    EXPECT_EQ(Only(ids, "HOLA").size(), 3u);
    EXPECT_EQ(Only(ids, "SHOW").size(), 1u);
    EXPECT_EQ(HarnessHostStop(&host), 0);
}

TEST_F(IpcFaults, FloodOfTenThousandEventsIsDrainedWithoutGrowth)
{
    Call("TPX1SetHandledMessages", "FLUD");
    Call("TPX1InitIAC");
    std::string sender = HarnessSiblingPath("flood_sender", FLOOD_SENDER_PATH);
    auto flood = [&](int count, std::string *report) {
        std::string out = temp + "/flood.out";
        std::filesystem::remove(out);
        pid_t pid = HarnessSpawn({sender, "--as", "FLOD", "--to", kHost, "--count", std::to_string(count)}, out,
                                 temp + "/flood.err");
        int status = -1;
        /* The host drains while the sender sends, and keeps answering calls. */
        RunUntil([&] {
            EXPECT_EQ(Call("TPX1Version"), "TOPOLUX plugin ver 8.0");
            int s;
            pid_t r = waitpid(pid, &s, WNOHANG);
            if (r == pid) status = WIFEXITED(s) ? WEXITSTATUS(s) : -1;
            return r == pid;
        }, 60000);
        *report = HarnessReadFile(out);
        return status;
    };
    auto takeAll = [&] {
        std::vector<std::string> nums;
        while (Call("TPX1GetNextMessage") == "FLUD") {
            nums.push_back(Call("TPX1GetParameter", "NUM "));
            Call("TPX1ClearIncomingMessage");
        }
        PlatformDialogClearRecord();   /* the last, empty TPX1GetNextMessage reports */
        return nums;
    };

    std::string report;
    ASSERT_EQ(flood(1000, &report), 0) << report;
    EXPECT_EQ(takeAll().size(), 20u);
    long blocksBefore = HarnessLiveBlocks();
    long residentBefore = HarnessResidentKiB();

    ASSERT_EQ(flood(10000, &report), 0) << report << HarnessReadFile(temp + "/flood.err");
    EXPECT_EQ(report, "sent 10000 answered 10000 noErr 10000 other 0 failed 0\n");
    long residentAfter = HarnessResidentKiB();
    std::vector<std::string> nums = takeAll();
    ASSERT_EQ(nums.size(), 20u);
    for (int i = 0; i < 20; i++) EXPECT_EQ(nums[i], std::to_string(i + 1));
    EXPECT_EQ(HarnessLiveBlocks(), blocksBefore);
    printf("flood of 10000: resident %ld KiB before, %ld KiB after; live host blocks %ld\n", residentBefore,
           residentAfter, HarnessLiveBlocks());
    if (!HarnessUnderMemoryChecker()) {
        EXPECT_LT(residentAfter - residentBefore, 16 * 1024);
    }
    EXPECT_EQ(Dialogs(), "");
    EXPECT_EQ(HarnessHostStop(&host), 0);
}
