/*
 * PluginTest.h: the one fixture of the tests that host the plug-in, built on the fuzz
 * harness: every test starts in a fresh process state (every table as at load, host
 * memory without failures, recorded dialogs, the in-memory bus with this process as
 * "FMP7", the manual clock moving one tick per reading, the private folder holding the
 * host application), calls the linked-in plug-in through its entry as fmhost does, and
 * ends with Shutdown and no host memory left behind. Init is the test's choice: the core
 * tests run without the reserved globals it makes.
 */
#ifndef TPX1_TESTS_PLUGINTEST_H
#define TPX1_TESTS_PLUGINTEST_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "fuzz/Harness.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "text/TextHandles.h"

class PluginTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        HarnessResetProcess(1);
        baseline_ = HarnessLiveHostBlocks();
    }
    void TearDown() override
    {
        HostMemorySetFailure(0, kHostFailOff);
        HostShutdown(HarnessPlugin());
        HarnessDrainEvents();
        EXPECT_EQ(HarnessLiveHostBlocks(), baseline_) << HarnessLeakReport();
    }
    /* Init through the entry: the lists and the ten reserved globals. */
    static void Init()
    {
        ASSERT_EQ(51, HostInit(HarnessPlugin(), 60));
        HarnessUseStandingBlock();
    }
    /* One external call through the entry with a NUL-terminated argument and a result
     * handle holding resultBefore; the result handle's bytes after it. */
    static std::string Call(long funcId, const std::string &argument, const std::string &resultBefore = "")
    {
        FMX_Handle handle = HostNewTextHandle(argument + std::string(1, '\0'));
        FMX_Handle result = HostNewTextHandle(resultBefore);
        HostCallRaw(HarnessPlugin(), kFMXT_External, 60, 0, (int32_t)funcId, handle, result);
        HarnessUseStandingBlock();   /* the call's block is gone; the test's own core calls use this one */
        std::string text = HostHandleBytes(result);
        HostDisposeHandle(handle);
        HostDisposeHandle(result);
        return text;
    }

    /* The dialogs recorded so far: taken (the record is emptied), or looked at. */
    static std::vector<std::string> TakeDialogs() { return HarnessTakeDialogs(); }
    static int DialogCount() { return PlatformDialogRecordedCount(); }
    static std::string DialogText(int i)
    {
        const DialogSpec *theSpec = PlatformDialogRecorded(i);
        return theSpec && theSpec->text ? theSpec->text : "<no dialog>";
    }
    static std::string LastDialogText() { return DialogText(DialogCount() - 1); }

    /* A plug-in-owned handle holding exactly these bytes, and a handle's bytes. */
    static char **MakeHandle(const std::string &bytes)
    {
        char **h = NewFHandle((long)bytes.size());
        if (h && !bytes.empty())
            memcpy(*h, bytes.data(), bytes.size());
        return h;
    }
    static std::string Bytes(char **h) { return HostHandleBytes(h); }
    /* A value of a list as text, and a list as "name=value;" ("name~;" without a value). */
    static std::string Value(const char *name, DataNode *first)
    {
        std::vector<char> buffer((size_t)GetDataFromListAsStr(name, nullptr, 0, first) + 1);
        GetDataFromListAsStr(name, buffer.data(), (long)buffer.size(), first);
        return buffer.data();
    }
    static std::string Describe(DataNode *first)
    {
        std::string out;
        for (DataNode *node = first; node; node = node->next)
            out += std::string(node->name) + (node->data ? "=" + Value(node->name, first) : "~") + ";";
        return out;
    }

    const TestFolder &folder = HarnessFolder();   /* Apps/FakeHost is the host application */
    std::string AppFolder() const { return folder.Classic("Apps:"); }

private:
    long baseline_ = 0;
};

/* The same with the plug-in started as a host starts it. */
class InitedPluginTest : public PluginTest {
protected:
    void SetUp() override
    {
        PluginTest::SetUp();
        Init();
    }
};

/* True when one of the texts contains part. */
inline bool Contains(const std::vector<std::string> &texts, const std::string &part)
{
    for (const std::string &text : texts)
        if (text.find(part) != std::string::npos)
            return true;
    return false;
}

/* Where the file system keeps no Finder information (no user extended attributes), type
 * and creator read as zero: a test that checks them says it skipped them. */
#define SKIP_WITHOUT_FINDER_INFO(info)                                                              \
    if ((info).fdType == 0)                                                                         \
    GTEST_SKIP() << "the file system keeps no Finder information: type and creator not checked"

#endif
