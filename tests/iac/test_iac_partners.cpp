/*
 * test_iac_partners.cpp: the partner table, greetings with sharing menus, maps and the
 * first view, and the external functions that fill those tables.
 */
#include "IacTestSupport.h"

#include "iac/IacTables.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "files/Paths.h"
#include "store/Globals.h"

TEST_F(IacTest, GreetingsCarryMenusMapsAndTheFirstView)
{
    folder.Write("Maps A/Name.map", "map");
    folder.Write("Maps B/Other.map", "map");
    std::string folderA = folder.Classic("Maps A") + ":";
    std::string folderB = folder.Classic("Maps B") + ":";
    Call(kTPX1SetTopoluxMapInfo, folderB + "|DRAW|");
    Call(kTPX1SetTopoluxMapInfo, folderA + "||");
    Call(kTPX1SetTopoluxSharingMenu, "Sites|Get info;Link");
    Call(kTPX1SetTopoluxFirstView, "-90,40,-80,30");
    SetGlobalFromStr("VERS", 0, "7.1");
    SetGlobalFromStr("App DOC", 1, "Sites.fp7");
    AddApp(kTopoluxSignature);

    EXPECT_EQ(GreetFriendAndSendMenus(kTopoluxSignature, "HOLA", true), noErr);
    std::vector<SentMessage> sent = TakeSent(kTopoluxSignature);
    ASSERT_EQ(SentIds(sent), (std::vector<std::string>{"HOLA", "VIEW", "MENU", "MAP "}));
    EXPECT_EQ(sent[0].Keywords(),
              (std::vector<std::string>{"MSSG", "SIGN", "PSIG", "XTRA", "VERS", "DOC ", "NAME", "PATH"}));
    EXPECT_EQ(sent[0].Get("VERS"), "7.1");
    EXPECT_EQ(sent[0].Get("DOC "), "Sites.fp7");
    EXPECT_EQ(sent[1].Get("LLNG"), "-90");
    EXPECT_EQ(sent[1].Get("HLAT"), "40");
    EXPECT_EQ(sent[1].Get("HLNG"), "-80");
    EXPECT_EQ(sent[1].Get("LLAT"), "30");
    EXPECT_EQ(sent[2].Get("NAME"), "Sites");
    EXPECT_EQ(sent[2].Get("ITMS"), "Get info;Link");
    EXPECT_EQ(sent[2].Get("PATH"), "Linux:opt:FileMaker:FileMaker Pro");
    EXPECT_EQ(sent[3].Get("PATH"), folderA);
    EXPECT_EQ(sent[3].Get("OPTN"), "NODEFAULT DELETEYES MOVEMAPYES MOVELAYERYES DRAGYES ADDYES");

    /* Without the view flag, and with an unnamed menu: the greeting and the maps. */
    gTopoluxSharingMenu = SharingMenu();
    EXPECT_EQ(GreetFriendAndSendMenus(kTopoluxSignature, "OKHI", false), noErr);
    EXPECT_EQ(SentIds(TakeSent()), (std::vector<std::string>{"OKHI", "MAP "}));

    /* Other partners get the greeting only. */
    AddApp(FOUR_CHAR('R', 'E', 'P', 'F'));
    EXPECT_EQ(GreetFriendAndSendMenus(FOUR_CHAR('R', 'E', 'P', 'F'), "HOLA", true), noErr);
    EXPECT_EQ(SentIds(TakeSent()), (std::vector<std::string>{"HOLA"}));
}

TEST_F(IacTest, NimboMenuFollowsItsGreetingAndBeepsWhenItFails)
{
    AddApp(kNimboSignature);
    Call(kTPX1SetNimboSharingMenu, "Plumes|Run");
    EXPECT_EQ(GreetFriendAndSendMenus(kNimboSignature, "HOLA", false), noErr);
    std::vector<SentMessage> sent = TakeSent(kNimboSignature);
    ASSERT_EQ(SentIds(sent), (std::vector<std::string>{"HOLA", "MENU"}));
    EXPECT_EQ(sent[1].Get("NAME"), "Plumes");
    EXPECT_TRUE(sent[1].Has("VERS") && sent[1].Has("PATH") && sent[1].Has("DOC "));

    PlatformMemoryBusRemoveApp(kNimboSignature);
    int32_t beeps = PlatformBeepCount();
    EXPECT_EQ(SendMenuToNimbo(), procNotFound);
    EXPECT_GT(PlatformBeepCount(), beeps);
}

TEST_F(IacTest, SharingMenusAndActions)
{
    /* Name and items both needed; the name keeps 63 characters. */
    Call(kTPX1SetTopoluxSharingMenu, "OnlyName|");
    EXPECT_STREQ(gTopoluxSharingMenu.name, "");
    Call(kTPX1SetTopoluxSharingMenu, "|items");
    EXPECT_STREQ(gTopoluxSharingMenu.name, "");
    Call(kTPX1SetTopoluxSharingMenu, std::string(70, 'n') + "|a|b");
    EXPECT_EQ(std::string(gTopoluxSharingMenu.name), std::string(63, 'n'));
    EXPECT_STREQ(gTopoluxSharingMenu.items, "a|b");

    Call(kTPX1SetTopoluxSharingMenuActions, "LINK|GOTOME|UNLINK");
    const short three[kMenuItemCount] = {5, 2, 6, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < kMenuItemCount; i++) EXPECT_EQ(gTopoluxSharingMenu.actions[i], three[i]);

    /* Empty words are skipped, unknown ones give 0, an eleventh is ignored. */
    Call(kTPX1SetNimboSharingMenuActions, "GETINFO||GETRIDSINFO|getinfo|X|X|X|X|X|X|GOTOME|LINK");
    const short nimbo[kMenuItemCount] = {1, 4, 0, 0, 0, 0, 0, 0, 0, 2};
    for (int i = 0; i < kMenuItemCount; i++) EXPECT_EQ(gNimboSharingMenu.actions[i], nimbo[i]);
    for (int i = 0; i < kMenuItemCount; i++) EXPECT_EQ(gTopoluxSharingMenu.actions[i], three[i]);

    EXPECT_EQ(ActionWordToCode("GETINFOFILE"), 3);
    EXPECT_EQ(ActionWordToCode("GETINFO "), 0);
    EXPECT_EQ(ActionWordToCode(nullptr), 0);

    /* Alert texts: set, cut at 255, and switched off by an empty text. */
    Call(kTPX1SetNimboNoneSelectedGetInfoAlert, std::string(300, 'a'));
    EXPECT_EQ(std::string(gNimboNoneSelectedGetInfoAlert), std::string(255, 'a'));
    SetSelectionAlertText(57, "");
    EXPECT_STREQ(gNimboNoneSelectedGetInfoAlert, "");
}

TEST_F(IacTest, MapTableKeysFoldersAndRefusesASixth)
{
    std::string base = folder.Classic() + ":";
    Call(kTPX1SetTopoluxMapInfo, base + "M1:|ONE|");
    Call(kTPX1SetTopoluxMapInfo, base + "M1:|TWO");
    EXPECT_EQ(std::string(gTopoluxMaps[0].folder), base + "M1:");
    EXPECT_STREQ(gTopoluxMaps[0].options, "TWO");
    EXPECT_STREQ(gTopoluxMaps[1].folder, "");

    /* An empty folder makes a keyless entry, which later keyless calls reuse. */
    Call(kTPX1SetTopoluxMapInfo, "|KEYLESS|");
    EXPECT_STREQ(gTopoluxMaps[1].folder, "");
    EXPECT_STREQ(gTopoluxMaps[1].options, "KEYLESS");
    Call(kTPX1SetTopoluxMapInfo, "");
    EXPECT_STREQ(gTopoluxMaps[1].options, "NODEFAULT DELETEYES MOVEMAPYES MOVELAYERYES DRAGYES ADDYES");

    for (const char *name : {"M2:", "M3:", "M4:", "M5:"}) Call(kTPX1SetTopoluxMapInfo, base + name + "|X|");
    EXPECT_EQ(std::string(gTopoluxMaps[1].folder), base + "M2:");
    EXPECT_EQ(DialogCount(), 0);
    Call(kTPX1SetTopoluxMapInfo, base + "M6:|X|");
    ASSERT_EQ(DialogCount(), 1);
    EXPECT_NE(DialogText(0).find("Error: -3"), std::string::npos);
    for (const MapEntry &entry : gTopoluxMaps) EXPECT_NE(std::string(entry.folder), base + "M6:");
}

TEST_F(IacTest, MapInfoReferenceFileIsTheWholeRestAfterTheSecondBar)
{
    folder.Write("BaseDirectoryList.txt", folder.Classic("One") + "\r" + folder.Classic("Two") + "\r");
    folder.Write("One/Ref", "what a cut at the third bar would find");
    folder.Write("Two/Ref|1.txt");
    SetGlobalFromStr("App Folder with Delim", 1, (folder.Classic() + ":").c_str());
    Call(kTPX1SetTopoluxMapInfo, ":Maps:|DRAW|:Ref|1.txt");
    EXPECT_EQ(std::string(gTopoluxMaps[0].folder), folder.Classic("Two") + ":Maps:");
    EXPECT_STREQ(gTopoluxMaps[0].options, "DRAW");
    EXPECT_EQ(DialogCount(), 0);
}

TEST_F(IacTest, FirstViewTakesFourTokensInLeftTopRightBottomOrder)
{
    Call(kTPX1SetTopoluxFirstView, "-90,40,-80,30");
    EXPECT_STREQ(gTopoluxFirstView.llng, "-90");
    EXPECT_STREQ(gTopoluxFirstView.hlat, "40");
    EXPECT_STREQ(gTopoluxFirstView.hlng, "-80");
    EXPECT_STREQ(gTopoluxFirstView.llat, "30");
    Call(kTPX1SetTopoluxFirstView, "1|2|3");
    EXPECT_STREQ(gTopoluxFirstView.llng, "-90");
    Call(kTPX1SetTopoluxFirstView, "1| 2,\t3 " + std::string(40, '4') + " 5");
    EXPECT_STREQ(gTopoluxFirstView.llng, "1");
    EXPECT_STREQ(gTopoluxFirstView.hlng, "3");
    EXPECT_EQ(std::string(gTopoluxFirstView.llat), std::string(31, '4'));
}

TEST_F(IacTest, KnownFriendsAreGreetedInTableOrderWhenRunning)
{
    Call(kTPX1SetKnownFriend, "NMB5|Linux:Applications:NIMBO Folder:NIMBO");
    Call(kTPX1SetKnownFriend, "|Linux:nobody");
    Call(kTPX1SetKnownFriend, "REPF|Linux:Repform");
    Call(kTPX1SetKnownFriend, "TPX1");
    EXPECT_EQ(gFriends[0].signature, kNimboSignature);
    EXPECT_EQ(gFriends[1].signature, FOUR_CHAR('R', 'E', 'P', 'F'));
    EXPECT_EQ(gFriends[2].signature, kTopoluxSignature);
    EXPECT_STREQ(gFriends[2].path, "");
    char path[256];
    GetFriendsPath(kNimboSignature, path);
    EXPECT_STREQ(path, "Linux:Applications:NIMBO Folder:NIMBO");
    GetFriendsPath(FOUR_CHAR('N', 'O', 'N', 'E'), path);
    EXPECT_STREQ(path, "");

    AddApp(kTopoluxSignature);
    AddApp(kNimboSignature);
    SayHolaToAllFriends();
    std::vector<SentMessage> sent = TakeSent();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].to, kNimboSignature);
    EXPECT_EQ(sent[1].to, kTopoluxSignature);
    EXPECT_EQ(SentIds(sent), (std::vector<std::string>{"HOLA", "HOLA"}));
    EXPECT_EQ(PlatformMemoryBusLaunchCount(), 0);

    /* TPX1InitIAC installs the handler and greets the same way. */
    Call(kTPX1InitIAC, "");
    EXPECT_EQ(TakeSent().size(), 2u);
    EXPECT_EQ(DialogCount(), 0);
}
