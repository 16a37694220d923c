/*
 * test_entry.cpp: the file functions as a host reaches them, through the plug-in's
 * entry, after Init has filled the application globals from the process.
 */
#include "FilesFixture.h"

#include "host/HostCore.h"
#include "plugin/Plugin.h"
#include "store/DataNode.h"

class EntryTest : public FilesTest {
protected:
    void SetUp() override
    {
        FilesTest::SetUp();
        DisposeDataLists();   /* Init makes its own */
        plugin_.entry = RunHostCall;
        ASSERT_EQ(HostInit(&plugin_, 60), 51);
    }
    void TearDown() override
    {
        HostShutdown(&plugin_);
        FilesTest::TearDown();
    }
    std::string External(int id, const std::string &arg) { return HostCallExternal(&plugin_, id, arg); }
    HostPlugin plugin_;
};

TEST_F(EntryTest, FileFunctionsThroughTheEntry)
{
    MakeFolder("Site/Out");
    WriteFile("Site/site.ref", "");
    WriteFile("Site/report.rpf", "header CKTR2004 body fdtR2007 PHTR2000 end");
    WriteFile("Apps/BaseDirectoryList.txt", Classic("Nowhere") + "\r" + Classic("Site") + ":\r");
    const std::string ref = "|:site.ref";

    EXPECT_EQ(External(kTPX1ResolveRelativePath, ":x.txt"), AppFolder() + "x.txt");
    EXPECT_EQ(External(kTPX1ResolveRelativePath, ":x.txt" + ref), Classic("Site:x.txt"));
    EXPECT_EQ(External(kTPX1FileExists, ":report.rpf" + ref), "TRUE");
    EXPECT_EQ(External(kTPX1GetRepformYearsFromIDs, ":report.rpf" + ref), "2004 2007");
    EXPECT_EQ(External(kTPX1CopyFile, ":report.rpf|:Out:copy.rpf" + ref), "");
    EXPECT_EQ(External(kTPX1GetListOfFilesInFolder, ":Out:copy.rpf" + ref), Classic("Site:Out:copy.rpf") + "\r");
    EXPECT_EQ(External(kTPX1ChangeRepformIDsInFile, "2009|:Out:copy.rpf" + ref), "");
    EXPECT_EQ(External(kTPX1GetCharsFromFile, "8|8|:Out:copy.rpf" + ref), "CKTR2009");
    EXPECT_EQ(External(kTPX1DeleteFile, ":Out:copy.rpf" + ref), "");
    EXPECT_FALSE(Exists("Site/Out/copy.rpf"));
    EXPECT_EQ(External(kTPX1FileSystemRepresentationFromClassicPath, ":Out:new.txt" + ref), Posix("Site/Out/new.txt"));
    EXPECT_TRUE(Exists("Site/Out/new.txt"));
    EXPECT_TRUE(TakeDialogs().empty());
    EXPECT_EQ(External(kTPX1UnzipFiles, ""), "Error");
    EXPECT_EQ(TakeDialogs(), std::vector<std::string>{"TPX1UnzipFiles is not supported on the MAC."});
}
