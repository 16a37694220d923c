/*
 * IacTestSupport.h: the fixture of the messaging unit tests: the plug-in host of the
 * tests (in-memory bus with this process as "FMP7", recorded dialogs) with the host
 * application's globals set and an empty Applications folder ("Partners" in the private
 * folder), and helpers that hand incoming events to the handler, read the events sent to
 * partners and the archive.
 */
#ifndef TPX1_TESTS_IACTESTSUPPORT_H
#define TPX1_TESTS_IACTESTSUPPORT_H

#include <string>
#include <vector>

#include "iac/Iac.h"
#include "tests/common/PluginTest.h"

#define kHostSignature kHarnessHostSignature

using Params = HarnessParams;

struct SentMessage {
    OSType to = 0;
    OSType eventClass = 0;
    OSType eventID = 0;
    Params params;
    std::string Get(const std::string &keyword) const;
    bool Has(const std::string &keyword) const;
    std::vector<std::string> Keywords() const;
};

class IacTest : public PluginTest {
protected:
    void SetUp() override;

    /* An incoming 'VESK' event with these parameters, in order, as 'TEXT'. */
    static AppleEvent MakeEvent(const Params &params);
    /* Runs the handler on an incoming message; returns what the sender would get. */
    static OSErr Receive(const Params &params);
    /* Every event sent to partner (0: anyone) and not yet taken, oldest first. */
    static std::vector<SentMessage> TakeSent(OSType partner = 0);
    static std::vector<std::string> SentIds(const std::vector<SentMessage> &sent);
    static int32_t ArchivedCount();
    static std::string ArchivedValue(int slot, const char *keyword);
    static void AddApp(OSType signature);
};

#endif
