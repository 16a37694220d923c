/*
 * StoreTestHost.cpp: the fixture of the store and dialog tests.
 */
#include "StoreTestHost.h"

#include <cstring>
#include <vector>

#include "platform/Toolbox.h"
#include "plugin/Plugin.h"

void StoreTest::SetUp()
{
    CoreHostTest::SetUp();
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
}

void StoreTest::TearDown()
{
    DisposeDataLists();
    EXPECT_EQ(HostMemoryLeakReport(stderr), 0);
    CoreHostTest::TearDown();
}

std::string StoreTest::Call(long funcId, const std::string &arg, const std::string &resultBefore)
{
    FMX_Handle argHandle = HostNewTextHandle(arg + std::string(1, '\0'));
    FMX_Handle result = HostNewTextHandle(resultBefore);
    Plugin_External(funcId, argHandle, result);
    std::string out = HostHandleBytes(result);
    HostDisposeHandle(argHandle);
    HostDisposeHandle(result);
    return out;
}

std::string StoreTest::Value(const char *name, DataNode *first)
{
    long length = GetDataFromListAsStr(name, nullptr, 0, first);
    std::vector<char> buf((size_t)length + 1);
    GetDataFromListAsStr(name, buf.data(), (long)buf.size(), first);
    return std::string(buf.data());
}

std::string StoreTest::Describe(DataNode *first)
{
    std::string out;
    for (DataNode *node = first; node; node = node->next) {
        out += node->name;
        out += node->data ? "=" + Value(node->name, first) : std::string("~");
        out += ";";
    }
    return out;
}

std::string StoreTest::LastDialogText()
{
    int32_t n = PlatformDialogRecordedCount();
    return n ? PlatformDialogRecorded(n - 1)->text : "<no dialog>";
}

int StoreTest::DialogCount()
{
    return PlatformDialogRecordedCount();
}

std::string StoreTest::QueuedScript(int slot)
{
    return gDeferredScript[slot];
}
