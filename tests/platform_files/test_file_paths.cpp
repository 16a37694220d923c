/*
 * test_file_paths.cpp: classic paths on Linux: conversion both ways (names in Mac Roman,
 * '/' and ':' swapped), volumes from the root and from the mount table, FSMakeFSSpec's
 * answers, and directory ids walked back to a volume's root.
 */
#include "FileTestFolder.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

namespace {

std::string ToPOSIX(const std::string &classic, OSErr *err = nullptr)
{
    char out[1024];
    OSErr e = PlatformClassicPathToPOSIX(classic.c_str(), out, sizeof out);
    if (err) *err = e;
    return e == noErr ? std::string(out) : std::string();
}

std::string ToClassic(const std::string &posix, OSErr *err = nullptr)
{
    char out[1024];
    OSErr e = PlatformPOSIXPathToClassic(posix.c_str(), out, sizeof out);
    if (err) *err = e;
    return e == noErr ? std::string(out) : std::string();
}

/* The classic path of a folder by its directory id, built from the parents upwards. */
std::string PathOfDirId(int16_t vRefNum, int32_t dirID)
{
    std::string path;
    for (int guard = 0; guard < 64; guard++) {
        Str255 name;
        CInfoPBRec pb = {};
        pb.ioNamePtr = name;
        pb.ioVRefNum = vRefNum;
        pb.ioFDirIndex = -1;
        pb.ioDirID = dirID;
        if (PBGetCatInfoSync(&pb) != noErr) return "<error>";
        path = FromPascal(name) + ":" + path;
        if (dirID == fsRtDirID) return path;
        dirID = pb.ioDrParID;
    }
    return "<loop>";
}

} // namespace

using FilePaths = FileTestFolder;

TEST_F(FilePaths, ConvertsBothWaysWithMacRomanNamesAndSlashes)
{
    /* "Café" is Caf\x8E in Mac Roman; a POSIX ':' is a classic '/'. */
    EXPECT_EQ(ToClassic("/home/ann/Data/Sites.txt"), "Linux:home:ann:Data:Sites.txt");
    EXPECT_EQ(ToPOSIX("Linux:home:ann:Data:Sites.txt"), "/home/ann/Data/Sites.txt");
    EXPECT_EQ(ToClassic("/tmp/a:b/Caf\xC3\xA9"), "Linux:tmp:a/b:Caf\x8E");
    EXPECT_EQ(ToPOSIX("Linux:tmp:a/b:Caf\x8E"), "/tmp/a:b/Caf\xC3\xA9");
    EXPECT_EQ(ToClassic("/tmp/folder/"), "Linux:tmp:folder:");
    EXPECT_EQ(ToPOSIX("Linux:tmp:folder:"), "/tmp/folder/");
    EXPECT_EQ(ToClassic("/"), "Linux:");
    EXPECT_EQ(ToPOSIX("Linux:"), "/");
    EXPECT_EQ(ToPOSIX("linux:tmp"), "/tmp");               /* volume names ignore case */
    EXPECT_EQ(ToClassic("/tmp//x/./y/../z"), "Linux:tmp:x:z");
    EXPECT_EQ(ToPOSIX("Linux:tmp:x::y"), "/tmp/y");         /* an empty name goes up */

    OSErr err;
    ToPOSIX("Nowhere:tmp", &err);
    EXPECT_EQ(err, nsvErr);
    ToPOSIX(":relative:path", &err);
    EXPECT_EQ(err, bdNamErr);
    ToClassic("relative/path", &err);
    EXPECT_EQ(err, bdNamErr);
    ToClassic("/tmp/\xD0\xB6.txt", &err);                  /* Cyrillic: no Mac Roman form */
    EXPECT_EQ(err, bdNamErr);
    char tiny[8];
    EXPECT_EQ(PlatformPOSIXPathToClassic("/home/ann/Data", tiny, sizeof tiny), paramErr);
}

TEST_F(FilePaths, RootVolumeNameComesFromTheEnvironment)
{
    setenv("TPX1_ROOT_VOLUME", "Macintosh HD", 1);
    EXPECT_EQ(ToClassic("/tmp/x"), "Macintosh HD:tmp:x");
    EXPECT_EQ(ToPOSIX("Macintosh HD:tmp:x"), "/tmp/x");
    OSErr err;
    ToPOSIX("Linux:tmp:x", &err);
    EXPECT_EQ(err, nsvErr);
    FSSpec theSpec;
    EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal("Linux:tmp"), &theSpec), nsvErr);
    unsetenv("TPX1_ROOT_VOLUME");
    EXPECT_EQ(ToClassic("/tmp/x"), "Linux:tmp:x");
}

TEST_F(FilePaths, MountedFileSystemsAreVolumesByTheirFolderName)
{
    std::string table = folder.Posix("mountinfo");
    std::ofstream(table) << "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                            "40 22 8:17 / /mnt/Data rw - ext4 /dev/sdb1 rw\n"
                            "41 22 8:33 / /media/ann/USB\\040Stick rw - vfat /dev/sdc1 rw\n"
                            "42 22 8:49 / /run/media/bob/Cam rw - vfat /dev/sdd1 rw\n"
                            "43 22 0:50 / /mnt/deep/inside rw - tmpfs none rw\n"
                            "44 22 0:51 / /media/ann rw - tmpfs none rw\n";
    PlatformFilesUseMountInfo(table.c_str());

    EXPECT_EQ(ToPOSIX("Data:Maps:Zurich.map"), "/mnt/Data/Maps/Zurich.map");
    EXPECT_EQ(ToPOSIX("USB Stick:x"), "/media/ann/USB Stick/x");
    EXPECT_EQ(ToPOSIX("cam:y:"), "/run/media/bob/Cam/y/");
    EXPECT_EQ(ToClassic("/mnt/Data/Maps/Zurich.map"), "Data:Maps:Zurich.map");
    EXPECT_EQ(ToClassic("/mnt/Data"), "Data:");
    EXPECT_EQ(ToClassic("/mnt/DataX/a"), "Linux:mnt:DataX:a");
    EXPECT_EQ(ToClassic("/media/ann/USB Stick/x"), "USB Stick:x");
    /* Mounts elsewhere stay part of the root volume. */
    EXPECT_EQ(ToClassic("/mnt/deep/inside/f"), "Linux:mnt:deep:inside:f");
    EXPECT_EQ(ToClassic("/media/ann/f"), "Linux:media:ann:f");
    OSErr err;
    ToPOSIX("inside:f", &err);
    EXPECT_EQ(err, nsvErr);
    ToPOSIX("ann:f", &err);
    EXPECT_EQ(err, nsvErr);
}

TEST_F(FilePaths, MakeFSSpecTellsExistingMissingAndBadPaths)
{
    ASSERT_EQ(mkdir(folder.Posix("Data").c_str(), 0755), 0);
    folder.Write("Data/Sites.txt", "x");

    FSSpec file, data, missing;
    ASSERT_EQ(MakeSpec("Data:Sites.txt", &file), noErr);
    EXPECT_EQ(FromPascal(file.name), "Sites.txt");
    EXPECT_EQ(file.vRefNum, -1);
    ASSERT_EQ(MakeSpec("Data:", &data), noErr);             /* a trailing colon names the folder */
    EXPECT_EQ(FromPascal(data.name), "Data");
    EXPECT_EQ(MakeSpec("Data", &data), noErr);

    /* Missing leaf in an existing folder: fnfErr with the FSSpec filled in. */
    EXPECT_EQ(MakeSpec("Data:New.txt", &missing), fnfErr);
    EXPECT_EQ(FromPascal(missing.name), "New.txt");
    EXPECT_EQ(missing.parID, file.parID);
    EXPECT_EQ(FSpCreate(&missing, FOUR_CHAR('t', 't', 'x', 't'), FOUR_CHAR('T', 'E', 'X', 'T'), smSystemScript), noErr);
    EXPECT_TRUE(folder.Exists("Data/New.txt"));

    EXPECT_EQ(MakeSpec("Nope:Sites.txt", &missing), dirNFErr);
    EXPECT_EQ(MakeSpec("Data:Sites.txt:", &missing), dirNFErr);   /* a file is no folder */
    EXPECT_EQ(MakeSpec("Data:Sites.txt:x", &missing), dirNFErr);
    EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal("Nowhere:Data"), &missing), nsvErr);
    EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal(""), &missing), bdNamErr);
    EXPECT_EQ(MakeSpec("Data:..", &missing), bdNamErr);

    FSSpec root;
    ASSERT_EQ(FSMakeFSSpec(0, 0, Pascal("Linux:"), &root), noErr);
    EXPECT_EQ(root.vRefNum, -1);
    EXPECT_EQ(root.parID, fsRtParID);
    EXPECT_EQ(FromPascal(root.name), "Linux");

    /* The same file through (volume, folder id, name) and relative paths. */
    FSSpec again;
    ASSERT_EQ(FSMakeFSSpec(file.vRefNum, file.parID, Pascal("Sites.txt"), &again), noErr);
    EXPECT_EQ(again.parID, file.parID);
    ASSERT_EQ(FSMakeFSSpec(file.vRefNum, file.parID, Pascal("::Data:Sites.txt"), &again), noErr);
    EXPECT_EQ(again.parID, file.parID);
    EXPECT_EQ(FSMakeFSSpec(file.vRefNum, file.parID, Pascal("Gone.txt"), &again), fnfErr);
    EXPECT_EQ(FSMakeFSSpec(file.vRefNum, 987654, Pascal("Sites.txt"), &again), dirNFErr);
    EXPECT_EQ(FSMakeFSSpec(-77, file.parID, Pascal("Sites.txt"), &again), nsvErr);

    char posix[512];
    ASSERT_EQ(FSpGetPOSIXPath(&file, posix, sizeof posix), noErr);
    EXPECT_EQ(std::string(posix), folder.Posix("Data/Sites.txt"));
    ASSERT_EQ(FSpGetPOSIXPath(&data, posix, sizeof posix), noErr);
    EXPECT_EQ(std::string(posix), folder.Posix("Data"));
}

TEST_F(FilePaths, ClassicSlashAndAccentedNamesReachTheirPOSIXFiles)
{
    FSSpec theSpec;
    ASSERT_EQ(MakeSpec("a/b Caf\x8E.txt", &theSpec), fnfErr);
    ASSERT_EQ(FSpCreate(&theSpec, 0, 0, smSystemScript), noErr);
    EXPECT_TRUE(folder.Exists("a:b Caf\xC3\xA9.txt"));
    EXPECT_EQ(MakeSpec("a/b Caf\x8E.txt", &theSpec), noErr);
    EXPECT_EQ(FSpCreate(&theSpec, 0, 0, smSystemScript), dupFNErr);
    /* A POSIX name without a Mac Roman form cannot be named. */
    folder.Write("\xD0\xB6.txt", "");
    EXPECT_EQ(MakeSpec("?.txt", &theSpec), fnfErr);
}

TEST_F(FilePaths, DirectoryIdsWalkBackToTheVolumeRoot)
{
    ASSERT_EQ(mkdir(folder.Posix("A").c_str(), 0755), 0);
    ASSERT_EQ(mkdir(folder.Posix("A/B").c_str(), 0755), 0);
    FSSpec b, a;
    ASSERT_EQ(MakeSpec("A:B:", &b), noErr);
    ASSERT_EQ(MakeSpec("A:", &a), noErr);

    /* B's own id: the catalog entry of B in A. */
    CInfoPBRec pb = {};
    pb.ioNamePtr = b.name;
    pb.ioVRefNum = b.vRefNum;
    pb.ioDirID = b.parID;
    ASSERT_EQ(PBGetCatInfoSync(&pb), noErr);
    ASSERT_TRUE(pb.isFolder);
    int32_t idOfB = pb.ioDirID;
    EXPECT_GE(idOfB, 16);
    EXPECT_EQ(pb.ioDrParID, b.parID);
    EXPECT_EQ(PathOfDirId(b.vRefNum, idOfB), Classic("A:B:"));
    EXPECT_EQ(PathOfDirId(-1, fsRtDirID), "Linux:");

    /* Ids stay the same for the same folder; the root's parent is 1. */
    FSSpec again;
    ASSERT_EQ(FSMakeFSSpec(0, 0, Pascal(Classic("A:B:x")), &again), fnfErr);
    EXPECT_EQ(again.parID, idOfB);
    pb = {};
    Str255 name;
    pb.ioNamePtr = name;
    pb.ioFDirIndex = -1;
    pb.ioVRefNum = -1;
    pb.ioDirID = fsRtDirID;
    ASSERT_EQ(PBGetCatInfoSync(&pb), noErr);
    EXPECT_EQ(pb.ioDrParID, fsRtParID);
    EXPECT_EQ(FromPascal(name), "Linux");
}
