/*
 * test_memory_bus.cpp: the in-memory test bus behind the event and process services:
 * the application table and process walk, events sent and taken, events delivered to
 * this process, launches and SetFrontProcess recorded.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <unistd.h>

#include "DocumentLaunch.h"
#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Processes.h"
#include "platform/TestBus.h"

namespace {

const OSType kSelf = FOUR_CHAR('F', 'M', 'P', '7');
const OSType kTopolux = FOUR_CHAR('T', 'P', 'X', '1');
const OSType kNimbo = FOUR_CHAR('N', 'M', 'B', '5');
const OSType kVesk = FOUR_CHAR('V', 'E', 'S', 'K');
const OSType kAevt = FOUR_CHAR('A', 'E', 'V', 'T');
const OSType kKeyMSSG = FOUR_CHAR('M', 'S', 'S', 'G');

OSErr SendText(OSType to, const char *mssg)
{
    AEAddressDesc target;
    AECreateDesc(typeApplSignature, &to, 4, &target);
    AppleEvent event;
    OSErr err = AECreateAppleEvent(kVesk, kAevt, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AEDisposeDesc(&target);
    if (err) return err;
    AEPutParamPtr(&event, kKeyMSSG, typeChar, mssg, (int32_t)strlen(mssg));
    err = AESend(&event, nullptr, kAENoReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&event);
    return err;
}

std::string gLastMessage;
OSType gLastSender;
int gActivations;

OSErr Handler(const AppleEvent *event, AppleEvent *, intptr_t)
{
    char buffer[16];
    DescType type;
    int32_t size = 0;
    AEGetParamPtr(event, kKeyMSSG, typeChar, &type, buffer, sizeof buffer, &size);
    gLastMessage.assign(buffer, size);
    AEGetAttributePtr(event, keyOriginalAddressAttr, typeApplSignature, &type, &gLastSender, 4, &size);
    return noErr;
}

void CountActivation(void)
{
    gActivations++;
}

class MemoryBus : public ::testing::Test {
protected:
    void SetUp() override
    {
        PlatformBusUseMemory();
        PlatformSetProcessSignature(kSelf);
        gActivations = 0;
    }
    void TearDown() override
    {
        PlatformSetActivateHandler(nullptr);
        AERemoveEventHandler(kVesk, kAevt, nullptr, false);
        PlatformSetProcessSignature(0);
        PlatformBusUseMemory();
    }
};

TEST_F(MemoryBus, ProcessWalkFindsSelfAndTheTableInOrder)
{
    PlatformMemoryBusAddApp(kTopolux, "TOPOLUX", "/opt/topolux/TOPOLUX");
    PlatformMemoryBusAddApp(kNimbo, "NIMBO", "/opt/nimbo/NIMBO");
    OSType seen[4] = {0};
    int count = 0;
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) == noErr && count < 4) {
        unsigned char name[256];
        ProcessInfoRec info;
        memset(&info, 0, sizeof info);
        info.processInfoLength = 60;
        info.processName = name;
        ASSERT_EQ(noErr, GetProcessInformation(&psn, &info));
        if (info.processSignature == kTopolux) {
            EXPECT_EQ(std::string("TOPOLUX"), std::string((char *)name + 1, name[0]));
        }
        seen[count++] = info.processSignature;
    }
    EXPECT_EQ(3, count);
    EXPECT_EQ(kSelf, seen[0]);
    EXPECT_EQ(kTopolux, seen[1]);
    EXPECT_EQ(kNimbo, seen[2]);

    PlatformMemoryBusRemoveApp(kTopolux);
    psn = ProcessSerialNumber{0, kNoProcess};
    count = 0;
    while (GetNextProcess(&psn) == noErr) count++;
    EXPECT_EQ(2, count);
    EXPECT_EQ(procNotFound, GetNextProcess(&psn));
}

TEST_F(MemoryBus, EventsToOthersAreKeptAndEventsInAreDispatched)
{
    EXPECT_EQ(procNotFound, SendText(kTopolux, "HOLA"));
    PlatformMemoryBusAddApp(kTopolux, "TOPOLUX", "/opt/topolux/TOPOLUX");
    ASSERT_EQ(noErr, SendText(kTopolux, "HOLA"));
    ASSERT_EQ(noErr, SendText(kTopolux, "SHOW"));
    EXPECT_EQ(2, PlatformMemoryBusSentCount(kTopolux));
    EXPECT_EQ(0, PlatformMemoryBusSentCount(kNimbo));

    AppleEvent sent;
    ASSERT_EQ(noErr, PlatformMemoryBusTakeSent(kTopolux, &sent));
    char buffer[8];
    DescType type;
    int32_t size;
    ASSERT_EQ(noErr, AEGetParamPtr(&sent, kKeyMSSG, typeChar, &type, buffer, 8, &size));
    EXPECT_EQ(std::string("HOLA"), std::string(buffer, size));
    OSType sender = 0;
    ASSERT_EQ(noErr, AEGetAttributePtr(&sent, keyOriginalAddressAttr, typeWildCard, &type, &sender, 4, &size));
    EXPECT_EQ(kSelf, sender);
    EXPECT_EQ(1, PlatformMemoryBusSentCount(0));

    /* The same event delivered back to us, as if TOPOLUX had sent it. */
    ASSERT_EQ(noErr, AEInstallEventHandler(kVesk, kAevt, Handler, 0, false));
    ASSERT_EQ(noErr, PlatformMemoryBusDeliver(&sent, kTopolux));
    AEDisposeDesc(&sent);
    EXPECT_EQ("", gLastMessage);
    EXPECT_EQ(1, AEProcessEvents());
    EXPECT_EQ("HOLA", gLastMessage);
    EXPECT_EQ(kTopolux, gLastSender);

    EXPECT_EQ(noErr, PlatformMemoryBusTakeSent(0, &sent));
    AEDisposeDesc(&sent);
    EXPECT_EQ(errAEDescNotFound, PlatformMemoryBusTakeSent(0, &sent));
}

TEST_F(MemoryBus, LaunchesAndActivationsAreRecorded)
{
    PlatformSetActivateHandler(CountActivation);
    ProcessSerialNumber self;
    GetCurrentProcess(&self);
    ASSERT_EQ(noErr, SetFrontProcess(&self));
    EXPECT_EQ(1, gActivations);

    /* Launch with a document: an open-document event coerced to 'appa'. */
    char dir[] = "/tmp/platbus-memXXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    std::string app = std::string(dir) + "/TOPOLUX";
    FILE *f = fopen(app.c_str(), "w");
    fclose(f);
    char classic[1024];
    ASSERT_EQ(noErr, PlatformPOSIXPathToClassic(app.c_str(), classic, sizeof classic));
    Str255 pname;
    pname[0] = (unsigned char)strlen(classic);
    memcpy(pname + 1, classic, pname[0]);
    FSSpec theSpec;
    ASSERT_EQ(noErr, FSMakeFSSpec(0, 0, pname, &theSpec));

    DocumentLaunch launch;
    ASSERT_EQ(noErr, PrepareDocumentLaunch(kTopolux, &theSpec, &theSpec, launchContinue + launchNoFileFlags, &launch));
    LaunchParamBlockRec &block = launch.block;
    EXPECT_EQ(procNotFound, LaunchApplication(&block));
    PlatformMemoryBusSetLaunchSignature(kTopolux);
    ASSERT_EQ(noErr, LaunchApplication(&block));
    EXPECT_EQ(2, PlatformMemoryBusLaunchCount());
    EXPECT_EQ(app, std::string(PlatformMemoryBusLaunchPath(1)));
    EXPECT_EQ(app, std::string(PlatformMemoryBusLaunchDocument(1)));

    ASSERT_EQ(noErr, SetFrontProcess(&block.launchProcessSN));
    ASSERT_EQ(2, PlatformMemoryBusFrontCount());
    EXPECT_EQ(kSelf, PlatformMemoryBusFront(0));
    EXPECT_EQ(kTopolux, PlatformMemoryBusFront(1));
    EXPECT_EQ(1, gActivations);
    EXPECT_EQ(noErr, SendText(kTopolux, "HOLA"));

    DisposeDocumentLaunch(&launch);
    unlink(app.c_str());
    rmdir(dir);
}

} // namespace
