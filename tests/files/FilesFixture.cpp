/*
 * FilesFixture.cpp: set-up and helpers of the files tests.
 */
#include "FilesFixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "files/Paths.h"
#include "host/HostCore.h"
#include "plugin/CoreState.h"
#include "platform/Faults.h"
#include "platform/Files.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "text/TextHandles.h"

void FilesTest::SetUp()
{
    char pattern[] = "/tmp/tpx1files.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    root_ = pattern;
    char classic[512];
    ASSERT_EQ(PlatformPOSIXPathToClassic(root_.c_str(), classic, sizeof classic), noErr);
    classicRoot_ = classic;
    if (classicRoot_.empty() || classicRoot_.back() != ':')
        classicRoot_ += ':';

    MakeFolder("Apps");
    WriteFile("Apps/FakeHost", "");
    setenv("TPX1_APP_PATH", Posix("Apps/FakeHost").c_str(), 1);

    ResetCoreState();
    HostMemoryInstall(&block_);
    gFMX_ExternCallPtr = &block_;
    PlatformFaultClearAll();
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
    char folder[256];
    GetAppFolderPathWithDelimiter(folder);
    SetGlobalFromStr("App Folder with Delim", 1, folder);
}

void FilesTest::TearDown()
{
    DisposeDataLists();
    EXPECT_EQ(HostMemoryLivePointers(), 0);
    PlatformFaultClearAll();
    PlatformClockUseReal();
    PlatformDialogUseDefault();
    ResetCoreState();
    unsetenv("TPX1_APP_PATH");
    std::error_code ignored;
    std::filesystem::permissions(root_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(root_, ignored);
}

std::string FilesTest::Classic(const std::string &relative) const
{
    std::string path = classicRoot_ + relative;
    for (size_t i = classicRoot_.size(); i < path.size(); i++) {
        if (path[i] == '/')
            path[i] = ':';
    }
    return path;
}

void FilesTest::MakeFolder(const std::string &relative)
{
    std::filesystem::create_directories(Posix(relative));
}

void FilesTest::WriteFile(const std::string &relative, const std::string &bytes)
{
    std::ofstream out(Posix(relative), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), (std::streamsize)bytes.size());
}

std::string FilesTest::ReadFile(const std::string &relative) const
{
    std::ifstream in(Posix(relative), std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

bool FilesTest::Exists(const std::string &relative) const
{
    return std::filesystem::exists(Posix(relative));
}

std::string FilesTest::Call(long funcId, const std::string &argument)
{
    return HostCallCoreFunction(Plugin_External, funcId, argument);
}

std::vector<std::string> FilesTest::TakeDialogs()
{
    return HostTakeRecordedDialogs();
}
