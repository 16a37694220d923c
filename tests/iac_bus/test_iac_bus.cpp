/*
 * test_iac_bus.cpp: messaging between processes on a private D-Bus daemon: the real
 * fmhost with the plug-in, driven line by line through its prompt, talking to
 * "vesk partner" stand-ins (started by the test or launched by the plug-in).
 */
#include <string>
#include <vector>

#include "FmhostSession.h"

using IacBusTest = FmhostTest;

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
