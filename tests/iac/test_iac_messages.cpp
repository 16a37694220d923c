/*
 * test_iac_messages.cpp: the message protocol: keyword sets of incoming messages,
 * archiving with handled ids and overflow, and outgoing events (order, defaults,
 * lengths, refusals).
 */
#include "IacTestSupport.h"

#include <cstring>

#include "iac/IacTables.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

namespace {

const char *const kCatchAll[] = {"ACTN", "ANSR", "ATBS", "CAS ", "CODE", "DOC ", "HLAT", "HLNG", "IDS ", "ITEM",
                                 "LAT ", "LLAT", "LLNG", "LONG", "LSTA", "LSTB", "LST2", "NAME", "VESK", "NUM ",
                                 "OBJ2", "OVID", "PATH", "PERM", "STAT", "TEXT", "TYPE", "VERS", "VNUM", "YRPS"};

std::vector<std::string> KeywordSet(const char *id)
{
    OSType keywords[kMaxParamCount];
    int count = GetKeywordSetForMessage(FOUR_CHAR(id[0], id[1], id[2], id[3]), keywords, kMaxParamCount);
    std::vector<std::string> names;
    for (int i = 0; i < count; i++) {
        char text[5] = {(char)(keywords[i] >> 24), (char)(keywords[i] >> 16), (char)(keywords[i] >> 8),
                        (char)keywords[i], 0};
        names.push_back(text);
    }
    return names;
}

std::vector<std::string> NodeNames(DataNode *first)
{
    std::vector<std::string> names;
    for (; first; first = first->next) names.push_back(first->name);
    return names;
}

}   // namespace

TEST_F(IacTest, KeywordSetsFollowTheMessageIds)
{
    std::vector<std::string> catchAll = {"MSSG", "SIGN", "PSIG", "XTRA"};
    catchAll.insert(catchAll.end(), std::begin(kCatchAll), std::end(kCatchAll));
    EXPECT_EQ(catchAll.size(), 34u);
    EXPECT_EQ(KeywordSet("ZZZZ"), catchAll);
    EXPECT_EQ(KeywordSet("CHM!"), catchAll);
    EXPECT_EQ(KeywordSet("RIDS"), catchAll);
    EXPECT_EQ(KeywordSet("BYE "), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA"}));
    EXPECT_EQ(KeywordSet("HOLA"), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "NAME", "PATH", "VERS", "DOC "}));
    EXPECT_EQ(KeywordSet("MHIT"), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "YRPS", "ITEM", "TEXT"}));
    EXPECT_EQ(KeywordSet("YROD"), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "NUM ", "LST2", "TYPE"}));
    EXPECT_EQ(KeywordSet("VEW!"), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "LLAT", "LLNG", "HLAT", "HLNG"}));
    EXPECT_EQ(KeywordSet("CPT!"), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "LAT ", "LONG"}));
    EXPECT_EQ(KeywordSet("USR!").size(), 8u);

    /* A short buffer gets what fits; the count still tells the whole set. */
    OSType few[6];
    EXPECT_EQ(GetKeywordSetForMessage(FOUR_CHAR('Z', 'Z', 'Z', 'Z'), few, 6), 34);
    EXPECT_EQ(few[5], FOUR_CHAR('A', 'N', 'S', 'R'));
}

TEST_F(IacTest, ArchiveStoresOnlyTheKeywordsOfTheIdInSetOrder)
{
    Call(kTPX1SetHandledMessages, "BYE |ZZZZ|OBID");

    /* "BYE ": the standard four only; an empty value is skipped. */
    EXPECT_EQ(Receive({{"NAME", "x"}, {"MSSG", "BYE "}, {"SIGN", "NMB5"}, {"XTRA", ""}, {"PSIG", "NMB5"}, {"TEXT", "t"}}),
              noErr);
    ASSERT_EQ(ArchivedCount(), 1);
    EXPECT_EQ(NodeNames(gArchivedIncomingMessageParameterDataNodeList[0]),
              (std::vector<std::string>{"MSSG", "SIGN", "PSIG"}));

    /* An unknown id: all 34 of the catch-all set, in the set's order; others are dropped. */
    Params all = {{"QQQQ", "not ours"}};
    for (int i = 29; i >= 0; i--) all.emplace_back(kCatchAll[i], std::string("v") + kCatchAll[i]);
    all.insert(all.end(), {{"XTRA", "x"}, {"PSIG", "P"}, {"SIGN", "ABCD"}, {"MSSG", "ZZZZ"}});
    EXPECT_EQ(Receive(all), noErr);
    ASSERT_EQ(ArchivedCount(), 2);
    std::vector<std::string> names = NodeNames(gArchivedIncomingMessageParameterDataNodeList[1]);
    ASSERT_EQ(names.size(), 34u);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 4),
              (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA"}));
    EXPECT_EQ(names[4], "ACTN");
    EXPECT_EQ(names[33], "YRPS");
    EXPECT_EQ(ArchivedValue(1, "LST2"), "vLST2");
    EXPECT_EQ(ArchivedValue(1, "QQQQ"), "<missing>");

    /* "OBID" reads IDS and LST2 only. */
    EXPECT_EQ(Receive({{"MSSG", "OBID"}, {"SIGN", "TPX1"}, {"IDS ", "1 2"}, {"LST2", "L"}, {"NAME", "n"}}), noErr);
    EXPECT_EQ(NodeNames(gArchivedIncomingMessageParameterDataNodeList[2]),
              (std::vector<std::string>{"MSSG", "SIGN", "IDS ", "LST2"}));
}

TEST_F(IacTest, ArchiveKeepsHandledIdsOnlyAndRefusesBadIdentities)
{
    Call(kTPX1SetHandledMessages, "INFO|ZZZZ");
    EXPECT_EQ(Receive({{"MSSG", "OTHR"}, {"SIGN", "ABCD"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 0);
    EXPECT_EQ(Receive({{"MSSG", "INFO"}, {"SIGN", "ABCD"}, {"LST2", "a"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 1);

    /* A later table without INFO drops it. */
    Call(kTPX1SetHandledMessages, "ZZZZ");
    EXPECT_EQ(gHandledMessages[0], FOUR_CHAR('Z', 'Z', 'Z', 'Z'));
    for (int i = 1; i < kHandledMessageCount; i++) EXPECT_EQ(gHandledMessages[i], 0u);
    EXPECT_EQ(Receive({{"MSSG", "INFO"}, {"SIGN", "ABCD"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 1);

    /* MSSG and SIGN: at most five characters, both required; nothing stored otherwise. */
    AppleEvent event = MakeEvent({{"MSSG", "ZZZZZZ"}, {"SIGN", "ABCD"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), kMissingErr);
    AEDisposeDesc(&event);
    event = MakeEvent({{"MSSG", "ZZZZ"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), errAEDescNotFound);
    AEDisposeDesc(&event);
    EXPECT_EQ(Receive({{"SIGN", "ABCD"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 1);
    event = MakeEvent({{"MSSG", "ZZZZ5"}, {"SIGN", "ABCDE"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), noErr);
    AEDisposeDesc(&event);
    EXPECT_EQ(ArchivedCount(), 2);
    EXPECT_EQ(ArchivedValue(1, "MSSG"), "ZZZZ5");
}

TEST_F(IacTest, TwentyFirstMessageIsDroppedAndTheSenderGetsNoError)
{
    Call(kTPX1SetHandledMessages, "ZZZZ");
    for (int i = 0; i < kArchiveSlotCount; i++)
        ASSERT_EQ(Receive({{"MSSG", "ZZZZ"}, {"SIGN", "ABCD"}, {"TEXT", std::to_string(i)}}), noErr);
    EXPECT_EQ(ArchivedCount(), 20);
    EXPECT_EQ(Receive({{"MSSG", "ZZZZ"}, {"SIGN", "ABCD"}, {"TEXT", "late"}}), noErr);
    AppleEvent event = MakeEvent({{"MSSG", "ZZZZ"}, {"SIGN", "ABCD"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), kArchiveFullErr);
    AEDisposeDesc(&event);
    EXPECT_EQ(ArchivedCount(), 20);
    EXPECT_EQ(ArchivedValue(19, "TEXT"), "19");

    /* A freed slot is taken by the next message. */
    TakeOldestArchivedMessage();
    EXPECT_EQ(Receive({{"MSSG", "ZZZZ"}, {"SIGN", "ABCD"}, {"TEXT", "new"}}), noErr);
    EXPECT_EQ(ArchivedValue(19, "TEXT"), "new");
    EXPECT_EQ(ArchivedValue(0, "TEXT"), "1");
}

TEST_F(IacTest, InstalledHandlerReceivesEventsFromTheBus)
{
    Call(kTPX1SetHandledMessages, "VEW!");
    EXPECT_EQ(InitIac(), noErr);
    AppleEvent event = MakeEvent({{"MSSG", "VEW!"}, {"SIGN", "TPX1"}, {"LLAT", "1.5"}, {"HLNG", "-2"}});
    EXPECT_EQ(PlatformMemoryBusDeliver(&event, kTopoluxSignature), noErr);
    AEDisposeDesc(&event);
    EXPECT_EQ(ArchivedCount(), 0);   /* delivered at the next dispatch, not inside the call */
    EXPECT_GE(AEProcessEvents(), 1);
    ASSERT_EQ(ArchivedCount(), 1);
    EXPECT_EQ(ArchivedValue(0, "LLAT"), "1.5");
    EXPECT_EQ(ArchivedValue(0, "HLNG"), "-2");
}

TEST_F(IacTest, OutgoingEventOrderAndDefaults)
{
    AddApp(kTopoluxSignature);
    SetOutgoingMessageParameterFromStr("LST2", "abcdefgh", 1);
    SetOutgoingMessageParameterFromStr("NAME", "ab", 1);
    SetOutgoingMessageParameterFromStr("XTRA", "LINK", 1);
    SetOutgoingMessageParameterFromStr("TEXT", "cd", 1);
    SetOutgoingMessageParameterFromStr("OPTN", "x", 1);
    SetOutgoingMessageParameterFromStr("MSSG", "TEST", 1);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), noErr);
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);
    std::vector<SentMessage> sent = TakeSent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].to, kTopoluxSignature);
    EXPECT_EQ(sent[0].eventClass, kVeskEventClass);
    EXPECT_EQ(sent[0].eventID, kVeskEventID);
    EXPECT_EQ(sent[0].Keywords(),
              (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "OPTN", "NAME", "TEXT", "LST2"}));
    EXPECT_EQ(sent[0].Get("SIGN"), "FMP7");
    EXPECT_EQ(sent[0].Get("PSIG"), "FMP7");
    EXPECT_EQ(sent[0].Get("XTRA"), "LINK");
    EXPECT_EQ(sent[0].Get("LST2"), "abcdefgh");

    /* Only MSSG: exactly the four standard parameters, XTRA empty; PSIG from "App PSIG". */
    SetGlobalFromStr("App PSIG", 1, "PSG1");
    SetOutgoingMessageParameterFromStr("MSSG", "ONLY", 1);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), noErr);
    sent = TakeSent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].params, (Params{{"MSSG", "ONLY"}, {"SIGN", "FMP7"}, {"PSIG", "PSG1"}, {"XTRA", ""}}));

    /* PSIG falls back to the SIGN the list carries when "App PSIG" is blank. */
    SetGlobalFromStr("App PSIG", 1, "    ");
    SetOutgoingMessageParameterFromStr("MSSG", "ONLY", 2);
    SetOutgoingMessageParameterFromStr("SIGN", "ABCD", 2);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 2), noErr);
    sent = TakeSent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].Get("SIGN"), "ABCD");
    EXPECT_EQ(sent[0].Get("PSIG"), "ABCD");
}

TEST_F(IacTest, OutgoingValueLengthsAndStableOrder)
{
    AddApp(kNimboSignature);
    SetOutgoingMessageParameterFromStr("MSSG", "TEST", 1);
    SetOutgoingMessageParameterFromStr("BBBB", "22", 1);
    SetOutgoingMessageParameterFromStr("AAAA", "11", 1);
    SetOutgoingMessageParameterFromStr("EMPT", "", 1);
    SetOutgoingMessageParameterFromStr("CCCC", "33", 1);
    SetOutgoingMessageParameterFromStr("RAW ", "raw!", 1);
    /* A value that does not end in NUL is sent whole. */
    char **raw = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("RAW ", 1);
    ASSERT_NE(raw, nullptr);
    ASSERT_EQ(SetFHandleSize(raw, GetFHandleSize(raw) - 1), noErr);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kNimboSignature, 1), noErr);
    std::vector<SentMessage> sent = TakeSent(kNimboSignature);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].Keywords(),
              (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "EMPT", "BBBB", "AAAA", "CCCC", "RAW "}));
    EXPECT_EQ(sent[0].Get("MSSG"), "TEST");   /* the stored NUL is not sent */
    EXPECT_EQ(sent[0].Get("EMPT"), "");
    EXPECT_EQ(sent[0].Get("BBBB"), "22");
    EXPECT_EQ(sent[0].Get("RAW "), "raw!");
}

TEST_F(IacTest, OutgoingRefusals)
{
    AddApp(kTopoluxSignature);
    /* A blank or missing MSSG: -123, the list is emptied, nothing sent. */
    SetOutgoingMessageParameterFromStr("MSSG", "    ", 1);
    SetOutgoingMessageParameterFromStr("TEXT", "t", 1);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), kNoMessageIdErr);
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);
    SetOutgoingMessageParameterFromStr("TEXT", "t", 1);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), kNoMessageIdErr);
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);

    /* No signature anywhere: -2, the list is kept. */
    SetGlobalFromStr("App Signature", 1, "");
    SetOutgoingMessageParameterFromStr("MSSG", "TEST", 1);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), kNoListOrSignatureErr);
    EXPECT_NE(FindDataNodeInList("MSSG", gOutgoingUserMessageParameterDataNodeList), nullptr);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 3), kNoListOrSignatureErr);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);

    /* No memory for the array of entries: -108, the list kept. */
    SetGlobalFromStr("App Signature", 1, "FMP7");
    HostMemorySetFailure(1, kHostFailOnce);
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1), memFullErr);
    EXPECT_NE(FindDataNodeInList("MSSG", gOutgoingUserMessageParameterDataNodeList), nullptr);

    /* An addressee that can't be found: its error, the alert, the list emptied. */
    EXPECT_EQ(SendMessageFromOutgoingMessageParameters(FOUR_CHAR('N', 'O', 'N', 'E'), 1), procNotFound);
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);
    EXPECT_EQ(DialogCount(), 1);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
}

TEST_F(IacTest, SendMessageToGreetsEveryTimeAndReportsFailures)
{
    AddApp(kTopoluxSignature);
    Call(kTPX1SetTopoluxSharingMenu, "Sites|Info;Link");
    for (int round = 0; round < 2; round++) {
        SetOutgoingMessageParameterFromStr("MSSG", "SHOW", 1);
        EXPECT_EQ(Call(kTPX1SendMessageTo, "TPX1 and more"), "");
        std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
        EXPECT_EQ(SentIds(sent), (std::vector<std::string>{"HOLA", "MENU", "SHOW"}));
        ASSERT_EQ(sent.size(), 3u);
        EXPECT_EQ(sent[0].Get("NAME"), "FileMaker Pro");
        EXPECT_EQ(sent[0].Get("VERS"), "2");
        EXPECT_EQ(sent[0].Get("PATH"), "Linux:opt:FileMaker:FileMaker Pro");
        EXPECT_EQ(sent[0].Get("DOC "), "");
    }
    EXPECT_EQ(DialogCount(), 0);

    /* Without MSSG: nothing goes out but the greeting, and the error is shown. */
    EXPECT_EQ(Call(kTPX1SendMessageTo, "TPX1"), "");
    EXPECT_EQ(SentIds(TakeSent()), (std::vector<std::string>{"HOLA", "MENU"}));
    ASSERT_EQ(DialogCount(), 1);
    EXPECT_NE(DialogText(0).find("Error: -123"), std::string::npos);
}
