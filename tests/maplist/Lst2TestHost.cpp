/*
 * Lst2TestHost.cpp: the fixture of the map object list tests.
 */
#include "Lst2TestHost.h"

#include "fuzz/TestHooks.h"
#include "plugin/Plugin.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

namespace {

/* A parameter's bytes; a parameter without a value handle reads as the empty text. */
std::string ParameterText(const char *keyword, DataNode *first)
{
    DataNode *node = FindDataNodeInList(keyword, first);
    if (node == nullptr)
        return "<none>";
    return node->data != nullptr ? HostHandleBytes(node->data) : std::string();
}

}  // namespace

/* The plug-in is linked in: its entry is RunHostCall, called with fmhost's host
 * callbacks exactly as a host calls FMExternCallProc. */
void Lst2Test::SetUp()
{
    HostMemorySetFailure(0, kHostFailOff);
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
    plugin.entry = RunHostCall;
    ASSERT_EQ(51, HostInit(&plugin, kHostVersion));
    HostMemoryInstall(&block);
    gFMX_ExternCallPtr = &block;
}

void Lst2Test::TearDown()
{
    HostMemorySetFailure(0, kHostFailOff);
    HostShutdown(&plugin);
    EXPECT_EQ(0, HostMemoryLiveHandles() + HostMemoryLivePointers()) << "host memory left behind";
}

std::string Lst2Test::Call(long funcId, const std::string &arg, const std::string &resultBefore)
{
    FMX_Handle argument = HostNewTextHandle(arg);
    FMX_Handle result = HostNewTextHandle(resultBefore);
    HostCallRaw(&plugin, kFMXT_External, kHostVersion, 0, (int32_t)funcId, argument, result);
    gFMX_ExternCallPtr = &block;   /* the call's block is gone; core calls here use ours */
    std::string text = HostHandleBytes(result);
    HostDisposeHandle(argument);
    HostDisposeHandle(result);
    return text;
}

void Lst2Test::Receive(const std::vector<std::string> &keywordValuePairs)
{
    std::vector<const char *> pairs;
    for (const std::string &s : keywordValuePairs)
        pairs.push_back(s.c_str());
    ASSERT_EQ(noErr, ArchiveMessageForTesting(pairs.data(), (int)pairs.size() / 2));
    Call(kTPX1GetNextMessage, "");
}

std::string Lst2Test::Outgoing(const char *keyword)
{
    return ParameterText(keyword, gOutgoingUserMessageParameterDataNodeList);
}

std::string Lst2Test::Incoming(const char *keyword)
{
    return ParameterText(keyword, gIncomingMessageParameterDataNodeList);
}

int Lst2Test::DialogCount()
{
    return PlatformDialogRecordedCount();
}

std::string Lst2Test::DialogText(int i)
{
    const DialogSpec *theSpec = PlatformDialogRecorded(i);
    return theSpec != nullptr ? std::string(theSpec->text) : std::string("<no dialog>");
}

std::string WithLineEnds(const std::string &list, const std::string &end)
{
    std::string out;
    for (char c : list)
        out += c == '\r' ? end : std::string(1, c);
    return out;
}
