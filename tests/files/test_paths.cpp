/*
 * test_paths.cpp: relative path resolution, the host application's paths, the base
 * directory list, and the POSIX form of classic paths.
 */
#include "tests/common/PluginTest.h"

#include <cstdlib>
#include <cstring>

#include "files/FilesState.h"
#include "files/Paths.h"
#include "platform/Files.h"
#include "store/Globals.h"

using FilesTest = InitedPluginTest;

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
    EXPECT_EQ(std::string(out), folder.Classic("Apps:FakeHost"));
    GetAppFolderPathWithDelimiter(out);
    EXPECT_EQ(std::string(out), AppFolder());
    GetAppName(out);
    EXPECT_EQ(std::string(out), "FakeHost");

    /* An application package is cut back to the package. */
    folder.MakeFolder("Apps/Host.app/Contents/MacOS");
    folder.Write("Apps/Host.app/Contents/MacOS/Host", "");
    setenv("TPX1_APP_PATH", folder.Posix("Apps/Host.app/Contents/MacOS/Host").c_str(), 1);
    GetAppName(out);
    EXPECT_EQ(std::string(out), "FakeHost") << "the path is computed once and kept";
    gAppFullPathKnown = false;
    GetAppFullPathName(out);
    EXPECT_EQ(std::string(out), folder.Classic("Apps:Host.app:Contents:MacOS:Host"));
    GetAppFolderPathWithDelimiter(out);
    EXPECT_EQ(std::string(out), AppFolder());
    GetAppName(out);
    EXPECT_EQ(std::string(out), "Host");
}

TEST_F(FilesTest, CatalogPathsWalkUpToTheVolume)
{
    folder.MakeFolder("A/B");
    folder.Write("A/B/f.txt", "x");
    FSSpec theSpec;
    ASSERT_EQ(GetFSSpecFromFullPath(folder.Classic("A:B:f.txt").c_str(), &theSpec), noErr);
    char out[256];
    ASSERT_EQ(GetFullPathFromFSSpec(&theSpec, out), noErr);
    EXPECT_EQ(std::string(out), folder.Classic("A:B:f.txt"));
    ASSERT_EQ(GetPathWithDelimiterFromDirID(theSpec.parID, theSpec.vRefNum, out), noErr);
    EXPECT_EQ(std::string(out), folder.Classic("A:B:"));
    EXPECT_EQ(GetFSSpecFromFullPath(folder.Classic("A:B:missing.txt").c_str(), &theSpec), fnfErr);
    EXPECT_EQ(GetFSSpecFromFullPath(folder.Classic("A:None:missing.txt").c_str(), &theSpec), dirNFErr);
}

/* The base directory as TPX1ResolveRelativePath finds and keeps it, step by step: each
 * step writes the list file ('~' stands for the private folder; none: no list file) and
 * puts the reference file in the folders named, then expects the result (a path
 * relative to the private folder, or the error), the base kept and the dialog shown. */
TEST_F(FilesTest, BaseDirectoryComesFromTheListAndTheReferenceFile)
{
    const char *failed = "Error: DetermineBaseDirectoryFromTheReferenceFile returned an error";
    const std::string three = "~:Data1\r~:Data2\r~:Data3\r";
    struct Step {
        const char *list;
        std::string referenceIn, argument, result, base, dialog;
    } steps[] = {
        /* Mixed line ends, an empty line, trailing delimiters of both kinds: one holds it. */
        {"\r\n~:Data1\\\r~:Data2:\n\n", "Data2", ":Sub:x.txt|:ref.txt", "Data2:Sub:x.txt", "Data2", ""},
        /* Kept while the reference still holds: the list is not read again. */
        {"", "Data2", ":y.txt|:ref.txt", "Data2:y.txt", "Data2", ""},
        /* Without a reference the base is cleared and the application folder applies. */
        {"", "Data2", ":y.txt", "Apps:y.txt", "", ""},
        /* Three hold it: an error, the second matching line stays, and still holds it. */
        {three.c_str(), "Data1 Data2 Data3", ":x|:ref.txt", failed, "Data2",
         "Error: more than one base directory listed in BaseDirectoryList.txt contains the reference file \":ref.txt\""},
        {three.c_str(), "Data1 Data2 Data3", ":x|:ref.txt", "Data2:x", "Data2", ""},
        /* A reference beside the application clears the base. */
        {"~:Data2\r", "Data2 Apps", ":x|:ref.txt", "Apps:x", "", ""},
        {"~:Data1\r", "Data2", ":x|:ref.txt", failed, "",
         "Error: base directory could not be found containing the reference file \":ref.txt\""},
        /* No list file at all: the application folder is the base, silently. */
        {nullptr, "Data2", ":x|:ref.txt", "Apps:x", "", ""},
    };
    for (const Step &step : steps) {
        SCOPED_TRACE(std::string(step.list ? step.list : "no list") + ", in " + step.referenceIn + ": " + step.argument);
        for (std::string place : {"Data1", "Data2", "Data3", "Apps"}) {
            if (step.referenceIn.find(place) != std::string::npos)
                folder.Write(place + "/ref.txt", "reference");
            else
                folder.Remove(place + "/ref.txt");
        }
        std::string list = step.list ? step.list : "";
        for (size_t at; (at = list.find('~')) != std::string::npos;)
            list.replace(at, 1, folder.Classic());
        if (step.list)
            folder.Write("Apps/BaseDirectoryList.txt", list);
        else
            folder.Remove("Apps/BaseDirectoryList.txt");
        EXPECT_EQ(Call(kTPX1ResolveRelativePath, step.argument), step.result == failed ? failed : folder.Classic(step.result));
        EXPECT_EQ(std::string(gBaseDirectory), step.base.empty() ? "" : folder.Classic(step.base));
        EXPECT_EQ(TakeDialogs(), step.dialog.empty() ? std::vector<std::string>{} : std::vector<std::string>{step.dialog});
    }
}

TEST_F(FilesTest, FileSystemRepresentationCreatesTheMissingFile)
{
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":new.txt"), folder.Posix("Apps/new.txt"));
    ASSERT_TRUE(folder.Exists("Apps/new.txt"));
    EXPECT_EQ(folder.Read("Apps/new.txt"), "");
    FInfo info;
    Str255 name;
    std::string classic = folder.Classic("Apps:new.txt");
    name[0] = (unsigned char)classic.size();
    memcpy(name + 1, classic.data(), classic.size());
    ASSERT_EQ(HGetFInfo(0, 0, name, &info), noErr);

    folder.Write("Apps/old.txt", "kept");
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, folder.Classic("Apps:old.txt")), folder.Posix("Apps/old.txt"));
    EXPECT_EQ(folder.Read("Apps/old.txt"), "kept");

    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":NoFolder:x.txt"),
              "Error: strcpyFileSystemRepresentationFromClassicPath returned an error");
    folder.Write("Apps/BaseDirectoryList.txt", folder.Classic("Apps") + "\r");
    EXPECT_EQ(Call(kTPX1FileSystemRepresentationFromClassicPath, ":x.txt|:nowhere.txt"),
              "Error: ResolvePossiblePartialPath returned an error");
    EXPECT_FALSE(folder.Exists("Apps/x.txt"));
    EXPECT_EQ(TakeDialogs().size(), 1u);

    SKIP_WITHOUT_FINDER_INFO(info);
    EXPECT_EQ(info.fdType, FOUR_CHAR('T', 'E', 'X', 'T'));
    EXPECT_EQ(info.fdCreator, FOUR_CHAR('M', 'P', 'W', ' '));
}
