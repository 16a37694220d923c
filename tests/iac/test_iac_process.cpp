/*
 * test_iac_process.cpp: finding, launching and activating partners: the recorded path,
 * the Applications folder, documents to open, the "Unable to locate" alerts, and the
 * external functions TPX1IsAppRunning, TPX1GoToApp and TPX1ShowOnMap.
 */
#include "IacTestSupport.h"

#include <cstdlib>
#include <cstring>

#include "files/Paths.h"
#include "iac/IacTables.h"
#include "platform/EventService.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"

TEST_F(IacTest, LaunchFromTheRecordedPathInTheBackground)
{
    std::string posix = folder.Write("Partner/TOPOLUX", "#!/bin/sh\n");
    std::string classic = folder.Classic("Partner/TOPOLUX");
    AddFriend(kTopoluxSignature, classic.c_str());
    PlatformMemoryBusSetLaunchSignature(kTopoluxSignature);

    unsigned char launched = 9;
    EXPECT_EQ(MakeSureAppIsRunning(kTopoluxSignature, &launched), noErr);
    EXPECT_EQ(launched, 1);
    ASSERT_EQ(PlatformMemoryBusLaunchCount(), 1);
    EXPECT_STREQ(PlatformMemoryBusLaunchPath(0), posix.c_str());
    EXPECT_STREQ(PlatformMemoryBusLaunchDocument(0), "");
    EXPECT_TRUE(AppIsRunning(kTopoluxSignature));
    EXPECT_EQ(MakeSureAppIsRunning(kTopoluxSignature, &launched), noErr);
    EXPECT_EQ(launched, 0);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 1);
    EXPECT_EQ(PlatformMemoryBusFrontCount(), 0);

    /* BringApplicationForward does change the front process. */
    EXPECT_EQ(BringApplicationForward(kTopoluxSignature, 0), noErr);
    ASSERT_EQ(PlatformMemoryBusFrontCount(), 1);
    EXPECT_EQ(PlatformMemoryBusFront(0), kTopoluxSignature);
    EXPECT_EQ(DialogCount(), 0);
}

TEST_F(IacTest, SendingToAStoppedPartnerLaunchesAndGreetsItWithTheView)
{
    folder.Write("Partner/TOPOLUX");
    AddFriend(kTopoluxSignature, folder.Classic("Partner/TOPOLUX").c_str());
    PlatformMemoryBusSetLaunchSignature(kTopoluxSignature);
    Call(kTPX1SetTopoluxFirstView, "1 2 3 4");
    SetOutgoingMessageParameterFromStr("MSSG", "SHOW", 1);
    EXPECT_EQ(Call(kTPX1SendMessageTo, "TPX1"), "");
    EXPECT_EQ(SentIds(TakeSent(kTopoluxSignature)), (std::vector<std::string>{"HOLA", "VIEW", "SHOW"}));
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 1);
}

TEST_F(IacTest, LaunchFallsBackToTheApplicationsFolderAndRecordsIt)
{
    std::string posix = folder.Write("Partners/TOPOLUX Folder/TOPOLUX");
    std::string expected = folder.Classic("Partners/TOPOLUX Folder/TOPOLUX");

    char path[256];
    EXPECT_EQ(GetDefaultPath(kTopoluxSignature, path), noErr);
    EXPECT_EQ(std::string(path), expected);
    EXPECT_EQ(GetDefaultPath(kNimboSignature, path), kMissingErr);
    strcpy(path, "old");
    EXPECT_EQ(GetDefaultPath(FOUR_CHAR('R', 'E', 'P', 'F'), path), kMissingErr);
    EXPECT_STREQ(path, "");

    /* A recorded path that is gone gives way to the default place, which is recorded. */
    AddFriend(kTopoluxSignature, "Linux:no:such:TOPOLUX");
    PlatformMemoryBusSetLaunchSignature(kTopoluxSignature);
    unsigned char launched = 0;
    EXPECT_EQ(MakeSureAppIsRunning(kTopoluxSignature, &launched), noErr);
    EXPECT_EQ(launched, 1);
    ASSERT_EQ(PlatformMemoryBusLaunchCount(), 1);
    EXPECT_STREQ(PlatformMemoryBusLaunchPath(0), posix.c_str());
    GetFriendsPath(kTopoluxSignature, path);
    EXPECT_EQ(std::string(path), expected);
    EXPECT_EQ(DialogCount(), 0);
}

TEST_F(IacTest, UnreachablePartnersRaiseTheUnableToLocateAlerts)
{
    struct { OSType signature; const char *text; } cases[] = {
        {kNimboSignature, "Unable to locate NIMBO.  \r\rPlease locate NIMBO and launch it using the Finder.\r"},
        {kTopoluxSignature, "Unable to locate TOPOLUX.  \r\rPlease locate TOPOLUX and launch it using the Finder.\r"},
        {FOUR_CHAR('R', 'E', 'P', 'F'),
         "Unable to locate the application.  \r\rPlease locate the application and launch it using the Finder.\r"},
    };
    for (const auto &c : cases) {
        PlatformDialogClearRecord();
        unsigned char launched = 7;
        EXPECT_EQ(MakeSureAppIsRunning(c.signature, &launched), procNotFound);
        EXPECT_EQ(launched, 0);
        ASSERT_EQ(DialogCount(), 1);
        EXPECT_EQ(DialogText(0), c.text);
    }

    /* Found on disk but never comes up: the launch error, after the alert. */
    folder.Write("Partners/NIMBO Folder/NIMBO");
    PlatformDialogClearRecord();
    EXPECT_EQ(MakeSureAppIsRunning(kNimboSignature, nullptr), procNotFound);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 1);
    EXPECT_EQ(DialogCount(), 1);

    /* Looking only: no launch, no alert. */
    PlatformDialogClearRecord();
    EXPECT_EQ(SignatureToApp(kTopoluxSignature, nullptr, nullptr, nullptr, nullptr, 0, 0), procNotFound);
    EXPECT_EQ(DialogCount(), 0);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 1);
}

TEST_F(IacTest, DocumentsTravelAsFileURLs)
{
    std::string document = folder.Write("My Sites.map", "m");
    folder.Write("Partner/NIMBO");
    FSSpec theSpec;
    ASSERT_EQ(GetFSSpecFromFullPath(folder.Classic("My Sites.map").c_str(), &theSpec), noErr);

    /* Launching with a document hands it over with the launch. */
    AddFriend(kNimboSignature, folder.Classic("Partner/NIMBO").c_str());
    PlatformMemoryBusSetLaunchSignature(kNimboSignature);
    unsigned char launched = 0;
    ProcessSerialNumber psn = {0, 0};
    EXPECT_EQ(SignatureToApp(kNimboSignature, &theSpec, &psn, nullptr, &launched, 2, launchContinue), noErr);
    EXPECT_EQ(launched, 1);
    EXPECT_STREQ(PlatformMemoryBusLaunchDocument(0), document.c_str());
    EXPECT_FALSE(psn.highLongOfPSN == 0 && psn.lowLongOfPSN == 0);
    /* Launched without launchDontSwitch: brought forward once it runs. */
    EXPECT_EQ(PlatformMemoryBusFrontCount(), 1);

    /* A running partner is brought forward and sent the open-document event. */
    EXPECT_EQ(SignatureToApp(kNimboSignature, &theSpec, &psn, nullptr, &launched, 2, launchContinue), noErr);
    EXPECT_EQ(launched, 0);
    EXPECT_EQ(PlatformMemoryBusFrontCount(), 2);
    AppleEvent event;
    ASSERT_EQ(PlatformMemoryBusTakeSent(kNimboSignature, &event), noErr);
    OSType eventClass = 0, eventID = 0;
    DescType type;
    int32_t size;
    AEGetAttributePtr(&event, keyEventClassAttr, typeWildCard, &type, &eventClass, 4, &size);
    AEGetAttributePtr(&event, keyEventIDAttr, typeWildCard, &type, &eventID, 4, &size);
    EXPECT_EQ(eventClass, kCoreEventClass);
    EXPECT_EQ(eventID, kAEOpenDocuments);
    char url[1024] = {0};
    EXPECT_EQ(AEGetParamPtr(&event, keyDirectObject, typeFileURL, &type, url, sizeof url - 1, &size), noErr);
    EXPECT_EQ(type, typeFileURL);
    std::string expected = "file://" + folder.Posix() + "/My%20Sites.map";
    EXPECT_EQ(std::string(url, (size_t)size), expected);
    AEDisposeDesc(&event);
}

TEST_F(IacTest, GoToAppAnswersThePathAndGreetsANewlyStartedTopolux)
{
    /* Not to be found: no result, the alert. */
    EXPECT_EQ(Call(kTPX1GoToApp, "NMB5|whatever"), "");
    EXPECT_EQ(DialogCount(), 1);
    EXPECT_EQ(Call(kTPX1GoToApp, "|x"), "");
    EXPECT_EQ(DialogCount(), 1);

    /* Running but never recorded. */
    AddApp(kNimboSignature);
    EXPECT_EQ(Call(kTPX1GoToApp, "NMB5"), "unknown path");
    EXPECT_EQ(PlatformMemoryBusFront(PlatformMemoryBusFrontCount() - 1), kNimboSignature);
    AddFriend(kNimboSignature, "Linux:opt:NIMBO");
    EXPECT_EQ(Call(kTPX1GoToApp, "NMB5"), "Linux:opt:NIMBO");
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);

    /* TOPOLUX started by the call is greeted (without the view). */
    std::string classic = folder.Classic("TOPOLUX");
    folder.Write("TOPOLUX");
    AddFriend(kTopoluxSignature, classic.c_str());
    PlatformMemoryBusSetLaunchSignature(kTopoluxSignature);
    Call(kTPX1SetTopoluxFirstView, "1 2 3 4");
    EXPECT_EQ(Call(kTPX1GoToApp, "TPX1"), classic);
    EXPECT_EQ(SentIds(TakeSent(kTopoluxSignature)), (std::vector<std::string>{"HOLA"}));
    /* Already running: no greeting. */
    EXPECT_EQ(Call(kTPX1GoToApp, "TPX1"), classic);
    EXPECT_EQ(PlatformMemoryBusSentCount(0), 0);
}

TEST_F(IacTest, IsAppRunningLooksAtFourCharacters)
{
    AddApp(kTopoluxSignature);
    EXPECT_EQ(Call(kTPX1IsAppRunning, "TPX1"), "TRUE");
    EXPECT_EQ(Call(kTPX1IsAppRunning, "TPX1 is the mapper"), "TRUE");
    EXPECT_EQ(Call(kTPX1IsAppRunning, "TPX"), "FALSE");
    EXPECT_EQ(Call(kTPX1IsAppRunning, "NMB5"), "FALSE");
    EXPECT_EQ(Call(kTPX1IsAppRunning, "FMP7"), "TRUE");   /* the host itself */
    EXPECT_EQ(DialogCount(), 0);
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 0);
}

TEST_F(IacTest, ShowOnMapSendsTheListWithItsOptions)
{
    AddApp(kTopoluxSignature);
    const std::string list = "0000000000000001\tWells\tCounty\r";
    EXPECT_EQ(Call(kTPX1ShowOnMap, list), "");
    std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].Keywords(), (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "OPTN", "LST2"}));
    EXPECT_EQ(sent[0].Get("MSSG"), "SHOW");
    EXPECT_EQ(sent[0].Get("OPTN"), "DRAW YESZOOM YESSELECT");
    EXPECT_EQ(sent[0].Get("LST2"), list);

    SetGlobalFromStr("OPTN", 0, "DRAW NOZOOM");
    EXPECT_EQ(Call(kTPX1ShowOnMap, list), "");
    EXPECT_EQ(TakeSent()[0].Get("OPTN"), "DRAW NOZOOM");
    SetOutgoingMessageParameterFromStr("OPTN", "MINE", 1);
    EXPECT_EQ(Call(kTPX1ShowOnMap, list), "");
    EXPECT_EQ(TakeSent()[0].Get("OPTN"), "MINE");
    EXPECT_EQ(DialogCount(), 0);

    /* TOPOLUX unreachable: the alert, then the error report. */
    PlatformMemoryBusRemoveApp(kTopoluxSignature);
    EXPECT_EQ(Call(kTPX1ShowOnMap, list), "");
    ASSERT_EQ(DialogCount(), 2);
    EXPECT_EQ(DialogText(0).rfind("Unable to locate TOPOLUX.", 0), 0u);
    EXPECT_NE(DialogText(1).find("Error: -600"), std::string::npos);
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);
}
