/*
 * test_doscript.cpp: the DoScript queue and the idle handler, driven through the entry
 * function with fmhost's host memory, the in-memory bus and the manual clock: queue
 * rules, one script per idle call sent to the host itself as a do-script event, the
 * announcement of kept messages with its 600-tick grace periods (also across the tick
 * counter's wrap-around), and the re-entry guard under a real nested Idle.
 */
#include <string>
#include <vector>

#include "fuzz/TestHooks.h"
#include "tests/common/PluginTest.h"
#include "host/HostCore.h"
#include "platform/AppleEvents.h"
#include "platform/Processes.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "plugin/Plugin.h"
#include "store/MessageLists.h"

namespace {

std::vector<std::string> gScriptsRun;
HostPlugin *gNestingPlugin = nullptr;

OSErr RecordDoScript(const AppleEvent *event, AppleEvent *, intptr_t)
{
    char name[256];
    DescType type;
    int32_t size = 0;
    OSErr err = AEGetParamPtr(event, keyDirectObject, typeChar, &type, name, sizeof name - 1, &size);
    if (err == noErr)
        gScriptsRun.push_back(std::string(name, (size_t)size));
    return err;
}

/* Bringing the host forward happens inside the idle handler: idling again from there is
 * the nested Idle the guard is for. */
void IdleAgainWhenBroughtForward(void)
{
    if (gNestingPlugin != nullptr)
        HostIdle(gNestingPlugin, 0);
}

class DoScriptTest : public InitedPluginTest {
protected:
    void SetUp() override
    {
        InitedPluginTest::SetUp();
        PlatformClockUseManual(1000, 0);
        ASSERT_EQ(noErr, AEInstallEventHandler(kAEMiscStandards, kAEDoScript, RecordDoScript, 0, false));
        gScriptsRun.clear();
    }
    void TearDown() override
    {
        PlatformSetActivateHandler(nullptr);
        gNestingPlugin = nullptr;
        InitedPluginTest::TearDown();
    }
    /* One idle call of the host, then the host's event dispatch; the scripts it ran. */
    std::vector<std::string> IdleOnce()
    {
        gScriptsRun.clear();
        HostIdle(HarnessPlugin(), 0);
        AEProcessEvents();
        return gScriptsRun;
    }
    void KeepMessage(const char *id)
    {
        const char *pairs[] = {"MSSG", id, "SIGN", "TPX1"};
        ASSERT_EQ(noErr, ArchiveMessageForTesting(pairs, 2));
    }
};

using Names = std::vector<std::string>;

TEST_F(DoScriptTest, QueueKeepsNamesOnceInOrderAndRunsOnePerIdle)
{
    EXPECT_EQ(0, AddScriptToDoScriptQueue("First"));
    EXPECT_EQ(0, AddScriptToDoScriptQueue("First")) << "a waiting name is not queued twice";
    EXPECT_EQ(0, AddScriptToDoScriptQueue(std::string(63, 'x').c_str()));
    EXPECT_EQ(kScriptNameTooLongErr, AddScriptToDoScriptQueue(std::string(64, 'x').c_str()));
    for (int i = 0; i < 8; i++)
        EXPECT_EQ(0, AddScriptToDoScriptQueue(("S" + std::to_string(i)).c_str()));
    EXPECT_EQ(kQueueFullErr, AddScriptToDoScriptQueue("Eleventh"));

    HostIdle(HarnessPlugin(), 1);
    AEProcessEvents();
    EXPECT_TRUE(gScriptsRun.empty()) << "an idle level other than 0 runs nothing";

    EXPECT_EQ(Names{"First"}, IdleOnce());
    EXPECT_EQ(Names{std::string(63, 'x')}, IdleOnce());
    EXPECT_EQ(0, AddScriptToDoScriptQueue("First")) << "after it ran it can be queued again";
    for (int i = 0; i < 8; i++)
        EXPECT_EQ(Names{"S" + std::to_string(i)}, IdleOnce());
    EXPECT_EQ(Names{"First"}, IdleOnce());
    EXPECT_EQ(Names{}, IdleOnce());

    /* Through the external function: the same rules, errors reported with its id. */
    Call(kTPX1CallScript, std::string(64, 'y'));
    ASSERT_EQ(1, PlatformDialogRecordedCount());
    EXPECT_EQ(std::string("An error occurred in the plug-in function TPX1CallScript.\r\rError: -1\r\r"),
              PlatformDialogRecorded(0)->text);
    Call(kTPX1CallScript, "ByName");
    EXPECT_EQ(Names{"ByName"}, IdleOnce());
}

TEST_F(DoScriptTest, KeptMessageIsAnnouncedUntilTakenWithGracePeriods)
{
    Call(kTPX1SetMessageHandlingScriptTo, "Handle It");
    KeepMessage("TEST");
    EXPECT_EQ(Names{"Handle It"}, IdleOnce()) << "announced at once when nothing is pending";
    PlatformClockAdvance(599);
    EXPECT_EQ(Names{}, IdleOnce()) << "within 600 ticks of the announcement";
    PlatformClockAdvance(1);
    EXPECT_EQ(Names{"Handle It"}, IdleOnce()) << "announced again after 600 ticks";

    EXPECT_EQ("TEST", Call(kTPX1GetNextMessage, ""));          /* taken: waits on the solution's accesses */
    KeepMessage("NEXT");
    PlatformClockAdvance(300);
    Call(kTPX1GetParameter, "MSSG");                          /* a get-parameter renews the grace period */
    PlatformClockAdvance(599);
    EXPECT_EQ(Names{}, IdleOnce());
    PlatformClockAdvance(1);
    EXPECT_EQ(Names{"Handle It"}, IdleOnce());

    EXPECT_EQ("NEXT", Call(kTPX1GetNextMessage, ""));
    KeepMessage("LAST");
    Call(kTPX1ClearIncomingMessage, "");                              /* cleared: the next message comes at once */
    EXPECT_EQ(Names{"Handle It"}, IdleOnce());
    Call(kTPX1GetNextMessage, "");
    Call(kTPX1ClearIncomingMessage, "");
    EXPECT_EQ(Names{}, IdleOnce()) << "nothing kept, nothing announced";
}

TEST_F(DoScriptTest, WrappedTickCounterEndsTheGracePeriodAtOnce)
{
    Call(kTPX1SetMessageHandlingScriptTo, "Handle It");
    /* Far from the top of the counter the grace period runs its 600 ticks. */
    PlatformClockUseManual(0xFFFFF000u, 0);
    KeepMessage("TEST");
    EXPECT_EQ(Names{"Handle It"}, IdleOnce());
    PlatformClockAdvance(599);
    EXPECT_EQ(Names{}, IdleOnce());
    /* A counter that wrapped (now below the reference) ends it at once. */
    PlatformClockUseManual(5, 0);
    EXPECT_EQ(Names{"Handle It"}, IdleOnce());
    PlatformClockAdvance(10);
    EXPECT_EQ(Names{}, IdleOnce()) << "a new grace period from the new announcement";
}

TEST_F(DoScriptTest, NestedIdleReturnsAtOnce)
{
    gNestingPlugin = HarnessPlugin();
    PlatformSetActivateHandler(IdleAgainWhenBroughtForward);
    AddScriptToDoScriptQueue("A");
    AddScriptToDoScriptQueue("B");
    /* Without the guard the nested Idle would send "A" a second time (the queue moves on
     * only after the send) and take "B" early. */
    EXPECT_EQ(Names{"A"}, IdleOnce());
    EXPECT_EQ(Names{"B"}, IdleOnce());
    EXPECT_GE(PlatformMemoryBusFrontCount(), 2) << "the host was brought forward before each script";
}

}  // namespace
