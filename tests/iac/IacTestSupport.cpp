/*
 * IacTestSupport.cpp: the messaging test fixture and its helpers (see the header).
 */
#include "IacTestSupport.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

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

IacTempFolder::IacTempFolder()
{
    char tmpl[] = "/tmp/tpx1-iac-XXXXXX";
    path = mkdtemp(tmpl);
}

IacTempFolder::~IacTempFolder()
{
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
}

std::string IacTempFolder::Write(const std::string &relative, const std::string &content) const
{
    std::string full = path + "/" + relative;
    std::filesystem::create_directories(std::filesystem::path(full).parent_path());
    std::ofstream(full, std::ios::binary) << content;
    return full;
}

std::string IacTempFolder::Classic(const std::string &relative) const
{
    char classic[1024];
    std::string posix = relative.empty() ? path : path + "/" + relative;
    EXPECT_EQ(PlatformPOSIXPathToClassic(posix.c_str(), classic, sizeof classic), noErr) << posix;
    return classic;
}

void IacTest::SetUp()
{
    ResetCoreState();
    HostMemoryInstall(&block);
    gFMX_ExternCallPtr = &block;
    PlatformBusUseMemory();
    PlatformSetProcessSignature(kHostSignature);
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
    setenv("TPX1_APPLICATIONS_FOLDER", emptyApplications.path.c_str(), 1);
    SetGlobalFromStr("App Name", 1, "FileMaker Pro");
    SetGlobalFromStr("App Path", 1, "Linux:opt:FileMaker:FileMaker Pro");
    SetGlobalFromStr("App Signature", 1, "FMP7");
    SetGlobalFromStr("App PSIG", 1, "FMP7");
    SetGlobalFromStr("App DOC", 1, "");
}

void IacTest::TearDown()
{
    DisposeIncomingMessageParameterList();
    DisposeDataLists();
    HostMemorySetFailure(0, kHostFailOff);
    EXPECT_EQ(HostMemoryLeakReport(stderr), 0);
    PlatformBusUseMemory();
    PlatformDialogUseDefault();
    unsetenv("TPX1_APPLICATIONS_FOLDER");
}

AppleEvent IacTest::MakeEvent(const Params &params)
{
    OSType me = kHostSignature;
    AEAddressDesc address;
    AppleEvent event;
    AEInitializeDesc(&address);
    AEInitializeDesc(&event);
    EXPECT_EQ(AECreateDesc(typeApplSignature, &me, sizeof me, &address), noErr);
    EXPECT_EQ(AECreateAppleEvent(kVeskEventClass, kVeskEventID, &address, kAutoGenerateReturnID, kAnyTransactionID,
                                 &event),
              noErr);
    for (const auto &p : params)
        EXPECT_EQ(AEPutParamPtr(&event, FOUR_CHAR(p.first[0], p.first[1], p.first[2], p.first[3]), typeChar,
                                p.second.data(), (int32_t)p.second.size()),
                  noErr);
    AEDisposeDesc(&address);
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
            m.params.emplace_back(Code(keyword), std::string(data, (size_t)size));
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

std::string IacTest::Call(long funcId, const std::string &argument)
{
    return HostCallCoreFunction(Plugin_External, funcId, argument);
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

std::string IacTest::Code(OSType code)
{
    char text[5];
    text[0] = (char)(code >> 24);
    text[1] = (char)(code >> 16);
    text[2] = (char)(code >> 8);
    text[3] = (char)code;
    text[4] = 0;
    return text;
}

void IacTest::AddApp(OSType signature)
{
    PlatformMemoryBusAddApp(signature, Code(signature).c_str(), ("/opt/" + Code(signature)).c_str());
}
