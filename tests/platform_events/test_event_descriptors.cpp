/*
 * test_event_descriptors.cpp: the event service's parameters and attributes as the
 * messaging code reads them, dispatch of events sent to this process through the
 * in-process queue (AEProcessEvents, never inside AESend), and the current process's
 * own information. Fault injection into these calls is swept in tests/oom.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <poll.h>
#include <string>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Processes.h"
#include "platform/TestBus.h"

namespace {

const OSType kSelf = FOUR_CHAR('F', 'M', 'P', '7');
const OSType kKeyMSSG = FOUR_CHAR('M', 'S', 'S', 'G');
const OSType kKeySIGN = FOUR_CHAR('S', 'I', 'G', 'N');
const OSType kKeyNUM = FOUR_CHAR('N', 'U', 'M', ' ');

OSErr MakeEvent(OSType signature, AEEventClass cls, AEEventID id, AppleEvent *event)
{
    AEAddressDesc target;
    OSErr err = AECreateDesc(typeApplSignature, &signature, sizeof signature, &target);
    if (err) return err;
    err = AECreateAppleEvent(cls, id, &target, kAutoGenerateReturnID, kAnyTransactionID, event);
    AEDisposeDesc(&target);
    return err;
}

OSErr PutText(AppleEvent *event, OSType keyword, const std::string &text)
{
    return AEPutParamPtr(event, keyword, typeChar, text.data(), (int32_t)text.size());
}

std::string GetText(const AppleEvent *event, OSType keyword, OSErr *err)
{
    char buffer[256];
    DescType type = 0;
    int32_t size = 0;
    *err = AEGetParamPtr(event, keyword, typeChar, &type, buffer, sizeof buffer, &size);
    if (*err) return "";
    return std::string(buffer, size);
}

struct Received {
    AEEventClass cls = 0;
    OSType sender = 0;
    std::vector<std::string> texts;
};
std::vector<Received> gReceived;
bool gInsideSend = false;

OSErr RecordingHandler(const AppleEvent *event, AppleEvent *reply, intptr_t refcon)
{
    EXPECT_FALSE(gInsideSend);
    Received r;
    DescType type;
    int32_t size;
    AEGetAttributePtr(event, keyEventClassAttr, typeWildCard, &type, &r.cls, sizeof r.cls, &size);
    AEGetAttributePtr(event, keyOriginalAddressAttr, typeApplSignature, &type, &r.sender, sizeof r.sender, &size);
    char buffer[64];
    AEKeyword keyword;
    for (int32_t i = 1; PlatformEventGetNthParam(event, i, &keyword, &type, buffer, sizeof buffer, &size) == noErr; i++)
        r.texts.push_back(std::string(buffer, size));
    gReceived.push_back(r);
    return (OSErr)refcon;
}

/* Sends one more do-script to this process while gResends lasts. */
int gResends = 0;
OSErr ResendingHandler(const AppleEvent *, AppleEvent *, intptr_t)
{
    if (gResends <= 0) return noErr;
    gResends--;
    AppleEvent again;
    OSErr err = MakeEvent(kSelf, kAEMiscStandards, kAEDoScript, &again);
    if (!err) err = AESend(&again, nullptr, kAENoReply, 0, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&again);
    return err;
}

class EventDescriptors : public ::testing::Test {
protected:
    void SetUp() override
    {
        PlatformBusUseMemory();
        PlatformSetProcessSignature(kSelf);
        gReceived.clear();
    }
    void TearDown() override
    {
        AERemoveEventHandler(FOUR_CHAR('V', 'E', 'S', 'K'), FOUR_CHAR('A', 'E', 'V', 'T'), nullptr, false);
        AERemoveEventHandler(kAEMiscStandards, kAEDoScript, nullptr, false);
        PlatformSetProcessSignature(0);
    }
};

TEST_F(EventDescriptors, ParametersAndAttributesAsTheMessagingCodeReadsThem)
{
    /* Parameters hold their own copies; disposing leaves a null descriptor. */
    char data[8] = "abcdefg";
    AEDesc desc, empty;
    ASSERT_EQ(noErr, AECreateDesc(typeChar, data, 7, &desc));
    EXPECT_EQ(noErr, AEDisposeDesc(&desc));
    EXPECT_EQ(typeNull, desc.descriptorType);
    EXPECT_EQ(nullptr, desc.dataHandle);
    AEInitializeDesc(&empty);
    EXPECT_EQ(noErr, AEDisposeDesc(&empty));

    AppleEvent event;
    ASSERT_EQ(noErr, MakeEvent(FOUR_CHAR('T', 'P', 'X', '1'), FOUR_CHAR('V', 'E', 'S', 'K'),
                               FOUR_CHAR('A', 'E', 'V', 'T'), &event));
    ASSERT_EQ(noErr, AEPutParamPtr(&event, kKeyMSSG, typeChar, data, 7));
    data[0] = 'X';
    OSErr err;
    EXPECT_EQ("abcdefg", GetText(&event, kKeyMSSG, &err));
    ASSERT_EQ(noErr, PutText(&event, kKeySIGN, "FMP7"));
    ASSERT_EQ(noErr, PutText(&event, kKeyNUM, ""));
    ASSERT_EQ(noErr, PutText(&event, kKeyMSSG, "SHOW!"));   /* replaces in place */

    /* In the order put; past the last, not found. */
    AEKeyword keyword;
    DescType type;
    int32_t size;
    char buffer[16];
    ASSERT_EQ(noErr, PlatformEventGetNthParam(&event, 1, &keyword, &type, buffer, sizeof buffer, &size));
    EXPECT_EQ(kKeyMSSG, keyword);
    EXPECT_EQ(std::string("SHOW!"), std::string(buffer, size));
    ASSERT_EQ(noErr, PlatformEventGetNthParam(&event, 3, &keyword, &type, buffer, sizeof buffer, &size));
    EXPECT_EQ(kKeyNUM, keyword);
    EXPECT_EQ(errAEDescNotFound, PlatformEventGetNthParam(&event, 4, &keyword, &type, buffer, 16, &size));

    /* A smaller buffer gets the start; actualSize is still the whole size. */
    memset(buffer, 0, sizeof buffer);
    ASSERT_EQ(noErr, AEGetParamPtr(&event, kKeyMSSG, typeChar, &type, buffer, 2, &size));
    EXPECT_EQ(5, size);
    EXPECT_EQ(std::string("SH"), std::string(buffer));
    ASSERT_EQ(noErr, AESizeOfParam(&event, kKeyNUM, &type, &size));
    EXPECT_EQ(typeChar, type);
    EXPECT_EQ(0, size);
    EXPECT_EQ(errAEDescNotFound, AESizeOfParam(&event, FOUR_CHAR('L', 'S', 'T', '2'), &type, &size));
    GetText(&event, FOUR_CHAR('L', 'S', 'T', '2'), &err);
    EXPECT_EQ(errAEDescNotFound, err);

    /* Class, id and address are attributes; a missed keyword never is. */
    OSType value = 0;
    ASSERT_EQ(noErr, AEGetAttributePtr(&event, keyEventClassAttr, typeWildCard, &type, &value, 4, &size));
    EXPECT_EQ(FOUR_CHAR('V', 'E', 'S', 'K'), value);
    ASSERT_EQ(noErr, AEGetAttributePtr(&event, keyEventIDAttr, typeWildCard, &type, &value, 4, &size));
    EXPECT_EQ(FOUR_CHAR('A', 'E', 'V', 'T'), value);
    ASSERT_EQ(noErr, AEGetAttributePtr(&event, keyAddressAttr, typeWildCard, &type, &value, 4, &size));
    EXPECT_EQ(typeApplSignature, type);
    EXPECT_EQ(FOUR_CHAR('T', 'P', 'X', '1'), value);
    EXPECT_EQ(errAEDescNotFound,
              AEGetAttributePtr(&event, keyMissedKeywordAttr, typeWildCard, &type, nullptr, 0, &size));
    AEDisposeDesc(&event);
}

TEST_F(EventDescriptors, EventsToSelfWaitInTheQueueUntilProcessed)
{
    ASSERT_EQ(noErr, AEInstallEventHandler(kAEMiscStandards, kAEDoScript, RecordingHandler, 0, false));
    AppleEvent event, reply;
    ASSERT_EQ(noErr, MakeEvent(kSelf, kAEMiscStandards, kAEDoScript, &event));
    PutText(&event, keyDirectObject, "Handle Message");
    gInsideSend = true;
    ASSERT_EQ(noErr, AESend(&event, &reply, kAENoReply + kAECanInteract + kAECanSwitchLayer, kAENormalPriority,
                            kNoTimeOut, nullptr, nullptr));
    gInsideSend = false;
    EXPECT_EQ(typeNull, reply.descriptorType);
    /* The event was copied: changing or disposing the original changes nothing queued. */
    PutText(&event, keyDirectObject, "Other");
    AEDisposeDesc(&event);
    EXPECT_TRUE(gReceived.empty());
    EXPECT_EQ(0, PlatformMemoryBusSentCount(0));
    struct pollfd ready = {AEGetEventFD(), POLLIN, 0};
    EXPECT_EQ(1, poll(&ready, 1, 0));

    EXPECT_EQ(1, AEProcessEvents());
    EXPECT_EQ(0, poll(&ready, 1, 0));
    ASSERT_EQ(1u, gReceived.size());
    EXPECT_EQ(kAEMiscStandards, gReceived[0].cls);
    EXPECT_EQ(kSelf, gReceived[0].sender);
    ASSERT_EQ(1u, gReceived[0].texts.size());
    EXPECT_EQ("Handle Message", gReceived[0].texts[0]);
    EXPECT_EQ(0, AEProcessEvents());

    /* Installing again replaces the handler; an event nobody handles is dropped. */
    ASSERT_EQ(noErr, AEInstallEventHandler(kAEMiscStandards, kAEDoScript, RecordingHandler, 7, false));
    ASSERT_EQ(noErr, AERemoveEventHandler(kAEMiscStandards, kAEDoScript, nullptr, false));
    ASSERT_EQ(noErr, MakeEvent(kSelf, kAEMiscStandards, kAEDoScript, &event));
    ASSERT_EQ(noErr, AESend(&event, nullptr, kAENoReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr));
    EXPECT_EQ(0, AEProcessEvents());
    EXPECT_EQ(0, AEProcessEvents());
    EXPECT_EQ(1u, gReceived.size());

    AEDisposeDesc(&event);

    /* A handler that sends to itself is served on the next round, and the descriptor
     * stays readable until then; several events wait behind one wake-up. */
    ASSERT_EQ(noErr, AEInstallEventHandler(kAEMiscStandards, kAEDoScript, ResendingHandler, 0, false));
    gResends = 2;
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(noErr, MakeEvent(kSelf, kAEMiscStandards, kAEDoScript, &event));
        ASSERT_EQ(noErr, AESend(&event, nullptr, kAENoReply, 0, kNoTimeOut, nullptr, nullptr));
        AEDisposeDesc(&event);
    }
    EXPECT_EQ(1, poll(&ready, 1, 0));
    EXPECT_EQ(2, AEProcessEvents());
    EXPECT_EQ(1, poll(&ready, 1, 0));
    EXPECT_EQ(2, AEProcessEvents());
    EXPECT_EQ(0, poll(&ready, 1, 0));
    EXPECT_EQ(0, AEProcessEvents());
    EXPECT_EQ(0, gResends);
}

TEST_F(EventDescriptors, CurrentProcessDescribesItself)
{
    ProcessSerialNumber psn;
    ASSERT_EQ(noErr, GetCurrentProcess(&psn));
    unsigned char name[256];
    FSSpec theSpec;
    ProcessInfoRec info;
    memset(&info, 0, sizeof info);
    info.processInfoLength = 60;
    info.processName = name;
    info.processAppSpec = &theSpec;
    ASSERT_EQ(noErr, GetProcessInformation(&psn, &info));
    EXPECT_EQ(kSelf, info.processSignature);
    EXPECT_EQ(std::string("test_event_descriptors"), std::string((char *)name + 1, name[0]));
    EXPECT_GT(info.processPID, 0);
    char path[1024];
    ASSERT_EQ(noErr, FSpGetPOSIXPath(&theSpec, path, sizeof path));
    EXPECT_NE(nullptr, strstr(path, "test_event_descriptors"));
}

} // namespace
