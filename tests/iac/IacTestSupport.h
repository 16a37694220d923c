/*
 * IacTestSupport.h: the fixture of the messaging unit tests: host memory, the in-memory
 * bus with this process as "FMP7", the recorded dialogs, fresh lists and reserved
 * globals; helpers that build incoming events, read the events sent to partners, call
 * external functions, and make private folders.
 */
#ifndef TPX1_TESTS_IACTESTSUPPORT_H
#define TPX1_TESTS_IACTESTSUPPORT_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/HostCore.h"
#include "iac/Iac.h"

#define kHostSignature FOUR_CHAR('F', 'M', 'P', '7')

using Params = std::vector<std::pair<std::string, std::string>>;

struct SentMessage {
    OSType to = 0;
    OSType eventClass = 0;
    OSType eventID = 0;
    Params params;
    std::string Get(const std::string &keyword) const;
    bool Has(const std::string &keyword) const;
    std::vector<std::string> Keywords() const;
};

/* A private folder under /tmp, removed with everything in it. */
struct IacTempFolder {
    std::string path;
    IacTempFolder();
    ~IacTempFolder();
    std::string Write(const std::string &relative, const std::string &content = "") const;
    std::string Classic(const std::string &relative = "") const;   /* full classic path */
};

class IacTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /* An incoming 'VESK' event with these parameters, in order, as 'TEXT'. */
    static AppleEvent MakeEvent(const Params &params);
    /* Runs the handler on an incoming message; returns what the sender would get. */
    static OSErr Receive(const Params &params);
    /* Every event sent to partner (0: anyone) and not yet taken, oldest first. */
    static std::vector<SentMessage> TakeSent(OSType partner = 0);
    static std::vector<std::string> SentIds(const std::vector<SentMessage> &sent);
    /* Calls an external function with argument text; returns the result text. */
    static std::string Call(long funcId, const std::string &argument);
    static int32_t ArchivedCount();
    static std::string ArchivedValue(int slot, const char *keyword);
    static std::string Code(OSType code);
    static void AddApp(OSType signature);

    FMX_ExternCallBlock block{};
    IacTempFolder emptyApplications;   /* the Applications folder unless a test sets its own */
};

#endif
