/*
 * test_file_catalog.cpp: walking a folder by index: catalog order (case-insensitive in
 * Mac Roman, accented letters after Z, ties bytewise), '?' for names without a Mac Roman
 * form, fnfErr past the end, and listings that follow creations and deletions.
 */
#include "FileTestFolder.h"

#include <sys/stat.h>
#include <vector>

namespace {

struct Walked {
    std::string name;
    bool isFolder;
    int32_t length;
};

/* Walks folder dirID by index until the catalog says there is no more. */
std::vector<Walked> WalkFolder(int16_t vRefNum, int32_t dirID, OSErr *end)
{
    std::vector<Walked> items;
    for (int16_t index = 1;; index++) {
        Str255 name;
        CInfoPBRec pb = {};
        pb.ioNamePtr = name;
        pb.ioVRefNum = vRefNum;
        pb.ioDirID = dirID;
        pb.ioFDirIndex = index;
        OSErr err = PBGetCatInfoSync(&pb);
        if (err != noErr) {
            *end = err;
            return items;
        }
        items.push_back({FromPascal(name), pb.isFolder != 0, pb.ioFlLgLen});
    }
}

std::vector<std::string> Names(const std::vector<Walked> &items)
{
    std::vector<std::string> names;
    for (const Walked &item : items) names.push_back(item.name);
    return names;
}

} // namespace

class FileCatalog : public FileTestFolder {
protected:
    void SetUp() override
    {
        FileTestFolder::SetUp();
        FSSpec theSpec;
        ASSERT_EQ(MakeSpec("probe", &theSpec), fnfErr);
        vRefNum_ = theSpec.vRefNum;
        dirID_ = theSpec.parID;
    }
    int16_t vRefNum_ = 0;
    int32_t dirID_ = 0;
};

TEST_F(FileCatalog, WalkSeesItemsInCatalogOrder)
{
    for (const char *name : {"b.txt", "a.txt", "A.txt", "Zed", "_x", "\xC3\x89" "clair", "\xC3\xA9" "a", "\xD0\xB6.txt"})
        folder.Write(name, "12345");
    ASSERT_EQ(mkdir(folder.Posix("Middle").c_str(), 0755), 0);

    OSErr end = noErr;
    std::vector<Walked> items = WalkFolder(vRefNum_, dirID_, &end);
    EXPECT_EQ(end, fnfErr);
    std::vector<std::string> expected = {"?.txt", "A.txt", "a.txt", "b.txt", "Middle",
                                         "Zed", "_x", "\x8E" "a", "\x83" "clair"};
    EXPECT_EQ(Names(items), expected);
    ASSERT_EQ(items.size(), expected.size());
    EXPECT_TRUE(items[4].isFolder);
    EXPECT_FALSE(items[3].isFolder);
    EXPECT_EQ(items[3].length, 5);

    /* The entry of a folder carries its own id and the listed folder as parent. */
    Str255 name;
    CInfoPBRec pb = {};
    pb.ioNamePtr = name;
    pb.ioVRefNum = vRefNum_;
    pb.ioDirID = dirID_;
    pb.ioFDirIndex = 5;
    ASSERT_EQ(PBGetCatInfoSync(&pb), noErr);
    EXPECT_EQ(pb.ioDrParID, dirID_);
    FSSpec inside;
    ASSERT_EQ(MakeSpec("Middle:x", &inside), fnfErr);
    EXPECT_EQ(pb.ioDirID, inside.parID);

    /* An empty folder ends at once; a missing folder id is dirNFErr. */
    std::vector<Walked> none = WalkFolder(vRefNum_, inside.parID, &end);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(end, fnfErr);
    WalkFolder(vRefNum_, 99999999, &end);
    EXPECT_EQ(end, dirNFErr);
}

TEST_F(FileCatalog, ListingFollowsChangesInsideAndOutsideTheService)
{
    folder.Write("m.txt", "");
    OSErr end;
    EXPECT_EQ(Names(WalkFolder(vRefNum_, dirID_, &end)), std::vector<std::string>({"m.txt"}));

    ASSERT_EQ(HCreate(vRefNum_, dirID_, Pascal("c.txt"), 0, 0), noErr);
    EXPECT_EQ(Names(WalkFolder(vRefNum_, dirID_, &end)), std::vector<std::string>({"c.txt", "m.txt"}));

    folder.Write("Z.txt", "");   /* behind the service's back */
    EXPECT_EQ(Names(WalkFolder(vRefNum_, dirID_, &end)), std::vector<std::string>({"c.txt", "m.txt", "Z.txt"}));

    ASSERT_EQ(HDelete(vRefNum_, dirID_, Pascal("m.txt")), noErr);
    EXPECT_EQ(Names(WalkFolder(vRefNum_, dirID_, &end)), std::vector<std::string>({"c.txt", "Z.txt"}));

    /* Index 0 looks an item up by name; a missing one is fnfErr. */
    CInfoPBRec pb = {};
    Pascal zed("Z.txt");
    pb.ioNamePtr = zed.text;
    pb.ioVRefNum = vRefNum_;
    pb.ioDirID = dirID_;
    ASSERT_EQ(PBGetCatInfoSync(&pb), noErr);
    EXPECT_FALSE(pb.isFolder);
    EXPECT_EQ(pb.ioDrParID, dirID_);
    Pascal gone("m.txt");
    pb.ioNamePtr = gone.text;
    EXPECT_EQ(PBGetCatInfoSync(&pb), fnfErr);
}
