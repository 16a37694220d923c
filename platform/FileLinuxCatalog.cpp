/*
 * FileLinuxCatalog.cpp: the catalog. A folder's items are seen in catalog order, by
 * classic name upper-cased in Mac Roman with ties broken bytewise, the same on every
 * machine. The sorted listing of the last few folders is kept, so that a walk by index
 * sorts once; a listing is read again when its folder's modification time changes or
 * when the service itself created or deleted an item in it. A listing read within a
 * moment of its folder's last change is not trusted, since a change in the same tick of
 * the file system's clock would leave the time as it was.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <time.h>
#include <vector>

namespace {

struct CatalogEntry {
    std::string posixName;
    std::string classicName;   /* '?' for characters without a Mac Roman form */
    bool representable;
};

struct FolderListing {
    bool valid = false;
    std::string folder;
    dev_t dev = 0;
    ino_t ino = 0;
    struct timespec mtime = {0, 0};
    bool settled = false;      /* read well after mtime: a later change moves mtime */
    uint64_t lastUse = 0;
    std::vector<CatalogEntry> entries;
};

enum { kListingSlots = 8 };
const int64_t kSettleNanoseconds = 20 * 1000 * 1000;   /* above any file system clock tick */
FolderListing gListings[kListingSlots];
uint64_t gListingUses = 0;

bool InCatalogOrder(const CatalogEntry &a, const CatalogEntry &b)
{
    int order = CompareClassicNames(a.classicName, b.classicName);
    if (order != 0) return order < 0;
    return a.posixName < b.posixName;
}

OSErr ReadListing(const std::string &folder, FolderListing *listing)
{
    DIR *dir = opendir(folder.c_str());
    if (!dir) return errno == ENOENT || errno == ENOTDIR ? (OSErr)dirNFErr : PlatformErrnoToOSErr(errno);
    listing->entries.clear();
    while (struct dirent *entry = readdir(dir)) {
        const char *name = entry->d_name;
        if (strcmp(name, ".") == 0 || strcmp(name, "..") == 0) continue;
        CatalogEntry item;
        item.posixName = name;
        item.representable = POSIXNameToClassic(name, strlen(name), &item.classicName);
        listing->entries.push_back(std::move(item));
    }
    closedir(dir);
    std::sort(listing->entries.begin(), listing->entries.end(), InCatalogOrder);
    return noErr;
}

bool SameTime(const struct timespec &a, const struct timespec &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

int64_t Nanoseconds(const struct timespec &t)
{
    return (int64_t)t.tv_sec * 1000000000 + t.tv_nsec;
}

/* The sorted listing of folder, from the cache when it still holds. The pointer stays
 * good until the next call. */
OSErr GetFolderListing(const std::string &folder, const FolderListing **out)
{
    struct stat st;
    OSErr err = StatFolder(folder, &st);
    if (err != noErr) return err;
    FolderListing *slot = nullptr;
    for (FolderListing &listing : gListings) {
        if (listing.valid && listing.folder == folder) {
            slot = &listing;
            break;
        }
    }
    if (slot && slot->settled && slot->dev == st.st_dev && slot->ino == st.st_ino &&
        SameTime(slot->mtime, st.st_mtim)) {
        slot->lastUse = ++gListingUses;
        *out = slot;
        return noErr;
    }
    if (!slot) {
        slot = &gListings[0];
        for (FolderListing &listing : gListings) {
            if (!listing.valid) {
                slot = &listing;
                break;
            }
            if (listing.lastUse < slot->lastUse) slot = &listing;
        }
    }
    slot->valid = false;
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    err = ReadListing(folder, slot);
    if (err != noErr) return err;
    slot->valid = true;
    slot->folder = folder;
    slot->dev = st.st_dev;
    slot->ino = st.st_ino;
    slot->mtime = st.st_mtim;
    slot->settled = Nanoseconds(now) - Nanoseconds(st.st_mtim) >= kSettleNanoseconds;
    slot->lastUse = ++gListingUses;
    *out = slot;
    return noErr;
}

/* Fills the catalog record of an existing item (not its name). */
void DescribeItem(CInfoPBRec *pb, const std::string &path, const struct stat &st, int32_t parID)
{
    memset(&pb->finderInfo, 0, sizeof pb->finderInfo);
    pb->ioFlLgLen = 0;
    pb->isFolder = S_ISDIR(st.st_mode) ? 1 : 0;
    if (pb->isFolder) {
        int16_t vRefNum;
        std::string name;
        DescribeFolder(path, &vRefNum, &pb->ioDirID, &pb->ioDrParID, &name);
        return;
    }
    pb->ioDrParID = parID;
    ReadFinderInfo(path, &pb->finderInfo);
    pb->ioFlLgLen = st.st_size > INT32_MAX ? INT32_MAX : (int32_t)st.st_size;
}

OSErr GetIndexedItem(CInfoPBRec *pb)
{
    std::string folder;
    OSErr err = FolderOfDirId(pb->ioVRefNum, pb->ioDirID, &folder);
    if (err != noErr) return err;
    const FolderListing *listing;
    err = GetFolderListing(folder, &listing);
    if (err != noErr) return err;
    if ((size_t)pb->ioFDirIndex > listing->entries.size()) return fnfErr;
    const CatalogEntry &entry = listing->entries[pb->ioFDirIndex - 1];
    std::string path = JoinPOSIX(folder, entry.posixName);
    struct stat st;
    if (stat(path.c_str(), &st) != 0 && lstat(path.c_str(), &st) != 0) return PlatformErrnoToOSErr(errno);
    if (pb->ioNamePtr) SetPascalName(pb->ioNamePtr, entry.classicName);
    int16_t vRefNum;
    int32_t folderID;
    DirIdOfFolder(folder, &vRefNum, &folderID);
    DescribeItem(pb, path, st, folderID);
    return noErr;
}

OSErr GetFolderItself(CInfoPBRec *pb, bool giveName)
{
    std::string folder;
    OSErr err = FolderOfDirId(pb->ioVRefNum, pb->ioDirID, &folder);
    if (err != noErr) return err;
    struct stat st;
    err = StatFolder(folder, &st);
    if (err != noErr) return err;
    int16_t vRefNum;
    std::string name;
    DescribeFolder(folder, &vRefNum, &pb->ioDirID, &pb->ioDrParID, &name);
    pb->isFolder = 1;
    memset(&pb->finderInfo, 0, sizeof pb->finderInfo);
    pb->ioFlLgLen = 0;
    if (giveName && pb->ioNamePtr) SetPascalName(pb->ioNamePtr, name);
    return noErr;
}

OSErr GetNamedItem(CInfoPBRec *pb)
{
    FileItem item;
    OSErr err = ResolvePascalItem(pb->ioVRefNum, pb->ioDirID, pb->ioNamePtr, &item);
    if (err != noErr) return err;
    int32_t parID = fsRtParID;
    if (!item.parent.empty()) {
        int16_t vRefNum;
        DirIdOfFolder(item.parent, &vRefNum, &parID);
    }
    DescribeItem(pb, item.path, item.st, parID);
    return noErr;
}

} // namespace

bool FindCatalogName(const std::string &folder, const unsigned char *name, size_t length, std::string *posixName)
{
    const FolderListing *listing;
    if (GetFolderListing(folder, &listing) != noErr) return false;
    for (const CatalogEntry &entry : listing->entries) {
        if (entry.representable && entry.classicName.size() == length &&
            memcmp(entry.classicName.data(), name, length) == 0) {
            *posixName = entry.posixName;
            return true;
        }
    }
    return false;
}

void ForgetCatalogListing(const std::string &folder)
{
    for (FolderListing &listing : gListings)
        if (listing.valid && listing.folder == folder) listing.valid = false;
}

void ForgetAllCatalogListings(void)
{
    for (FolderListing &listing : gListings) {
        listing.valid = false;
        listing.entries.clear();
    }
    gListingUses = 0;
}

OSErr LinuxGetCatInfo(CInfoPBRec *pb)
{
    if (!pb) return paramErr;
    if (pb->ioFDirIndex > 0) return GetIndexedItem(pb);
    if (pb->ioFDirIndex < 0) return GetFolderItself(pb, true);
    if (!pb->ioNamePtr || pb->ioNamePtr[0] == 0) return GetFolderItself(pb, false);
    return GetNamedItem(pb);
}
