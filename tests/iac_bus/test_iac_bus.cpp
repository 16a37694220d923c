/*
 * test_iac_bus.cpp: messaging between processes on a private D-Bus daemon: the real
 * fmhost with the plug-in, driven line by line through its prompt, talking to a
 * "vesk partner" stand-in that answers with the messages the plug-in handles itself.
 */
#include <string>
#include <vector>

#include "FmhostSession.h"

using IacBusTest = FmhostTest;

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
