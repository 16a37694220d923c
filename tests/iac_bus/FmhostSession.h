/*
 * FmhostSession.h: the real fmhost with the plug-in on the private bus, driven line by
 * line through its prompt; its dialog log and standard error are kept in the temporary
 * folder.
 */
#ifndef TPX1_FMHOSTSESSION_H
#define TPX1_FMHOSTSESSION_H

#include <string>

#include "PrivateBusTest.h"

class FmhostTest : public PrivateBusTest {
protected:
    void SetUp() override;
    void TearDown() override;

    void StartHost();
    /* Sends lines to fmhost's prompt and returns what it printed for them. */
    std::string Run(const std::string &lines);
    /* The last line fmhost printed for one calculation. */
    std::string Calc(const std::string &calculation);
    /* Ends fmhost (Shutdown) and returns its exit status. */
    int StopHost();
    bool HostSees(const char *signature);
    std::string Dialogs() { return HarnessReadFile(temp + "/dialogs.jsonl"); }
    std::string HostErrors() { return HarnessReadFile(temp + "/fmhost.err"); }

    pid_t host = -1;
    int hostIn = -1, hostOut = -1;
    int marks = 0;
    std::string pending, transcript;
};

#endif
