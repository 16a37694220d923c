/*
 * test_bus_processes.cpp: the processes fmhost starts on the bus. Partners the plug-in
 * launches are started once per call and never while an earlier copy is still
 * starting: one that joins slowly, one that never joins, one that exits at once, each
 * with its alert and its line on standard error. A launched TOPOLUX is greeted, and the
 * plug-in answers its menu hits and selection reports itself; a launch for TPX1GoToApp
 * brings the partner forward (Activate), one for a message does not; both hear "BYE "
 * at Shutdown. And the private dbus-daemon fmhost starts ends with fmhost, however
 * fmhost ends.
 */
#include <csignal>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "FmhostSession.h"

namespace {

class BusProcesses : public FmhostTest {
protected:
    std::string SendTo(const char *signature)
    {
        return Run(std::string("TPX1SetParameter(\"MSSG|RUN!\")\nTPX1SendMessageTo(\"") + signature + "\")");
    }

    size_t Alerts() { return Occurrences(Dialogs(), "Unable to locate TOPOLUX."); }
};

} // namespace

TEST_F(BusProcesses, SlowPartnerIsStartedOnceAndFoundWhenItJoins)
{
    setenv("TPX1_LAUNCH_TIMEOUT_MS", "500", 1);
    std::string log = temp + "/topolux.log";
    Install("Applications/TOPOLUX Folder", "TOPOLUX", "sleep 1.5\n" + Partner("TPX1", "TOPOLUX", log));
    StartHost();
    /* The greeting and the message both need TOPOLUX: one start, one alert, the send's
     * error report; the copy is left to finish starting. */
    SendTo("TPX1");
    EXPECT_EQ(Started().size(), 1u);
    EXPECT_EQ(Alerts(), 1u) << Dialogs();
    EXPECT_EQ(Occurrences(Dialogs(), "Error: -600"), 1u) << Dialogs();
    EXPECT_NE(HostErrors().find("did not join the bus within 500 ms; it is left to finish starting"),
              std::string::npos) << HostErrors();
    ASSERT_TRUE(HostSees("TPX1"));
    SendTo("TPX1");
    EXPECT_TRUE(WaitFor([&] { return HarnessLoggedEvent(HarnessReadFile(log), "RUN!") != ""; }));
    EXPECT_EQ(Started().size(), 1u);
    EXPECT_EQ(Alerts(), 1u) << Dialogs();
    EXPECT_EQ(StopHost(), 0);
}

TEST_F(BusProcesses, PartnerThatNeverJoinsIsWaitedForOnceAndNeverDoubled)
{
    setenv("TPX1_LAUNCH_TIMEOUT_MS", "1500", 1);
    std::string path = Install("Applications/TOPOLUX Folder", "TOPOLUX", "exec sleep 60");
    StartHost();
    SendTo("TPX1");
    ASSERT_EQ(Started().size(), 1u);
    pid_t copy = Started()[0];
    std::string waiting = "fmhost: waiting for TOPOLUX (" + Classic(path) + ") to join the bus\n";
    EXPECT_EQ(Occurrences(HostErrors(), waiting), 1u) << HostErrors();
    EXPECT_EQ(Alerts(), 1u) << Dialogs();
    /* Not killed; the next call waits for the same copy instead of starting another. */
    EXPECT_EQ(kill(copy, 0), 0);
    SendTo("TPX1");
    EXPECT_EQ(Started(), std::vector<pid_t>{copy});
    EXPECT_EQ(Occurrences(HostErrors(), waiting), 2u) << HostErrors();
    EXPECT_EQ(Alerts(), 2u) << Dialogs();
    EXPECT_EQ(StopHost(), 0);
    EXPECT_EQ(kill(copy, 0), 0);
}

TEST_F(BusProcesses, PartnerThatExitsAtOnceIsReportedAndNoOtherPlaceTried)
{
    std::string quitter = Install("Elsewhere", "TOPOLUX", "exit 3");
    Install("Applications/TOPOLUX Folder", "TOPOLUX", Partner("TPX1", "TOPOLUX", temp + "/topolux.log"));
    StartHost();
    Run("TPX1SetKnownFriend(\"TPX1|" + Classic(quitter) + "\")");
    SendTo("TPX1");
    EXPECT_EQ(Started().size(), 1u);
    EXPECT_EQ(Alerts(), 1u) << Dialogs();
    EXPECT_NE(HostErrors().find("fmhost: TOPOLUX (" + Classic(quitter) +
                                ") ended with exit status 3 before it joined the bus"),
              std::string::npos) << HostErrors();
    EXPECT_EQ(Calc("TPX1IsAppRunning(\"TPX1\")"), "\"FALSE\"\n");
    EXPECT_EQ(StopHost(), 0);
}

TEST_F(BusProcesses, LaunchedPartnersAreAnsweredBroughtForwardAndToldBye)
{
    std::string topolux = temp + "/topolux.log", nimbo = temp + "/nimbo.log";
    Install("Applications/TOPOLUX Folder", "TOPOLUX",
            Partner("TPX1", "TOPOLUX", topolux,
                    "on HOLA send MSSG=MHIT ITEM=1\non MYOD send MSSG=YROD XTRA=$XTRA NUM =0\n"
                    "on ALRT send MSSG=MHIT ITEM=2\n"));
    Install("Applications/NIMBO Folder", "NIMBO", Partner("NMB5", "NIMBO", nimbo));
    StartHost();
    Run("TPX1SetTopoluxFirstView(\"-90,40,-80,30\")\n"
        "TPX1SetTopoluxSharingMenu(\"Sites|Get info;Go to the sites\")\n"
        "TPX1SetTopoluxSharingMenuActions(\"GETINFO|GOTOME\")\n"
        "TPX1SetTopoluxNoneSelectedGetInfoAlert(\"Select a site first.\")\n"
        "TPX1SetHandledMessages(\"MHIT|YROD\")\n"
        "TPX1InitIAC()");
    /* TOPOLUX launched for a message (without switching): greeted with the first view
     * before it; tabs, returns and Mac Roman travel as UTF-8, the parameters in order. */
    Run("TPX1SetParameter(\"MSSG|RUN!\")\n"
        "TPX1SetParameter(\"LST2|a\" & TPX1TabChar(\"\") & \"b\" & ¶ & \"c\xe2\x80\xa2\")\n"
        "TPX1SendMessageTo(\"TPX1\")");
    /* Then the plug-in answers by itself: HOLA -> MHIT 1 -> MYOD -> YROD with none
     * selected -> ALRT -> MHIT 2 -> FRWD, and the host comes forward. */
    EXPECT_TRUE(WaitFor([&] {
        Run("Idle");
        return HarnessLoggedEvent(HarnessReadFile(topolux), "FRWD") != "";
    })) << HarnessReadFile(topolux);
    std::string text = HarnessReadFile(topolux);
    EXPECT_EQ(HarnessLoggedEvent(text, "RUN!"),
              "event VESK/AEVT from FMP7\tMSSG=RUN!\tSIGN=FMP7\tPSIG=FMP7\tXTRA=\tLST2=a\\tb\\rc\xe2\x80\xa2");
    EXPECT_NE(HarnessLoggedEvent(text, "VIEW").find("\tLLNG=-90\t"), std::string::npos) << text;
    EXPECT_NE(HarnessLoggedEvent(text, "MYOD").find("\tXTRA=GETINFO\t"), std::string::npos) << text;
    EXPECT_NE(HarnessLoggedEvent(text, "MYOD").find("\tOPTN=SELECTED"), std::string::npos) << text;
    EXPECT_NE(HarnessLoggedEvent(text, "ALRT").find("\tTEXT=Select a site first."), std::string::npos) << text;
    EXPECT_NE(HarnessLoggedEvent(text, "FRWD").find("\tWHO =FMP7"), std::string::npos) << text;
    EXPECT_EQ(Dialogs(), "");
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");
    /* NIMBO launched for TPX1GoToApp: brought forward (and, not being TOPOLUX, not greeted). */
    EXPECT_EQ(Calc("TPX1GoToApp(\"NMB5\")"), "\"" + Classic(temp + "/Applications/NIMBO Folder/NIMBO") + "\"\n");
    EXPECT_TRUE(WaitFor([&] { return HarnessReadFile(nimbo).find("\nactivate\n") != std::string::npos; }));
    /* At Shutdown both hear "BYE ". */
    EXPECT_EQ(StopHost(), 0);
    EXPECT_NE(transcript.find("fmhost: brought to front"), std::string::npos) << transcript;
    EXPECT_TRUE(WaitFor([&] {
        std::vector<std::string> t = HarnessLoggedIds(HarnessReadFile(topolux));
        std::vector<std::string> n = HarnessLoggedIds(HarnessReadFile(nimbo));
        return !t.empty() && t.back() == "BYE " && !n.empty() && n.back() == "BYE ";
    }));
    EXPECT_EQ(HarnessLoggedIds(HarnessReadFile(topolux)),
              (std::vector<std::string>{"HOLA", "VIEW", "MENU", "RUN!", "MYOD", "ALRT", "FRWD", "BYE "}));
    EXPECT_EQ(HarnessLoggedIds(HarnessReadFile(nimbo)), std::vector<std::string>{"BYE "});
    EXPECT_EQ(Started().size(), 2u);
    EXPECT_EQ(Occurrences(HarnessReadFile(nimbo), "\nactivate\n"), 1u) << HarnessReadFile(nimbo);
    EXPECT_EQ(HarnessReadFile(topolux).find("activate"), std::string::npos) << HarnessReadFile(topolux);
}

TEST_F(BusProcesses, PrivateBusEndsWithFmhostHoweverItEnds)
{
    /* Orphans come to this process, so the daemon's end can be waited for. */
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    std::string saved = getenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    for (int route : {0, SIGTERM, SIGINT, SIGHUP, SIGKILL}) {
        StartHost();
        EXPECT_EQ(Calc("TPX1IsAppRunning(\"FMP7\")"), "\"TRUE\"\n") << route;
        pid_t busDaemon = -1;
        std::istringstream children(
            HarnessReadFile("/proc/" + std::to_string(host) + "/task/" + std::to_string(host) + "/children"));
        for (pid_t child; children >> child;)
            if (HarnessReadFile("/proc/" + std::to_string(child) + "/comm") == "dbus-daemon\n") busDaemon = child;
        ASSERT_GT(busDaemon, 0) << route;
        if (route == 0) {
            EXPECT_EQ(StopHost(), 0);
        } else {
            EXPECT_EQ(HarnessReap(host, route, kWaitMs), 128 + route);
            close(hostIn);
            close(hostOut);
            host = -1;
        }
        /* Gone: reaped by fmhost at its exit, or an orphan that ended by itself. */
        EXPECT_TRUE(WaitFor([&] { return waitpid(busDaemon, nullptr, WNOHANG) == busDaemon || kill(busDaemon, 0); }))
            << route;
        kill(busDaemon, SIGKILL);
    }
    setenv("DBUS_SESSION_BUS_ADDRESS", saved.c_str(), 1);
}
