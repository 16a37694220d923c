/*
 * test_paths.cpp: relative path resolution, the host application's paths, the base
 * directory list, and the POSIX form of classic paths.
 */
#include "FilesFixture.h"

#include <cstdlib>
#include <cstring>

#include "files/FilesState.h"
#include "files/Paths.h"
#include "platform/Files.h"
#include "store/Globals.h"

static std::string Resolve(OSErr (*resolver)(const char *, char *), const std::string &path)
{
    char out[256];
    memset(out, 'x', sizeof out);
    EXPECT_EQ(resolver(path.c_str(), out), noErr);
    return out;
}

TEST_F(FilesTest, RelativePathsResolveAgainstTheApplicationFolder)
{
    SetGlobalFromStr("App Folder with Delim", 1, "Disk:Apps:");
    auto app = ResolvePathRelativeToApplication;
    auto base = ResolvePathRelativeToBaseDirectory;
    EXPECT_EQ(Resolve(app, "Disk:Data:File"), "Disk:Data:File");
    EXPECT_EQ(Resolve(base, "Disk:Data:File"), "Disk:Data:File");
    EXPECT_EQ(Resolve(app, ":File"), "Disk:Apps:File");
    EXPECT_EQ(Resolve(app, "\\Sub\\File"), "Disk:Apps:Sub:File");
    EXPECT_EQ(Resolve(app, "::Data:Map"), "Disk:Data:Map");
    EXPECT_EQ(Resolve(app, "::"), "Disk:");
    EXPECT_EQ(Resolve(app, ":::Top"), "Disk:Top");      /* nothing left to cut */
    EXPECT_EQ(Resolve(base, ":File"), "Disk:Apps:File"); /* no base: the application */
    EXPECT_EQ(Resolve(app, ""), "");

    std::string longPath = ":" + std::string(300, 'a');
    EXPECT_EQ(Resolve(app, longPath).size(), 255u);

    strcpy(gBaseDirectory, "Vol:Base:Deep");
    EXPECT_EQ(Resolve(base, ":File"), "Vol:Base:Deep:File");
    EXPECT_EQ(Resolve(base, "::File"), "Vol:Base:File");
    EXPECT_EQ(Resolve(app, ":File"), "Disk:Apps:File");

    gBaseDirectory[0] = 0;
    EXPECT_EQ(Call(kTPX1ResolveRelativePath, "::Data:Map"), "Disk:Data:Map");
    EXPECT_EQ(Call(kTPX1ResolveRelativePath, "Other:Path|"), "Other:Path");
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(FilesTest, ApplicationPathsComeFromTheProcessAndAreKept)
{
    char out[256];
    GetAppFullPathName(out);
    EXPECT_EQ(std::string(out), Classic("Apps:FakeHost"));
    GetAppFolderPathWithDelimiter(out);
    EXPECT_EQ(std::string(out), AppFolder());
    GetAppName(out);
    EXPECT_EQ(std::string(out), "FakeHost");

    /* An application package is cut back to the package. */
    MakeFolder("Apps/Host.app/Contents/MacOS");
    WriteFile("Apps/Host.app/Contents/MacOS/Host", "");
    setenv("TPX1_APP_PATH", Posix("Apps/Host.app/Contents/MacOS/Host").c_str(), 1);
    GetAppName(out);
    EXPECT_EQ(std::string(out), "FakeHost") << "the path is computed once and kept";
    gAppFullPathKnown = false;
    GetAppFullPathName(out);
    EXPECT_EQ(std::string(out), Classic("Apps:Host.app:Contents:MacOS:Host"));
    GetAppFolderPathWithDelimiter(out);
    EXPECT_EQ(std::string(out), AppFolder());
    GetAppName(out);
    EXPECT_EQ(std::string(out), "Host");
}

TEST_F(FilesTest, CatalogPathsWalkUpToTheVolume)
{
    MakeFolder("A/B");
    WriteFile("A/B/f.txt", "x");
    FSSpec theSpec;
    ASSERT_EQ(GetFSSpecFromFullPath(Classic("A:B:f.txt").c_str(), &theSpec), noErr);
    char out[256];
    ASSERT_EQ(GetFullPathFromFSSpec(&theSpec, out), noErr);
    EXPECT_EQ(std::string(out), Classic("A:B:f.txt"));
    ASSERT_EQ(GetPathWithDelimiterFromDirID(theSpec.parID, theSpec.vRefNum, out), noErr);
    EXPECT_EQ(std::string(out), Classic("A:B:"));
    EXPECT_EQ(GetFSSpecFromFullPath(Classic("A:B:missing.txt").c_str(), &theSpec), fnfErr);
    EXPECT_EQ(GetFSSpecFromFullPath(Classic("A:None:missing.txt").c_str(), &theSpec), dirNFErr);
}

class BaseDirectoryTest : public FilesTest {
protected:
    void SetUp() override
    {
        FilesTest::SetUp();
        MakeFolder("Data1");
        MakeFolder("Data2");
        WriteFile("Data2/ref.txt", "reference");
    }
    void WriteList(const std::string &lines) { WriteFile("Apps/BaseDirectoryList.txt", lines); }
    std::string ResolveWithReference(const std::string &path)
    {
        return Call(kTPX1ResolveRelativePath, path + "|:ref.txt");
    }
};

static const char kDetermineFailed[] = "Error: DetermineBaseDirectoryFromTheReferenceFile returned an error";

TEST_F(BaseDirectoryTest, OneListedFolderHoldingTheReferenceBecomesTheBase)
{
    /* Mixed line ends, an empty line, trailing delimiters of both kinds. */
    WriteList("\r\n" + Classic("Data1") + "\\\r" + Classic("Data2:") + "\n\n");
    EXPECT_EQ(ResolveWithReference(":Sub:x.txt"), Classic("Data2:Sub:x.txt"));
    EXPECT_EQ(std::string(gBaseDirectory), Classic("Data2"));

    /* The base is kept while the reference still holds: the list is not read again. */
    WriteList("");
    EXPECT_EQ(ResolveWithReference(":y.txt"), Classic("Data2:y.txt"));
    EXPECT_EQ(std::string(gBaseDirectory), Classic("Data2"));
    /* Without a reference the base is cleared and the application folder applies. */
    EXPECT_EQ(Call(kTPX1ResolveRelativePath, ":y.txt"), AppFolder() + "y.txt");
    EXPECT_EQ(gBaseDirectory[0], 0);
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(BaseDirectoryTest, TwoListedFoldersHoldingTheReferenceAreAnError)
{
    WriteFile("Data1/ref.txt", "another");
    MakeFolder("Data3");
    WriteFile("Data3/ref.txt", "third");
    WriteList(Classic("Data1") + "\r" + Classic("Data2") + "\r" + Classic("Data3") + "\r");
    EXPECT_EQ(ResolveWithReference(":x"), kDetermineFailed);
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 1u);
    EXPECT_EQ(dialogs[0], "Error: more than one base directory listed in BaseDirectoryList.txt contains "
                          "the reference file \":ref.txt\"");
    EXPECT_EQ(std::string(gBaseDirectory), Classic("Data2")) << "the second matching line stays";
    EXPECT_EQ(DetermineBaseDirectoryFromTheReferenceFile(":ref.txt"), noErr)
        << "the kept base still holds the reference";
}

TEST_F(BaseDirectoryTest, NoListedFolderHoldingTheReferenceIsAnError)
{
    WriteList(Classic("Data1") + "\r");
    EXPECT_EQ(DetermineBaseDirectoryFromTheReferenceFile(":ref.txt"), -1);
    EXPECT_EQ(gBaseDirectory[0], 0);
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 1u);
    EXPECT_EQ(dialogs[0], "Error: base directory could not be found containing the reference file \":ref.txt\"");

    /* No list file at all: the application folder is the base, silently. */
    std::remove(Posix("Apps/BaseDirectoryList.txt").c_str());
    EXPECT_EQ(ResolveWithReference(":x"), AppFolder() + "x");
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(BaseDirectoryTest, ReferenceBesideTheApplicationClearsTheBase)
{
    WriteList(Classic("Data2") + "\r");
    EXPECT_EQ(ResolveWithReference(":x"), Classic("Data2:x"));
    WriteFile("Apps/ref.txt", "beside the application");
    EXPECT_EQ(ResolveWithReference(":x"), AppFolder() + "x");
    EXPECT_EQ(gBaseDirectory[0], 0);

    char out[256];
    EXPECT_EQ(ResolvePossiblePartialPath(":z", ":ref.txt", 0, out), noErr);
    EXPECT_EQ(std::string(out), AppFolder() + "z");
    std::remove(Posix("Apps/ref.txt").c_str());
    std::remove(Posix("Data2/ref.txt").c_str());
    EXPECT_EQ(ResolvePossiblePartialPath(":z", ":ref.txt", 0, out), -1);
}

TEST_F(FilesTest, FileSystemRepresentationCreatesTheMissingFile)
{
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":new.txt"), Posix("Apps/new.txt"));
    ASSERT_TRUE(Exists("Apps/new.txt"));
    EXPECT_EQ(ReadFile("Apps/new.txt"), "");
    FInfo info;
    Str255 name;
    std::string classic = Classic("Apps:new.txt");
    name[0] = (unsigned char)classic.size();
    memcpy(name + 1, classic.data(), classic.size());
    ASSERT_EQ(HGetFInfo(0, 0, name, &info), noErr);

    WriteFile("Apps/old.txt", "kept");
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, Classic("Apps:old.txt")), Posix("Apps/old.txt"));
    EXPECT_EQ(ReadFile("Apps/old.txt"), "kept");

    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":NoFolder:x.txt"),
              "Error: strcpyFileSystemRepresentationFromClassicPath returned an error");
    WriteFile("Apps/BaseDirectoryList.txt", Classic("Apps") + "\r");
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":x.txt|:nowhere.txt"),
              "Error: ResolvePossiblePartialPath returned an error");
    EXPECT_FALSE(Exists("Apps/x.txt"));
    EXPECT_EQ(TakeDialogs().size(), 1u);

    SKIP_WITHOUT_FINDER_INFO(info);
    EXPECT_EQ(info.fdType, FOUR_CHAR('T', 'E', 'X', 'T'));
    EXPECT_EQ(info.fdCreator, FOUR_CHAR('M', 'P', 'W', ' '));
}
