/*
 * IacTestSupport.cpp: the messaging test fixture and its helpers (see the header).
 */
#include "IacTestSupport.h"

#include <cstdlib>

#include "iac/IacTables.h"
#include "plugin/CoreState.h"
#include "platform/EventService.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

std::string SentMessage::Get(const std::string &keyword) const
{
    for (const auto &p : params)
        if (p.first == keyword) return p.second;
    return "<missing>";
}

bool SentMessage::Has(const std::string &keyword) const
{
    for (const auto &p : params)
        if (p.first == keyword) return true;
    return false;
}

std::vector<std::string> SentMessage::Keywords() const
{
    std::vector<std::string> keywords;
    for (const auto &p : params) keywords.push_back(p.first);
    return keywords;
}

void IacTest::SetUp()
{
    PluginTest::SetUp();
    folder.MakeFolder("Partners");
    setenv("TPX1_APPLICATIONS_FOLDER", folder.Posix("Partners").c_str(), 1);
    SetGlobalFromStr("App Name", 1, "FileMaker Pro");
    SetGlobalFromStr("App Path", 1, "Linux:opt:FileMaker:FileMaker Pro");
    SetGlobalFromStr("App Signature", 1, "FMP7");
    SetGlobalFromStr("App PSIG", 1, "FMP7");
    SetGlobalFromStr("App DOC", 1, "");
}

AppleEvent IacTest::MakeEvent(const Params &params)
{
    AppleEvent event;
    HarnessMakeMessage(params, &event);
    return event;
}

OSErr IacTest::Receive(const Params &params)
{
    AppleEvent event = MakeEvent(params);
    AppleEvent reply;
    AEInitializeDesc(&reply);
    OSErr err = HandleVESKEvent(&event, &reply, 0);
    AEDisposeDesc(&event);
    return err;
}

std::vector<SentMessage> IacTest::TakeSent(OSType partner)
{
    std::vector<SentMessage> all;
    for (;;) {
        SentMessage m;
        AppleEvent event;
        if (PlatformMemoryBusTakeSent(partner, &event) != noErr) break;
        DescType type;
        int32_t size;
        AEGetAttributePtr(&event, keyEventClassAttr, typeWildCard, &type, &m.eventClass, 4, &size);
        AEGetAttributePtr(&event, keyEventIDAttr, typeWildCard, &type, &m.eventID, 4, &size);
        AEGetAttributePtr(&event, keyAddressAttr, typeWildCard, &type, &m.to, 4, &size);
        for (int32_t i = 1;; i++) {
            AEKeyword keyword;
            char data[4096];
            if (PlatformEventGetNthParam(&event, i, &keyword, &type, data, sizeof data, &size) != noErr) break;
            EXPECT_EQ(type, typeChar);
            m.params.emplace_back(HarnessCodeText(keyword), std::string(data, (size_t)size));
        }
        AEDisposeDesc(&event);
        all.push_back(m);
    }
    return all;
}

std::vector<std::string> IacTest::SentIds(const std::vector<SentMessage> &sent)
{
    std::vector<std::string> ids;
    for (const SentMessage &m : sent) ids.push_back(m.Get("MSSG"));
    return ids;
}

int32_t IacTest::ArchivedCount()
{
    int32_t count = 0;
    for (DataNode *slot : gArchivedIncomingMessageParameterDataNodeList)
        if (slot) count++;
    return count;
}

std::string IacTest::ArchivedValue(int slot, const char *keyword)
{
    char buffer[4096];
    DataNode *node = FindDataNodeInList(keyword, gArchivedIncomingMessageParameterDataNodeList[slot]);
    if (!node) return "<missing>";
    GetDataFromListAsStr(keyword, buffer, sizeof buffer, gArchivedIncomingMessageParameterDataNodeList[slot]);
    return buffer;
}

void IacTest::AddApp(OSType signature)
{
    std::string name = HarnessCodeText(signature);
    PlatformMemoryBusAddApp(signature, name.c_str(), ("/opt/" + name).c_str());
}
