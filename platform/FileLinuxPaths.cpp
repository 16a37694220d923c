/*
 * FileLinuxPaths.cpp: classic paths and the POSIX items they name. Resolves a
 * (volume, directory id, name) triple or a full classic path step by step against the
 * file system, makes FSSpecs, and converts full paths both ways (a POSIX path outside
 * every named volume belongs to the root volume; a trailing '/' is a trailing ':').
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace {

bool HasHighBytes(const unsigned char *name, size_t length)
{
    for (size_t i = 0; i < length; i++)
        if (name[i] >= 0x80) return true;
    return false;
}

/* The item is the folder dir itself (a path that ended at a folder or went up). */
OSErr FinishAtFolder(const std::string &dir, OSErr status, FileItem *item)
{
    item->path = dir;
    const FileVolume *volume = VolumeOfPOSIXPath(dir);
    if (dir == volume->mountPoint) {
        item->parent.clear();
        item->name = volume->name;
    } else {
        item->parent = ParentOfPOSIX(dir);
        std::string last = LastComponentOfPOSIX(dir);
        POSIXNameToClassic(last.data(), last.size(), &item->name);
    }
    if (status != noErr) return status;
    OSErr err = StatFolder(dir, &item->st);
    item->exists = err == noErr;
    return err;
}

/* Looks up one component of a walk: stat of folder/name, and for a name with accented
 * letters that is not there under its converted form, the folder's catalog. */
OSErr LookUpComponent(const std::string &dir, const unsigned char *part, size_t length,
                      const std::string &posixName, std::string *child, struct stat *st, bool *exists)
{
    *child = JoinPOSIX(dir, posixName);
    *exists = false;
    if (stat(child->c_str(), st) == 0) {
        *exists = true;
        return noErr;
    }
    if (errno != ENOENT && errno != ENOTDIR) return PlatformErrnoToOSErr(errno);
    std::string realName;
    if (HasHighBytes(part, length) && FindCatalogName(dir, part, length, &realName)) {
        *child = JoinPOSIX(dir, realName);
        *exists = stat(child->c_str(), st) == 0;
    }
    return noErr;
}

} // namespace

OSErr StatFolder(const std::string &folder, struct stat *st)
{
    if (stat(folder.c_str(), st) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return dirNFErr;
        return PlatformErrnoToOSErr(errno);
    }
    return S_ISDIR(st->st_mode) ? noErr : dirNFErr;
}

OSErr ResolveItem(int16_t vRefNum, int32_t dirID, const unsigned char *name, size_t length, FileItem *item)
{
    *item = FileItem();
    memset(&item->st, 0, sizeof item->st);
    static const unsigned char kEmpty[1] = {0};
    if (!name) name = kEmpty, length = 0;

    std::string dir, floor;
    size_t pos;
    const unsigned char *colon = length ? (const unsigned char *)memchr(name, ':', length) : nullptr;
    if ((colon && name[0] != ':') || (dirID == fsRtParID && length > 0)) {
        /* A full path: the volume's name up to the first colon. */
        size_t nameLength = colon ? (size_t)(colon - name) : length;
        if (nameLength == 0) return bdNamErr;
        const FileVolume *volume = FindVolumeByName(name, nameLength);
        if (!volume) return nsvErr;
        dir = floor = volume->mountPoint;
        pos = colon ? nameLength + 1 : length;
    } else {
        if (length == 0 && ((vRefNum == 0 && dirID == 0) || dirID == fsRtParID)) return bdNamErr;
        OSErr err = FolderOfDirId(vRefNum, dirID, &dir);
        if (err != noErr) return err;
        struct stat st;
        err = StatFolder(dir, &st);
        if (err != noErr) return err;
        floor = VolumeOfPOSIXPath(dir)->mountPoint;
        pos = (length > 0 && name[0] == ':') ? 1 : 0;
    }
    if (pos >= length) return FinishAtFolder(dir, noErr, item);

    /* Components between colons; an empty one goes up a level, a final colon says
     * that the path names a folder. */
    std::vector<std::pair<size_t, size_t>> parts;
    for (size_t p = pos;;) {
        const unsigned char *next = (const unsigned char *)memchr(name + p, ':', length - p);
        size_t end = next ? (size_t)(next - name) : length;
        parts.emplace_back(p, end - p);
        if (!next) break;
        p = end + 1;
    }
    if (parts.size() > 1 && parts.back().second == 0) {
        item->trailingColon = true;
        parts.pop_back();
    }

    OSErr status = noErr;   /* dirNFErr once a folder on the way is missing */
    for (size_t i = 0; i < parts.size(); i++) {
        bool last = i + 1 == parts.size();
        const unsigned char *part = name + parts[i].first;
        size_t partLength = parts[i].second;
        if (partLength == 0) {
            if (dir == floor) return bdNamErr;
            dir = ParentOfPOSIX(dir);
            if (last) return FinishAtFolder(dir, status, item);
            continue;
        }
        std::string posixName, child;
        if (!ClassicNameToPOSIX(part, partLength, &posixName)) return bdNamErr;
        struct stat st;
        bool exists = false;
        if (status == noErr) {
            OSErr err = LookUpComponent(dir, part, partLength, posixName, &child, &st, &exists);
            if (err != noErr) return err;
        } else {
            child = JoinPOSIX(dir, posixName);
        }
        if (!last) {
            if (status == noErr && (!exists || !S_ISDIR(st.st_mode))) status = dirNFErr;
            dir = child;
            continue;
        }
        item->parent = dir;
        item->path = child;
        item->name.assign((const char *)part, partLength);
        item->exists = exists;
        if (exists) item->st = st;
        if (status != noErr) return status;
        if (!exists) return fnfErr;
        if (item->trailingColon && !S_ISDIR(st.st_mode)) return dirNFErr;
        return noErr;
    }
    return status;
}

OSErr ResolvePascalItem(int16_t vRefNum, int32_t dirID, ConstStr255Param name, FileItem *item)
{
    return ResolveItem(vRefNum, dirID, name ? name + 1 : nullptr, name ? name[0] : 0, item);
}

void SpecOfItem(const FileItem &item, FSSpec *theSpec)
{
    if (item.parent.empty()) {
        theSpec->vRefNum = VolumeOfPOSIXPath(item.path)->vRefNum;
        theSpec->parID = fsRtParID;
    } else {
        DirIdOfFolder(item.parent, &theSpec->vRefNum, &theSpec->parID);
    }
    SetPascalName(theSpec->name, item.name);
}

void DescribeFolder(const std::string &folder, int16_t *vRefNum, int32_t *dirID, int32_t *parID,
                    std::string *name)
{
    DirIdOfFolder(folder, vRefNum, dirID);
    if (*dirID == fsRtDirID) {
        *parID = fsRtParID;
        *name = VolumeOfPOSIXPath(folder)->name;
        return;
    }
    int16_t parentVRefNum;
    DirIdOfFolder(ParentOfPOSIX(folder), &parentVRefNum, parID);
    std::string last = LastComponentOfPOSIX(folder);
    POSIXNameToClassic(last.data(), last.size(), name);
}

OSErr CopyOut(const std::string &text, char *out, int32_t outSize)
{
    if (outSize < 1 || text.size() + 1 > (size_t)outSize) return paramErr;
    memcpy(out, text.c_str(), text.size() + 1);
    return noErr;
}

OSErr LinuxMakeFSSpec(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec)
{
    if (!theSpec) return paramErr;
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err == noErr || err == fnfErr) SpecOfItem(item, theSpec);
    return err;
}

OSErr LinuxSpecToPOSIX(const FSSpec *theSpec, char *out, int32_t outSize)
{
    if (!theSpec || !out) return paramErr;
    FileItem item;
    OSErr err = ResolvePascalItem(theSpec->vRefNum, theSpec->parID, theSpec->name, &item);
    if (err != noErr && err != fnfErr) return err;
    OSErr copied = CopyOut(item.path, out, outSize);
    return copied != noErr ? copied : err;
}

OSErr LinuxClassicToPOSIX(const char *classicPath, char *out, int32_t outSize)
{
    if (!classicPath || !out) return paramErr;
    std::string classic = classicPath;
    if (classic.empty() || classic[0] == ':') return bdNamErr;
    if (classic.find(':') == std::string::npos) classic += ':';   /* a volume's name */
    FileItem item;
    OSErr err = ResolveItem(0, 0, (const unsigned char *)classic.data(), classic.size(), &item);
    if (err != noErr && err != fnfErr && err != dirNFErr) return err;
    std::string posix = item.path;
    if (classic.back() == ':' && posix != "/") posix += '/';
    return CopyOut(posix, out, outSize);
}

OSErr LinuxPOSIXToClassic(const char *posixPath, char *out, int32_t outSize)
{
    if (!posixPath || !out) return paramErr;
    std::string normal;
    bool trailingSlash = false;
    if (!NormalizePOSIX(posixPath, &normal, &trailingSlash)) return bdNamErr;
    const FileVolume *volume = VolumeOfPOSIXPath(normal);
    if (!volume->representable) return bdNamErr;
    std::string classic = volume->name + ":";
    size_t skip = volume->mountPoint == "/" ? 1 : volume->mountPoint.size() + 1;
    std::string rest = skip < normal.size() ? normal.substr(skip) : std::string();
    size_t start = 0;
    while (start < rest.size()) {
        size_t slash = rest.find('/', start);
        if (slash == std::string::npos) slash = rest.size();
        std::string component;
        if (!POSIXNameToClassic(rest.data() + start, slash - start, &component)) return bdNamErr;
        if (start > 0) classic += ':';
        classic += component;
        start = slash + 1;
    }
    if (trailingSlash && !rest.empty()) classic += ':';
    return CopyOut(classic, out, outSize);
}
