/*
 * Lst2TestHost.cpp: the fixture of the map object list tests.
 */
#include "Lst2TestHost.h"

#include "maplist/Lst2.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

namespace {

typedef void (*ExternalFunction)(long, char **, char **);

ExternalFunction FunctionById(long funcId)
{
    switch (funcId) {
    case kSetParameterId: return TPX1SetParameter;
    case kGetNextMessageId: return TPX1GetNextMessage;
    case kGetParameterLST2Id: return TPX1GetParameterLST2;
    case kGetParameterLST2LineId: return TPX1GetParameterLST2Line;
    case kGetParameterLatLongId: return TPX1GetParameterLatLong;
    case kProcessLST2Id: return TPX1ProcessLST2ParameterForTopolux;
    case kRenameLSTAId: return TPX1RenameIncomingLSTAtoLST2;
    case kCopyLST2Id: return TPX1CopyIncomingLST2ToOutgoingLST2;
    case kGetNthLineId: return TPX1GetNthLine;
    default: return nullptr;
    }
}

std::string HandleText(char **h)
{
    if (h == nullptr)
        return "<none>";
    return HostHandleBytes(h);
}

}  // namespace

void Lst2Test::SetUp()
{
    HostMemoryInstall(&block);
    gFMX_ExternCallPtr = &block;
    HostMemorySetFailure(0, kHostFailOff);
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
    InitDataLists();
}

void Lst2Test::TearDown()
{
    gFMX_ExternCallPtr = &block;
    HostMemorySetFailure(0, kHostFailOff);
    DisposeDataLists();
    EXPECT_EQ(0, HostMemoryLiveHandles() + HostMemoryLivePointers()) << "host memory left behind";
}

/* As the dispatcher does: the argument is NUL-terminated, then the function runs. */
std::string Lst2Test::Call(long funcId, const std::string &arg, const std::string &resultBefore)
{
    FMX_Handle argument = HostNewTextHandle(arg);
    FMX_Handle result = HostNewTextHandle(resultBefore);
    gFMX_ExternCallPtr = &block;
    ExternalFunction function = FunctionById(funcId);
    EXPECT_NE(nullptr, function) << funcId;
    if (function != nullptr && EnsureHandleIsNullTerminated(argument) == noErr)
        function(funcId, argument, result);
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
    Call(kGetNextMessageId, "");
}

std::string Lst2Test::Outgoing(const char *keyword)
{
    return HandleText(GetTheOutgoingMessageParameterDataHandleFromList_NotACopy(keyword, 1));
}

std::string Lst2Test::Incoming(const char *keyword)
{
    return HandleText(GetTheIncomingMessageParameterDataHandleFromList_NotACopy(keyword));
}

int Lst2Test::DialogCount()
{
    return PlatformDialogRecordedCount();
}

std::string Lst2Test::DialogText(int i)
{
    const DialogSpec *spec = PlatformDialogRecorded(i);
    return spec != nullptr ? std::string(spec->text) : std::string("<no dialog>");
}
