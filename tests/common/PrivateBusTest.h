/*
 * PrivateBusTest.h: the fixture of the tests between processes: a temporary folder that
 * holds the Applications folder (HOME and the Applications folder point into it), a
 * private dbus-daemon listening in it, vesk partners the test starts, and stand-ins
 * installed for the plug-in to launch, which write their process ids into the file
 * "started". Partners and stand-ins end, the daemon stops and the folder goes at the
 * end of each test.
 */
#ifndef TPX1_PRIVATEBUSTEST_H
#define TPX1_PRIVATEBUSTEST_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ProcessHarness.h"

class PrivateBusTest : public ::testing::Test {
protected:
    static const int kWaitMs = 30000;

    void SetUp() override;
    void TearDown() override;

    /* Polls until the condition holds or kWaitMs passed; true when it held. */
    static bool WaitFor(const std::function<bool()> &condition) { return HarnessWaitFor(kWaitMs, condition); }
    /* `vesk partner --as signature` with rules, logging to log. */
    pid_t StartPartner(const char *signature, const std::string &rules, const std::string &log);
    /* An executable stand-in temp/folder/name that writes its process id into "started",
     * then runs body. Returns its path. */
    std::string Install(const std::string &folder, const std::string &name, const std::string &body);
    /* The body that makes a stand-in the vesk partner signature (named name). */
    std::string Partner(const char *signature, const char *name, const std::string &log, const std::string &rules = "");
    /* The process ids the stand-ins wrote into the file "started", in order. */
    std::vector<pid_t> Started();
    /* The classic path of a POSIX path (on the root volume "Linux"). */
    static std::string Classic(const std::string &posix);

    std::string temp;
    HarnessDaemon daemon;
    std::vector<pid_t> partners;
};

/* How often text occurs in a longer text. */
size_t Occurrences(const std::string &text, const std::string &what);

#endif
