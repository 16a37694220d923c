/*
 * FmhostSession.h: the fixture of the tests between processes: the real fmhost with the
 * plug-in on a private dbus-daemon, driven line by line through its prompt, in a
 * temporary folder that holds the Applications folder, the dialog log and fmhost's
 * standard error. Partners started by the test, and those the plug-in launched (a
 * stand-in writes its process id into the file "started"), are ended at the end of
 * each test.
 */
#ifndef TPX1_FMHOSTSESSION_H
#define TPX1_FMHOSTSESSION_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ProcessHarness.h"

class FmhostTest : public ::testing::Test {
protected:
    static const int kWaitMs = 30000;

    void SetUp() override;
    void TearDown() override;

    /* Polls until the condition holds or kWaitMs passed; true when it held. */
    static bool WaitFor(const std::function<bool()> &condition) { return HarnessWaitFor(kWaitMs, condition); }
    void StartHost();
    /* Sends lines to fmhost's prompt and returns what it printed for them. */
    std::string Run(const std::string &lines);
    /* The last line fmhost printed for one calculation. */
    std::string Calc(const std::string &calculation);
    /* Ends fmhost (Shutdown) and returns its exit status. */
    int StopHost();
    pid_t StartPartner(const char *signature, const std::string &rules, const std::string &log);
    bool HostSees(const char *signature);
    std::string Dialogs() { return HarnessReadFile(temp + "/dialogs.jsonl"); }
    std::string HostErrors() { return HarnessReadFile(temp + "/fmhost.err"); }
    /* The process ids the stand-ins wrote into the file "started", in order. */
    std::vector<pid_t> Started();
    /* The classic path of a POSIX path (on the root volume "Linux"). */
    static std::string Classic(const std::string &posix);

    std::string temp;
    HarnessDaemon daemon;
    pid_t host = -1;
    int hostIn = -1, hostOut = -1;
    int marks = 0;
    std::string pending, transcript;
    std::vector<pid_t> partners;
};

/* How often text occurs in a longer text. */
size_t Occurrences(const std::string &text, const std::string &what);

#endif
