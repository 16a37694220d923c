/*
 * test_fileops.cpp: exists, copy, delete, reading a slice, listing a folder, the write
 * and read helpers and the zip messages, with their failure texts driven by fault
 * injection.
 */
#include "tests/common/PluginTest.h"

#include <cstring>
#include <filesystem>

#include "files/FileOps.h"
#include "host/HostCore.h"
#include "platform/Faults.h"
#include "platform/FileService.h"
#include "platform/Files.h"
#include "platform/Toolbox.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

using FilesTest = InitedPluginTest;

namespace {

void PascalOf(const std::string &path, Str255 out)
{
    out[0] = (unsigned char)path.size();
    memcpy(out + 1, path.data(), path.size());
}

std::string Pattern(size_t size)
{
    std::string bytes(size, 0);
    for (size_t i = 0; i < size; i++)
        bytes[i] = (char)((i * 7 + i / 251) & 0xFF);
    return bytes;
}

} // namespace

TEST_F(FilesTest, FileExistsAnswersTrueOrFalse)
{
    folder.Write("Apps/here.txt", "x");
    EXPECT_EQ(Call(kTPX1FileExists, ":here.txt"), "TRUE");
    EXPECT_EQ(Call(kTPX1FileExists, folder.Classic("Apps:here.txt")), "TRUE");
    EXPECT_EQ(Call(kTPX1FileExists, ":gone.txt"), "FALSE");
    EXPECT_EQ(Call(kTPX1FileExists, "NoSuchVolume:x"), "FALSE");
}

TEST_F(FilesTest, CopyFileCopiesTheDataFork)
{
    EXPECT_EQ(Call(kTPX1CopyFile, ":a.txt"), "Error: vertical bar expected in TPX1CopyFile");
    EXPECT_EQ(Call(kTPX1CopyFile, ":a.txt|:b.txt"), "Error: The source file does not exist: " + AppFolder() + "a.txt");

    std::string data = Pattern(250001);   /* three transfer buffers */
    folder.Write("Apps/a.bin", data);
    int64_t inKernel = PlatformFilesBytesCopiedInKernel();
    EXPECT_EQ(Call(kTPX1CopyFile, ":a.bin|" + folder.Classic("b.bin")), "");
    EXPECT_EQ(folder.Read("b.bin"), data);
    EXPECT_EQ(PlatformFilesBytesCopiedInKernel() - inKernel, 250001) << "one file system: inside the kernel";

    /* A locked destination is unlocked and replaced. */
    folder.Write("locked.bin", "old and longer than the new one");
    Str255 locked;
    PascalOf(folder.Classic("locked.bin"), locked);
    ASSERT_EQ(HSetFLock(0, 0, locked), noErr);
    folder.Write("Apps/small.txt", "new");
    PlatformFaultSet(kFaultHRstFLock, 1000000, ioErr, false);   /* counts the calls */
    EXPECT_EQ(Call(kTPX1CopyFile, ":small.txt|" + folder.Classic("locked.bin")), "");
    EXPECT_EQ(folder.Read("locked.bin"), "new");
    EXPECT_EQ(PlatformFaultCalls(kFaultHRstFLock), 1);
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(FilesTest, CopyingAnEmptyFileKeepsTypeAndCreator)
{
    folder.Write("empty.dat", "");
    Str255 source, destination;
    PascalOf(folder.Classic("empty.dat"), source);
    PascalOf(folder.Classic("copy.dat"), destination);
    FInfo info{};
    ASSERT_EQ(HGetFInfo(0, 0, source, &info), noErr);
    info.fdType = FOUR_CHAR('R', 'P', 'F', ' ');
    info.fdCreator = FOUR_CHAR('R', 'E', 'P', 'F');
    ASSERT_EQ(HSetFInfo(0, 0, source, &info), noErr);
    ASSERT_EQ(HGetFInfo(0, 0, source, &info), noErr);

    EXPECT_EQ(Call(kTPX1CopyFile, folder.Classic("empty.dat") + "|" + folder.Classic("copy.dat")), "");
    ASSERT_TRUE(folder.Exists("copy.dat"));
    EXPECT_EQ(folder.Read("copy.dat"), "");
    FInfo copied{};
    ASSERT_EQ(HGetFInfo(0, 0, destination, &copied), noErr);
    SKIP_WITHOUT_FINDER_INFO(info);
    EXPECT_EQ(copied.fdType, FOUR_CHAR('R', 'P', 'F', ' '));
    EXPECT_EQ(copied.fdCreator, FOUR_CHAR('R', 'E', 'P', 'F'));
}

TEST_F(FilesTest, CopyFileFailureTexts)
{
    folder.Write("Apps/src.txt", "source bytes");
    int number = 0;
    struct Case {
        PlatformFaultPoint op;
        int nth;
        const char *text;
    } cases[] = {
        {kFaultHGetFInfo, 1, "Error: hgetfinfo failed."},
        {kFaultHOpenDF, 1, "Error: hopendf failed."},
        {kFaultGetEOF, 1, "Error: GetEOF failed."},
        {kFaultHCreate, 1, "Error: HCreate failed."},
        {kFaultHOpenDF, 2, "Error: HOpenDF failed."},
        {kFaultFSRead, 1, "Error: TransferFileSection failed."},
        {kFaultFSWrite, 1, "Error: TransferFileSection failed."},
    };
    for (const Case &c : cases) for (bool kernel : {true, false}) {
        PlatformFilesAllowKernelCopy(kernel);   /* a chunk copied in the kernel meets the same faults */
        PlatformFaultClearAll();
        PlatformFaultSet(c.op, c.nth, ioErr, false);
        /* A failed copy leaves its files open, so every case copies to a new name. */
        std::string arg = ":src.txt|:dst" + std::to_string(++number) + ".txt";
        EXPECT_EQ(Call(kTPX1CopyFile, arg), c.text) << PlatformFaultPointName(c.op);
        EXPECT_EQ(PlatformFaultHits(c.op), 1) << PlatformFaultPointName(c.op);
        auto dialogs = TakeDialogs();
        bool transfer = strcmp(c.text, "Error: TransferFileSection failed.") == 0;
        EXPECT_EQ(dialogs.size(), transfer ? 1u : 0u) << PlatformFaultPointName(c.op);
        if (transfer) {
            EXPECT_TRUE(Contains(dialogs, "Error: -36")) << PlatformFaultPointName(c.op);
        }
    }
    PlatformFilesAllowKernelCopy(true);
}

/* Inside the kernel and through the buffer alike: the buffer backs off, the chunks are
 * the buffer's size, each chunk meets the read's fault point once, and when a chunk
 * fails the destination holds exactly the chunks before it. */
TEST_F(FilesTest, TransferBufferBacksOffWhileMemoryIsShort)
{
    std::string data = Pattern(200000);
    folder.Write("from.bin", data);
    Str255 from, to;
    PascalOf(folder.Classic("from.bin"), from);
    PascalOf(folder.Classic("to.bin"), to);
    for (bool kernel : {true, false}) for (bool failSecond : {false, true}) {
        PlatformFilesAllowKernelCopy(kernel);
        folder.Write("to.bin", "");
        int16_t source = 0, destination = 0;
        ASSERT_EQ(HOpenDF(0, 0, from, fsRdPerm, &source), noErr);
        ASSERT_EQ(HOpenDF(0, 0, to, fsRdWrPerm, &destination), noErr);

        HostMemorySetFailure(1, kHostFailFromThenOn);
        EXPECT_EQ(TransferFileSection(source, destination, 0, 200000), kMissingErr);
        EXPECT_EQ(HostMemoryAllocationCount(), 20) << "100000 down to 5000 in steps of 5000";

        HostMemorySetFailure(1, kHostFailOnce);
        PlatformFaultSet(kFaultFSRead, 1000000, ioErr, false);   /* counts the calls */
        if (failSecond)
            PlatformFaultSet(kFaultFSWrite, 2, ioErr, false);
        int64_t inKernel = PlatformFilesBytesCopiedInKernel();
        EXPECT_EQ(TransferFileSection(source, destination, 100000, 200000), failSecond ? ioErr : noErr);
        EXPECT_EQ(HostMemoryAllocationCount(), 2);
        EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 2) << "a 95000-byte buffer needs two chunks";
        EXPECT_EQ(PlatformFilesBytesCopiedInKernel() - inKernel, kernel ? (failSecond ? 95000 : 100000) : 0);
        HostMemorySetFailure(0, kHostFailOff);
        PlatformFaultClearAll();
        FSClose(source);
        FSClose(destination);
        EXPECT_EQ(folder.Read("to.bin"), data.substr(100000, failSecond ? 95000 : 100000)) << kernel;
    }
    PlatformFilesAllowKernelCopy(true);
}

TEST_F(FilesTest, DeleteFileRetriesABusyFile)
{
    EXPECT_EQ(Call(kTPX1DeleteFile, ":missing.txt"), "");
    folder.Write("Apps/plain.txt", "x");
    EXPECT_EQ(Call(kTPX1DeleteFile, ":plain.txt"), "");
    EXPECT_FALSE(folder.Exists("Apps/plain.txt"));

    PlatformClockUseManual(1000, 7);
    folder.Write("Apps/busy.txt", "x");
    PlatformFaultSet(kFaultHDelete, 1, fBsyErr, false);
    EXPECT_EQ(Call(kTPX1DeleteFile, ":busy.txt"), "");
    EXPECT_EQ(PlatformFaultCalls(kFaultHDelete), 2);
    EXPECT_FALSE(folder.Exists("Apps/busy.txt"));

    folder.Write("Apps/busy.txt", "x");
    PlatformFaultSet(kFaultHDelete, 1, fBsyErr, true);
    uint32_t before = TickCount();
    EXPECT_EQ(Call(kTPX1DeleteFile, ":busy.txt"), "Error -47: Unable to delete file: " + AppFolder() + "busy.txt");
    EXPECT_EQ(PlatformFaultCalls(kFaultHDelete), 16);
    EXPECT_GE(TickCount() - before, 15u * 60u) << "one second between tries";
    EXPECT_TRUE(folder.Exists("Apps/busy.txt"));

    PlatformFaultSet(kFaultHDelete, 1, permErr, false);
    EXPECT_EQ(Call(kTPX1DeleteFile, ":busy.txt"), "Error -54: Unable to delete file: " + AppFolder() + "busy.txt");
    EXPECT_EQ(PlatformFaultCalls(kFaultHDelete), 1) << "only a busy file is tried again";
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(FilesTest, GetCharsFromFileReadsASlice)
{
    const std::string usage =
        "Error: Usage TPX1GetCharsFromFile(startingCharOneRelative|numCharsToCopy|relativeOrFullPath)";
    folder.Write("Apps/f.txt", "abcdefgh");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "0|3|:f.txt"), usage);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "1|0|:f.txt"), usage);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "1|3"), usage);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "1|3|:nofile.txt"), "Error: TPX1GetCharsFromFile: File does not exist");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "3|4|:f.txt"), "cdef");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "1|1|:f.txt|"), "a");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "6|100|:f.txt"), "fgh");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "8|1|" + folder.Classic("Apps:f.txt")), "h");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "9|5|:f.txt"), "");
    /* A count far beyond the file asks the host for no more than the file holds. */
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "6|2147483646|:f.txt"), "fgh");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "6|9223372036854775807|:f.txt"), "fgh");
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "9223372036854775807|1|:f.txt"), "");
    EXPECT_TRUE(TakeDialogs().empty());

    PlatformFaultSet(kFaultFSRead, 1, ioErr, false);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "2|2|:f.txt"), "Error: FSRead returned an error.");
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: -36"));
    PlatformFaultSet(kFaultHGetFInfo, 1, ioErr, false);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "2|2|:f.txt"), "Error: hgetfinfo failed.");
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: -36"));
    PlatformFaultSet(kFaultGetEOF, 1, ioErr, false);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "2|2|:f.txt"), "Error: GetEOF failed.");
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: -36"));
    PlatformFaultSet(kFaultHOpenDF, 1, permErr, false);
    EXPECT_EQ(Call(kTPX1GetCharsFromFile, "2|2|:f.txt"), "Error: hopendf failed.");
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: -54"));
}

TEST_F(FilesTest, ListingAdmitsZipAndRpfInCatalogOrder)
{
    folder.MakeFolder("L");
    for (const char *name : {"b.zip", "A.RPF", "c.ZIP", "d.txt", "e.rpf", "f.zipx", "noext"})
        folder.Write(std::string("L/") + name, "x");
    folder.MakeFolder("L/Sub.Zip");
    std::string l = folder.Classic("L:");
    std::string expected = l + "A.RPF\r" + l + "b.zip\r" + l + "c.ZIP\r" + l + "e.rpf\r" + l + "Sub.Zip\r";
    EXPECT_EQ(Call(kTPX1GetListOfFilesInFolder, l + "b.zip"), expected);
    EXPECT_EQ(Call(kTPX1GetListOfFilesInFolder, l + "e.rpf"), expected);
    EXPECT_EQ(Call(kTPX1GetListOfFilesInFolder, l + "d.txt"), l + "d.txt\r");
    EXPECT_EQ(Call(kTPX1GetListOfFilesInFolder, l + "noext"), "");
    EXPECT_EQ(Call(kTPX1GetListOfFilesInFolder, l + "missing.zip"), "");

    PlatformFaultSet(kFaultPBGetCatInfoSync, 3, ioErr, false);
    Call(kTPX1GetListOfFilesInFolder, folder.Classic("L:b.zip"));
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: -36"));
}

TEST_F(FilesTest, WriteAndReadHelpers)
{
    std::string path = folder.Classic("w.txt");
    EXPECT_EQ(WriteCStringToFile(path.c_str(), "first"), noErr);
    EXPECT_EQ(folder.Read("w.txt"), "first");
    EXPECT_EQ(WriteCStringToFile(path.c_str(), "2nd"), noErr);
    EXPECT_EQ(folder.Read("w.txt"), "2nd");
    EXPECT_EQ(AppendBufferToFile(path.c_str(), "+more", 5), noErr);
    EXPECT_EQ(folder.Read("w.txt"), "2nd+more");
    EXPECT_EQ(WriteCStringToFile(path.c_str(), nullptr), kMissingErr);
    Str255 name;
    PascalOf(path, name);
    FInfo info{};
    ASSERT_EQ(HGetFInfo(0, 0, name, &info), noErr);

    std::string missing = folder.Classic("none.txt");
    EXPECT_EQ(AppendBufferToFile(missing.c_str(), "x", 1), fnfErr);
    EXPECT_FALSE(folder.Exists("none.txt"));

    char **h = ReadFileIntoTerminatedFHandle(path.c_str(), true);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(GetFHandleSize(h), 9);
    EXPECT_EQ(std::string(*h, 9), std::string("2nd+more\0", 9));
    DisposeFHandle(h);
    EXPECT_EQ(ReadFileIntoTerminatedFHandle(missing.c_str(), false), nullptr);
    EXPECT_TRUE(TakeDialogs().empty());
    EXPECT_EQ(ReadFileIntoTerminatedFHandle(missing.c_str(), true), nullptr);
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 1u);
    EXPECT_EQ(dialogs[0].rfind("Error reading file: ", 0), 0u);
    EXPECT_NE(dialogs[0].find(missing), std::string::npos);

    PlatformFaultSet(kFaultFSWrite, 1, dskFulErr, false);
    EXPECT_EQ(WriteCStringToFile(path.c_str(), "full"), dskFulErr);
    dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 1u);
    EXPECT_EQ(dialogs[0], "Error writing to file:\r" + path);

    SKIP_WITHOUT_FINDER_INFO(info);
    EXPECT_EQ(info.fdType, FOUR_CHAR('T', 'E', 'X', 'T'));
    EXPECT_EQ(info.fdCreator, FOUR_CHAR('t', 't', 'x', 't'));
}

TEST_F(FilesTest, ZipFunctionsAreNotSupported)
{
    EXPECT_EQ(Call(kTPX1ZipFiles, "x"), "");
    EXPECT_EQ(Call(kTPX1UnzipFiles, "x"), "Error");
    EXPECT_EQ(Call(kTPX1UnzipFilesBatchMode, "x"), "Error");
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 3u);
    EXPECT_EQ(dialogs[0], "TPX1ZipFiles is not supported on the MAC.");
    EXPECT_EQ(dialogs[1], "TPX1UnzipFiles is not supported on the MAC.");
    EXPECT_EQ(dialogs[2], "TPX1UnzipFilesBatchMode is not supported on the MAC.");
}
