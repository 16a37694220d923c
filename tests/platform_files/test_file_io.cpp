/*
 * test_file_io.cpp: open files (permissions, marks, end of file, short reads), creating
 * and deleting, Finder info in its extended attribute, locks, fault injection on the
 * File Manager calls, and FindFolder.
 */
#include "FileTestFolder.h"

#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <vector>

namespace {

const OSType kTEXT = FOUR_CHAR('T', 'E', 'X', 'T');
const OSType kTtxt = FOUR_CHAR('t', 't', 'x', 't');

} // namespace

class FileIO : public FileTestFolder {
protected:
    OSErr Open(const std::string &relative, int8_t permission, int16_t *refNum)
    {
        return HOpenDF(0, 0, Pascal(Classic(relative)), permission, refNum);
    }
};

TEST_F(FileIO, ReadWriteMarksAndEndOfFile)
{
    ASSERT_EQ(HCreate(0, 0, Pascal(Classic("f.txt")), kTtxt, kTEXT), noErr);
    EXPECT_EQ(HCreate(0, 0, Pascal(Classic("f.txt")), kTtxt, kTEXT), dupFNErr);
    int16_t ref = 0;
    ASSERT_EQ(Open("f.txt", fsRdWrPerm, &ref), noErr);
    EXPECT_GT(ref, 0);
    EXPECT_LT(ref, 400);

    int32_t count = 11;
    ASSERT_EQ(FSWrite(ref, &count, "hello world"), noErr);
    EXPECT_EQ(count, 11);
    int32_t pos = -1, eof = -1;
    EXPECT_EQ(GetFPos(ref, &pos), noErr);
    EXPECT_EQ(pos, 11);
    EXPECT_EQ(GetEOF(ref, &eof), noErr);
    EXPECT_EQ(eof, 11);

    /* A read that meets the end: eofErr with what was there. */
    char buffer[32] = {};
    EXPECT_EQ(SetFPos(ref, fsFromStart, 6), noErr);
    count = 10;
    EXPECT_EQ(FSRead(ref, &count, buffer), eofErr);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(std::string(buffer, 5), "world");
    count = 4;
    EXPECT_EQ(FSRead(ref, &count, buffer), eofErr);
    EXPECT_EQ(count, 0);

    EXPECT_EQ(SetFPos(ref, fsFromLEOF, -5), noErr);
    EXPECT_EQ(SetFPos(ref, fsFromMark, -2), noErr);
    EXPECT_EQ(GetFPos(ref, &pos), noErr);
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(SetFPos(ref, fsFromStart, -1), posErr);
    EXPECT_EQ(GetFPos(ref, &pos), noErr);
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(SetFPos(ref, fsFromStart, 50), eofErr);   /* the mark stops at the end */
    EXPECT_EQ(GetFPos(ref, &pos), noErr);
    EXPECT_EQ(pos, 11);

    EXPECT_EQ(SetEOF(ref, 5), noErr);
    EXPECT_EQ(GetFPos(ref, &pos), noErr);
    EXPECT_EQ(pos, 5);
    EXPECT_EQ(GetEOF(ref, &eof), noErr);
    EXPECT_EQ(eof, 5);
    EXPECT_EQ(FSClose(ref), noErr);
    EXPECT_EQ(FSClose(ref), rfNumErr);
    EXPECT_EQ(GetEOF(ref, &eof), rfNumErr);
    EXPECT_EQ(folder.Read("f.txt"), "hello");

    /* Read-only access refuses writes. */
    ASSERT_EQ(Open("f.txt", fsRdPerm, &ref), noErr);
    count = 1;
    EXPECT_EQ(FSWrite(ref, &count, "x"), wrPermErr);
    EXPECT_EQ(SetEOF(ref, 0), wrPermErr);
    EXPECT_EQ(FSClose(ref), noErr);

    EXPECT_EQ(Open("missing.txt", fsRdPerm, &ref), fnfErr);
    EXPECT_EQ(Open("", fsRdPerm, &ref), fnfErr);   /* the folder itself */
}

/* Read and written, or copied inside the kernel (each copy saying that more follow):
 * another call sees every chunk copied so far whole, and closing completes the last. */
TEST_F(FileIO, LargeTransferInChunksKeepsEveryByte)
{
    std::string content(3 * 1000 * 1000 + 7, '\0');
    for (size_t i = 0; i < content.size(); i++) content[i] = (char)(i * 131 + (i >> 12));
    folder.Write("src.bin", content);
    for (bool inKernel : {false, true}) {
        HDelete(0, 0, Pascal(Classic("dst.bin")));
        ASSERT_EQ(HCreate(0, 0, Pascal(Classic("dst.bin")), 0, 0), noErr);
        int16_t src, dst;
        ASSERT_EQ(Open("src.bin", fsRdPerm, &src), noErr);
        ASSERT_EQ(Open("dst.bin", fsCurPerm, &dst), noErr);
        EXPECT_NE(src, dst);
        int32_t eof;
        ASSERT_EQ(GetEOF(src, &eof), noErr);
        std::vector<char> buffer(100000);
        int64_t kernelBytes = PlatformFilesBytesCopiedInKernel();
        for (int32_t left = eof; left > 0;) {
            int32_t count = left < (int32_t)buffer.size() ? left : (int32_t)buffer.size();
            if (inKernel) {
                ASSERT_EQ(FSCopyRange(src, dst, &count, true), noErr);
            } else {
                ASSERT_EQ(FSRead(src, &count, buffer.data()), noErr);
                ASSERT_EQ(FSWrite(dst, &count, buffer.data()), noErr);
            }
            left -= count;
            int32_t written = 0;
            ASSERT_EQ(GetEOF(dst, &written), noErr);
            ASSERT_EQ(written, eof - left);
        }
        EXPECT_EQ(FSClose(src), noErr);
        EXPECT_EQ(FSClose(dst), noErr);
        EXPECT_TRUE(folder.Read("dst.bin") == content);
        EXPECT_EQ(PlatformFilesBytesCopiedInKernel() - kernelBytes, inKernel ? eof : 0);
    }
}

TEST_F(FileIO, CreateAndDeleteAnswerAsTheMacDoes)
{
    ASSERT_EQ(mkdir(folder.Posix("Full").c_str(), 0755), 0);
    folder.Write("Full/x", "");
    ASSERT_EQ(mkdir(folder.Posix("Empty").c_str(), 0755), 0);
    EXPECT_EQ(HDelete(0, 0, Pascal(Classic("Full"))), fBsyErr);
    EXPECT_EQ(HDelete(0, 0, Pascal(Classic("Empty:"))), noErr);
    EXPECT_FALSE(folder.Exists("Empty"));
    EXPECT_EQ(HDelete(0, 0, Pascal(Classic("nothing"))), fnfErr);
    EXPECT_EQ(HCreate(0, 0, Pascal(Classic("No:file")), 0, 0), dirNFErr);

    /* A file open in the process is busy; a second writer is refused. */
    folder.Write("open.txt", "abc");
    int16_t ref, other;
    ASSERT_EQ(Open("open.txt", fsRdWrPerm, &ref), noErr);
    EXPECT_EQ(Open("open.txt", fsWrPerm, &other), opWrErr);
    ASSERT_EQ(Open("open.txt", fsRdPerm, &other), noErr);
    EXPECT_EQ(FSClose(other), noErr);
    EXPECT_EQ(HDelete(0, 0, Pascal(Classic("open.txt"))), fBsyErr);
    EXPECT_EQ(FSClose(ref), noErr);
    FSSpec theSpec;
    ASSERT_EQ(MakeSpec("open.txt", &theSpec), noErr);
    EXPECT_EQ(FSpDelete(&theSpec), noErr);
    EXPECT_FALSE(folder.Exists("open.txt"));
    EXPECT_EQ(FSpDelete(&theSpec), fnfErr);
}

TEST_F(FileIO, FinderInfoRoundTripsThroughTheAttribute)
{
    ASSERT_EQ(HCreate(0, 0, Pascal(Classic("doc")), kTtxt, kTEXT), noErr);
    unsigned char raw[32] = {};
    ssize_t n = getxattr(folder.Posix("doc").c_str(), "user.com.apple.FinderInfo", raw, sizeof raw);
    if (n < 0) GTEST_SKIP() << "no extended attributes in /tmp";
    EXPECT_EQ(n, 32);
    EXPECT_EQ(memcmp(raw, "TEXTttxt", 8), 0);

    FInfo info;
    ASSERT_EQ(HGetFInfo(0, 0, Pascal(Classic("doc")), &info), noErr);
    EXPECT_EQ(info.fdType, kTEXT);
    EXPECT_EQ(info.fdCreator, kTtxt);
    info.fdType = FOUR_CHAR('R', 'P', 'F', ' ');
    info.fdFlags = 0x0100;
    ASSERT_EQ(HSetFInfo(0, 0, Pascal(Classic("doc")), &info), noErr);
    FSSpec theSpec;
    ASSERT_EQ(MakeSpec("doc", &theSpec), noErr);
    FInfo back;
    ASSERT_EQ(FSpGetFInfo(&theSpec, &back), noErr);
    EXPECT_EQ(back.fdType, FOUR_CHAR('R', 'P', 'F', ' '));
    EXPECT_EQ(back.fdCreator, kTtxt);
    EXPECT_EQ(back.fdFlags, 0x0100);
    ASSERT_EQ(getxattr(folder.Posix("doc").c_str(), "user.com.apple.FinderInfo", raw, sizeof raw), 32);
    EXPECT_EQ(raw[8], 0x01);
    EXPECT_EQ(raw[9], 0x00);

    /* The catalog shows the same; a file without the attribute reads as zero. */
    CInfoPBRec pb = {};
    pb.ioNamePtr = theSpec.name;
    pb.ioVRefNum = theSpec.vRefNum;
    pb.ioDirID = theSpec.parID;
    ASSERT_EQ(PBGetCatInfoSync(&pb), noErr);
    EXPECT_EQ(pb.finderInfo.fdType, FOUR_CHAR('R', 'P', 'F', ' '));
    folder.Write("plain", "");
    ASSERT_EQ(HGetFInfo(0, 0, Pascal(Classic("plain")), &info), noErr);
    EXPECT_EQ(info.fdType, 0u);
    EXPECT_EQ(info.fdCreator, 0u);
    ASSERT_EQ(mkdir(folder.Posix("Dir").c_str(), 0755), 0);
    EXPECT_EQ(HGetFInfo(0, 0, Pascal(Classic("Dir")), &info), fnfErr);
}

TEST_F(FileIO, LockedFilesRefuseWritingAndDeletion)
{
    folder.Write("locked.txt", "data");
    Pascal name(Classic("locked.txt"));
    ASSERT_EQ(HSetFLock(0, 0, name), noErr);
    struct stat st;
    ASSERT_EQ(stat(folder.Posix("locked.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0222, 0u);

    int16_t ref;
    EXPECT_EQ(HOpenDF(0, 0, name, fsRdWrPerm, &ref), permErr);
    EXPECT_EQ(HOpenDF(0, 0, name, fsWrPerm, &ref), permErr);
    ASSERT_EQ(HOpenDF(0, 0, name, fsCurPerm, &ref), noErr);   /* falls back to read-only */
    int32_t count = 1;
    EXPECT_EQ(FSWrite(ref, &count, "x"), wrPermErr);
    EXPECT_EQ(FSClose(ref), noErr);
    EXPECT_EQ(HDelete(0, 0, name), fLckdErr);
    FInfo info = {};
    info.fdType = kTEXT;
    EXPECT_EQ(HSetFInfo(0, 0, name, &info), noErr);      /* Finder info stays writable */

    ASSERT_EQ(HRstFLock(0, 0, name), noErr);
    ASSERT_EQ(stat(folder.Posix("locked.txt").c_str(), &st), 0);
    EXPECT_NE(st.st_mode & S_IWUSR, 0u);
    ASSERT_EQ(HOpenDF(0, 0, name, fsRdWrPerm, &ref), noErr);
    EXPECT_EQ(FSClose(ref), noErr);
    EXPECT_EQ(HDelete(0, 0, name), noErr);
    EXPECT_EQ(HSetFLock(0, 0, name), fnfErr);
}

TEST_F(FileIO, InjectedFaultsComeBeforeTheFileSystem)
{
    folder.Write("f", "abcdef");
    int16_t ref;
    ASSERT_EQ(Open("f", fsRdPerm, &ref), noErr);
    char buffer[8];

    /* Once: the second read fails, the others work. */
    PlatformFaultSet(kFaultFSRead, 2, ioErr, false);
    int32_t count = 2;
    EXPECT_EQ(FSRead(ref, &count, buffer), noErr);
    count = 2;
    EXPECT_EQ(FSRead(ref, &count, buffer), ioErr);
    EXPECT_EQ(count, 0);
    count = 2;
    EXPECT_EQ(FSRead(ref, &count, buffer), noErr);
    EXPECT_EQ(std::string(buffer, 2), "cd");   /* the failed read moved nothing */
    EXPECT_EQ(PlatformFaultHits(kFaultFSRead), 1);
    EXPECT_EQ(FSClose(ref), noErr);

    /* Persistent: every open from the first on fails until cleared. */
    PlatformFaultSet(kFaultHOpenDF, 1, permErr, true);
    EXPECT_EQ(Open("f", fsRdPerm, &ref), permErr);
    EXPECT_EQ(Open("f", fsRdPerm, &ref), permErr);
    EXPECT_EQ(PlatformFaultHits(kFaultHOpenDF), 2);
    FSSpec theSpec;
    ASSERT_EQ(MakeSpec("f", &theSpec), noErr);
    ASSERT_EQ(FSpOpenDF(&theSpec, fsRdPerm, &ref), noErr);   /* its own fault point */
    EXPECT_EQ(FSClose(ref), noErr);
    PlatformFaultClear(kFaultHOpenDF);
    ASSERT_EQ(Open("f", fsRdPerm, &ref), noErr);
    EXPECT_EQ(FSClose(ref), noErr);
}

TEST_F(FileIO, FindFolderUsesTheConfiguredFolders)
{
    std::string apps = folder.Posix("Apps");
    setenv("TPX1_APPLICATIONS_FOLDER", apps.c_str(), 1);
    int16_t vRefNum = 0;
    int32_t dirID = 0;
    EXPECT_EQ(FindFolder(kOnSystemDisk, kApplicationsFolderType, kDontCreateFolder, &vRefNum, &dirID), fnfErr);
    ASSERT_EQ(FindFolder(kOnSystemDisk, kApplicationsFolderType, kCreateFolder, &vRefNum, &dirID), noErr);
    EXPECT_TRUE(folder.Exists("Apps"));
    EXPECT_EQ(vRefNum, -1);
    FSSpec inside;
    ASSERT_EQ(MakeSpec("Apps:TOPOLUX", &inside), fnfErr);
    EXPECT_EQ(inside.parID, dirID);
    unsetenv("TPX1_APPLICATIONS_FOLDER");

    const char *savedTmp = getenv("TMPDIR");
    std::string saved = savedTmp ? savedTmp : "";
    setenv("TMPDIR", folder.Posix("Apps").c_str(), 1);
    int32_t tempID = 0;
    ASSERT_EQ(FindFolder(kOnSystemDisk, kTemporaryFolderType, kDontCreateFolder, &vRefNum, &tempID), noErr);
    EXPECT_EQ(tempID, dirID);
    if (savedTmp) setenv("TMPDIR", saved.c_str(), 1);
    else unsetenv("TMPDIR");
    EXPECT_EQ(FindFolder(kOnSystemDisk, FOUR_CHAR('x', 'x', 'x', 'x'), kCreateFolder, &vRefNum, &dirID), fnfErr);
}
