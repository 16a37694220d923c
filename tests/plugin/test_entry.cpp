/*
 * test_entry.cpp: the plug-in loaded as a host loads it (dlopen of tpx1.fmx, calls
 * through FMExternCallProc with fmhost's host memory): the Init version range, the
 * current resource file around every call, an argument that cannot be terminated, the
 * file dialogs, an error report's exact text, and the function table against the names
 * in the written resource file. (The character functions and unknown ids are
 * tests/host/scripts/basics.fmh's, through fmhost.)
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "host/HostCore.h"
#include "platform/Services.h"
#include "platform/Toolbox.h"
#include "plugin/ExternalFunctionInfo.h"

namespace {

/* File dialogs that answer a fixed choice, or cancel, and keep the name proposed. */
bool gFileDialogsCancel = false;
std::string gProposedName = "<none>";

OSErr ChooseFileAnswering(const char *, const char *, char *path, int32_t pathSize)
{
    snprintf(path, (size_t)pathSize, "%s", gFileDialogsCancel ? "" : "Disk:chosen.txt");
    return gFileDialogsCancel ? userCanceledErr : noErr;
}

OSErr PutFileAnswering(const char *, const char *, const char *proposedName, char *folderPath,
                       int32_t folderSize, char *fileName, int32_t nameSize)
{
    gProposedName = proposedName;
    snprintf(folderPath, (size_t)folderSize, "%s", gFileDialogsCancel ? "" : "Disk:Out:");
    snprintf(fileName, (size_t)nameSize, "%s", gFileDialogsCancel ? "" : "save.zip");
    return gFileDialogsCancel ? userCanceledErr : noErr;
}

class PluginEntry : public ::testing::Test {
protected:
    HostPlugin plugin;
    void SetUp() override
    {
        PlatformDialogUseRecorder();
        PlatformDialogClearRecord();
        std::string error;
        ASSERT_EQ(0, HostLoadPlugin(TPX1_FMX_PATH, &plugin, &error)) << error;
    }
    std::string Call(const char *name, const std::string &arg)
    {
        int id = HostFunctionId(&plugin, name);
        EXPECT_GE(id, 0) << name;
        return HostCallExternal(&plugin, id, arg);
    }
    std::string LastDialogText()
    {
        int32_t n = PlatformDialogRecordedCount();
        return n > 0 ? std::string(PlatformDialogRecorded(n - 1)->text) : std::string("<no dialog>");
    }
};

TEST_F(PluginEntry, InitAcceptsHostVersions50To255Only)
{
    EXPECT_EQ(-1, HostInit(&plugin, 49));
    EXPECT_EQ("", Call("TPX1GetGlobalList", "SYSENV")) << "no global may exist after a refused Init";
    EXPECT_EQ(-1, HostInit(&plugin, 256));
    EXPECT_EQ(51, HostInit(&plugin, 50));
    EXPECT_EQ("TOPOLUX plugin ver 8.0", Call("TPX1Version", ""));
    EXPECT_EQ("TOPOLUX plugin ver 8.0", Call("TPX1GetGlobal", "Plugin Version"));
    EXPECT_EQ("", Call("TPX1GetGlobal", "App DOC"));
    HostShutdown(&plugin);
    EXPECT_EQ(51, HostInit(&plugin, 255));
    EXPECT_EQ("TOPOLUX plugin ver 8.0", Call("TPX1Version", ""));
    HostShutdown(&plugin);
    EXPECT_EQ(0, HostMemoryLiveHandles() + HostMemoryLivePointers());
}

TEST_F(PluginEntry, EveryCallLeavesTheCurrentResourceFileAsItWas)
{
    UseResFile(0);
    for (uint8_t selector : {0, 1, 2, 3, 4, 5, 7, 200}) {
        HostCallRaw(&plugin, selector, 60, 0, 1, nullptr, nullptr);
        EXPECT_EQ(0, CurResFile()) << "selector " << int(selector);
    }
    UseResFile(plugin.resFileRef);
    HostInit(&plugin, 60);
    Call("TPX1TabChar", "");
    EXPECT_EQ(plugin.resFileRef, CurResFile());
    HostShutdown(&plugin);
}

TEST_F(PluginEntry, ErrorReportNamesTheFunctionEvenWithABadResourceReference)
{
    plugin.resFileRef = 999;   /* names no open file: the plug-in's own table answers */
    HostInit(&plugin, 60);
    Call("TPX1SetGlobal", "NoBar");
    EXPECT_EQ("An error occurred in the plug-in function TPX1SetGlobal.\r\rError: -222\r\r", LastDialogText());
    HostShutdown(&plugin);
}

TEST_F(PluginEntry, ArgumentThatCannotBeTerminatedIsReportedAndNothingRuns)
{
    HostInit(&plugin, 60);
    HostMemorySetFailure(1, kHostFailOnce);
    /* The host's own argument and result handles are made before the call; the first
     * allocation the plug-in asks for is growing the argument by its terminator. */
    std::string result = Call("TPX1SetGlobal", "Count|1");
    HostMemorySetFailure(0, kHostFailOff);
    EXPECT_EQ("", result);
    EXPECT_EQ("Not enough memory to complete this operation.\r\r\r\r", LastDialogText());
    EXPECT_EQ("", Call("TPX1GetGlobal", "Count"));
    HostShutdown(&plugin);
}

TEST_F(PluginEntry, FileDialogsIgnoreTheSolutionsTextAndAnswerThePath)
{
    Tpx1DialogMethods answering = *PlatformInstallDialogs(nullptr);
    answering.xChooseFile = ChooseFileAnswering;
    answering.xPutFile = PutFileAnswering;
    PlatformInstallDialogs(&answering);
    HostInit(&plugin, 60);
    gFileDialogsCancel = false;
    EXPECT_EQ("Disk:chosen.txt", Call("TPX1AskUserForFileNameToRead", "Pick one"));
    EXPECT_EQ("Disk:Out:save.zip", Call("TPX1AskUserForFileNameToWrite", "proposed.zip"));
    EXPECT_EQ("", gProposedName) << "the save dialog proposes no name";
    gFileDialogsCancel = true;
    EXPECT_EQ("", Call("TPX1AskUserForFileNameToRead", ""));
    EXPECT_EQ("", Call("TPX1AskUserForFileNameToWrite", "proposed.zip"));
    HostShutdown(&plugin);
    PlatformDialogUseRecorder();
    EXPECT_EQ(0, PlatformDialogRecordedCount());
}

TEST_F(PluginEntry, TableGivesEveryIdOnceInOrderWithItsNameAndSynopsis)
{
    char line[kSynopsisSize];
    for (long id = 0; id < kFunctionCount; id++) {
        const ExternalFunctionInfo *info = GetExternalFunctionInfo(id);
        ASSERT_NE(nullptr, info) << id;
        EXPECT_EQ(id, info->id);
        EXPECT_EQ(plugin.names[id], info->name) << "STR# 144 item " << id + 1;
        EXPECT_EQ(id, HostFunctionId(&plugin, info->name)) << info->name << " appears once";
        EXPECT_EQ(info, FindExternalFunctionByName(info->name));
        EXPECT_NE(0u, strlen(info->summary)) << info->name;
        EXPECT_EQ(0, GetExternalFunctionSynopsis(id, line, sizeof line)) << info->name;
    }
    Str255 past;
    UseResFile(plugin.resFileRef);
    GetIndString(past, 144, kFunctionCount + 1);
    EXPECT_EQ(0, past[0]) << "STR# 144 has no item after the last function";
    EXPECT_EQ(nullptr, GetExternalFunctionInfo(kFunctionCount));
    EXPECT_EQ(nullptr, GetExternalFunctionInfo(-1));
    EXPECT_EQ(kTPX1GetNextMessage, FindExternalFunctionByName("tpx1getnextmessage")->id);
    EXPECT_EQ(nullptr, FindExternalFunctionByName("TPX1NoSuchFunction"));

    EXPECT_EQ(0, GetExternalFunctionSynopsis(kTPX1AppendToGlobal, line, sizeof line));
    EXPECT_STREQ("TPX1AppendToGlobal(name[|NODUPES]|value) - appends to a global (NODUPES: only lines it lacks)",
                 line);
    EXPECT_EQ(-1, GetExternalFunctionSynopsis(kTPX1AppendToGlobal, line, 20));
    EXPECT_STREQ("", line) << "a synopsis is whole or not there";
    EXPECT_EQ(-1, GetExternalFunctionSynopsis(kFunctionCount, line, sizeof line));
}

}  // namespace
