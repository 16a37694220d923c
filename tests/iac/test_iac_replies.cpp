/*
 * test_iac_replies.cpp: the messages the plug-in answers by itself: greetings, menu
 * hits from TOPOLUX and NIMBO, selection reports, and NIMBO's requests to come forward.
 */
#include "IacTestSupport.h"

#include "iac/IacTables.h"
#include "platform/TestBus.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"

namespace {

int32_t FrontCountOf(OSType signature)
{
    int32_t count = 0;
    for (int32_t i = 0; i < PlatformMemoryBusFrontCount(); i++)
        if (PlatformMemoryBusFront(i) == signature) count++;
    return count;
}

}   // namespace

TEST_F(IacTest, HolaRecordsThePartnerAndAnswersWithOkhiAndMenus)
{
    AddApp(kNimboSignature);
    Call(kTPX1SetNimboSharingMenu, "Dispersion|Run;Show");
    EXPECT_EQ(Receive({{"MSSG", "HOLA"}, {"SIGN", "NMB5"}, {"PATH", "Linux:opt:NIMBO"}, {"NAME", "NIMBO"}}), noErr);
    EXPECT_EQ(gFriends[0].signature, kNimboSignature);
    EXPECT_STREQ(gFriends[0].path, "Linux:opt:NIMBO");
    std::vector<SentMessage> sent = TakeSent(kNimboSignature);
    EXPECT_EQ(SentIds(sent), (std::vector<std::string>{"OKHI", "MENU"}));
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].Get("NAME"), "Dispersion");
    EXPECT_EQ(sent[1].Get("ITMS"), "Run;Show");
    EXPECT_EQ(sent[1].Get("VERS"), "2");
    /* Not a handled id: not kept for the solution. */
    EXPECT_EQ(ArchivedCount(), 0);

    /* Kept when the solution handles HOLA; the greeting of TOPOLUX has no VIEW. */
    AddApp(kTopoluxSignature);
    Call(kTPX1SetTopoluxFirstView, "1 2 3 4");
    Call(kTPX1SetHandledMessages, "HOLA");
    EXPECT_EQ(Receive({{"MSSG", "HOLA"}, {"SIGN", "TPX1"}, {"PATH", "Linux:opt:TOPOLUX"}}), noErr);
    EXPECT_EQ(SentIds(TakeSent()), (std::vector<std::string>{"OKHI"}));
    EXPECT_EQ(ArchivedCount(), 1);
    EXPECT_EQ(gFriends[1].signature, kTopoluxSignature);

    /* OKHI records (also a new path) and sends nothing. */
    EXPECT_EQ(Receive({{"MSSG", "OKHI"}, {"SIGN", "NMB5"}, {"PATH", "Linux:new:NIMBO"}}), noErr);
    EXPECT_STREQ(gFriends[0].path, "Linux:new:NIMBO");
    EXPECT_EQ(Receive({{"MSSG", "OKHI"}, {"SIGN", "REPF"}}), noErr);
    EXPECT_EQ(gFriends[2].signature, FOUR_CHAR('R', 'E', 'P', 'F'));
    EXPECT_STREQ(gFriends[2].path, "");
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
    /* A fourth partner is not recorded. */
    EXPECT_EQ(Receive({{"MSSG", "OKHI"}, {"SIGN", "XXXX"}}), noErr);
    for (const FriendEntry &entry : gFriends) EXPECT_NE(entry.signature, FOUR_CHAR('X', 'X', 'X', 'X'));
}

TEST_F(IacTest, TopoluxMenuHitsAskForTheSelectionOrComeForward)
{
    AddApp(kTopoluxSignature);
    Call(kTPX1SetHandledMessages, "MHIT");
    Call(kTPX1SetTopoluxSharingMenuActions, "GETINFO|GOTOME|GETINFOFILE|GETRIDSINFO|LINK|UNLINK|BOGUS");
    struct { const char *item, *extra, *options; } cases[] = {
        {"1", "GETINFO", "SELECTED"}, {"3", "GETINFOFILE", "FILE SELECTED"},
        {"5", "LINK", "SELECTED"},    {"6", "UNLINK", "SELECTED"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "TPX1"}, {"ITEM", c.item}}), noErr);
        std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
        ASSERT_EQ(sent.size(), 1u) << c.item;
        EXPECT_EQ(sent[0].Get("MSSG"), "MYOD");
        EXPECT_EQ(sent[0].Get("XTRA"), c.extra);
        EXPECT_EQ(sent[0].Get("OPTN"), c.options);
        EXPECT_EQ(ArchivedCount(), 0) << "handled by the plug-in";
    }

    /* GOTOME: the host comes forward and TOPOLUX hears who did. */
    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "TPX1"}, {"ITEM", "2"}}), noErr);
    EXPECT_EQ(FrontCountOf(kHostSignature), 1);
    std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].Get("MSSG"), "FRWD");
    EXPECT_EQ(sent[0].Get("WHO "), "FMP7");
    EXPECT_EQ(sent[0].Get("NAME"), "");
    EXPECT_EQ(ArchivedCount(), 0);

    /* An action the plug-in does not take, and items outside 1..10: kept for the solution. */
    for (const char *item : {"4", "7", "0", "11"})
        EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "TPX1"}, {"ITEM", item}}), noErr);
    EXPECT_EQ(ArchivedCount(), 4);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);

    /* TOPOLUX gone: the request fails with -234 inside, and the message is dropped. */
    PlatformMemoryBusRemoveApp(kTopoluxSignature);
    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "TPX1"}, {"ITEM", "1"}}), noErr);
    AppleEvent event = MakeEvent({{"MSSG", "MHIT"}, {"SIGN", "TPX1"}, {"ITEM", "1"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), kPartnerNotRunningErr);
    AEDisposeDesc(&event);
    EXPECT_EQ(ArchivedCount(), 4);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 0);
}

TEST_F(IacTest, NimboMenuHitsComeForwardOrAskForChanges)
{
    AddApp(kNimboSignature);
    Call(kTPX1SetHandledMessages, "MHIT");
    Call(kTPX1SetNimboSharingMenuActions, "GOTOME|GETRIDSINFO|GETINFO");

    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "NMB5"}, {"ITEM", "1"}}), noErr);
    EXPECT_EQ(FrontCountOf(kHostSignature), 1);
    EXPECT_EQ(SentIds(TakeSent(kNimboSignature)), (std::vector<std::string>{"FRWD"}));

    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "NMB5"}, {"ITEM", "2"}}), noErr);
    std::vector<SentMessage> sent = TakeSent(kNimboSignature);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].Keywords(), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA"}));
    EXPECT_EQ(sent[0].Get("MSSG"), "CHM?");
    EXPECT_EQ(ArchivedCount(), 0);

    /* GETINFO means nothing to the plug-in for NIMBO: kept. */
    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "NMB5"}, {"ITEM", "3"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 1);

    /* NIMBO not running: -234, handled all the same, NIMBO is not launched. */
    PlatformMemoryBusRemoveApp(kNimboSignature);
    AppleEvent event = MakeEvent({{"MSSG", "MHIT"}, {"SIGN", "NMB5"}, {"ITEM", "2"}});
    EXPECT_EQ(ArchiveIncomingMessage(&event), kPartnerNotRunningErr);
    AEDisposeDesc(&event);
    EXPECT_EQ(ArchivedCount(), 1);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 0);

    /* A menu hit from anyone else is only stored. */
    EXPECT_EQ(Receive({{"MSSG", "MHIT"}, {"SIGN", "ABCD"}, {"ITEM", "1"}}), noErr);
    EXPECT_EQ(ArchivedCount(), 2);
}

TEST_F(IacTest, SelectionReportsAnswerWithTheConfiguredAlerts)
{
    AddApp(kTopoluxSignature);
    Call(kTPX1SetHandledMessages, "YROD");
    Call(kTPX1SetTopoluxNoneSelectedGetInfoAlert, "Select something to get info.");
    Call(kTPX1SetTopoluxNoneSelectedUnlinkAlert, "Select something to unlink.");
    Call(kTPX1SetTopoluxNoneSelectedLinkAlert, "Select something to link.");
    Call(kTPX1SetTopoluxMoreThanOneSelectedLinkAlert, "Select only one to link.");
    struct { const char *count, *extra, *alert; } cases[] = {
        {"0", "GETINFO", "Select something to get info."},
        {"0", "GETINFOFILE", "Select something to get info."},
        {"-1", "UNLINK", "Select something to unlink."},
        {"0", "LINK", "Select something to link."},
        {"2", "LINK", "Select only one to link."},
        {"7", "LINK", "Select only one to link."},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Receive({{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", c.count}, {"XTRA", c.extra}}), noErr);
        std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
        ASSERT_EQ(sent.size(), 1u) << c.count << " " << c.extra;
        EXPECT_EQ(sent[0].Get("MSSG"), "ALRT");
        EXPECT_EQ(sent[0].Get("TEXT"), c.alert);
        EXPECT_EQ(sent[0].Get("ICON"), "0");
    }
    EXPECT_EQ(ArchivedCount(), 0);

    /* No alert: one object selected, the words that don't match, a switched-off alert,
     * another sender; all these are kept for the solution. */
    Call(kTPX1SetTopoluxNoneSelectedLinkAlert, "");
    const Params quiet[] = {
        {{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", "1"}, {"XTRA", "LINK"}},
        {{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", "1"}, {"XTRA", "GETINFO"}},
        {{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", "2"}, {"XTRA", "UNLINK"}},
        {{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", "0"}, {"XTRA", "LINKS"}},
        {{"MSSG", "YROD"}, {"SIGN", "TPX1"}, {"NUM ", "0"}, {"XTRA", "LINK"}},
        {{"MSSG", "YROD"}, {"SIGN", "NMB5"}, {"NUM ", "0"}, {"XTRA", "GETINFO"}},
    };
    for (const Params &p : quiet) EXPECT_EQ(Receive(p), noErr);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
    EXPECT_EQ(ArchivedCount(), 6);
}

TEST_F(IacTest, ChangeRequestsBringTheHostForwardAndTellNimbo)
{
    AddApp(kNimboSignature);
    Call(kTPX1SetHandledMessages, "RIDS");
    EXPECT_EQ(Receive({{"MSSG", "CHM!"}, {"SIGN", "NMB5"}, {"NAME", "run 4"}}), noErr);
    EXPECT_EQ(Receive({{"MSSG", "RIDS"}, {"SIGN", "TPX1"}, {"IDS ", "a b"}}), noErr);
    EXPECT_EQ(FrontCountOf(kHostSignature), 2);
    std::vector<SentMessage> sent = TakeSent();
    ASSERT_EQ(sent.size(), 2u);
    for (const SentMessage &m : sent) {
        EXPECT_EQ(m.to, kNimboSignature);
        EXPECT_EQ(m.Get("MSSG"), "FRWD");
        EXPECT_EQ(m.Get("WHO "), "FMP7");
    }
    /* Not handled by the plug-in: RIDS is a handled id, CHM! is not. */
    ASSERT_EQ(ArchivedCount(), 1);
    EXPECT_EQ(ArchivedValue(0, "IDS "), "a b");

    /* NIMBO not running: the host still comes forward, no FRWD. */
    PlatformMemoryBusRemoveApp(kNimboSignature);
    EXPECT_EQ(Receive({{"MSSG", "CHM!"}, {"SIGN", "NMB5"}}), noErr);
    EXPECT_EQ(FrontCountOf(kHostSignature), 3);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
}
