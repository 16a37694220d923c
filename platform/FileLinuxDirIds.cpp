/*
 * FileLinuxDirIds.cpp: directory ids. A folder gets a 32-bit id the first time the
 * service names it, kept in a table both ways (id <-> POSIX path) for the life of the
 * process; the root of every volume is 2 and its parent 1, so ids are unique across
 * volumes except for those two.
 */
#include "platform/FileLinux.h"

#include <unordered_map>
#include <vector>

namespace {

const int32_t kFirstDirId = 16;   /* ids below 16 are reserved, as on the Mac */

std::unordered_map<std::string, int32_t> gIdOfFolder;
std::vector<std::string> gFolderOfId;   /* index: id - kFirstDirId */

} // namespace

void DirIdOfFolder(const std::string &folder, int16_t *vRefNum, int32_t *dirID)
{
    const FileVolume *volume = VolumeOfPOSIXPath(folder);
    *vRefNum = volume->vRefNum;
    if (folder == volume->mountPoint) {
        *dirID = fsRtDirID;
        return;
    }
    auto found = gIdOfFolder.find(folder);
    if (found != gIdOfFolder.end()) {
        *dirID = found->second;
        return;
    }
    int32_t id = kFirstDirId + (int32_t)gFolderOfId.size();
    gFolderOfId.push_back(folder);
    gIdOfFolder.emplace(folder, id);
    *dirID = id;
}

OSErr FolderOfDirId(int16_t vRefNum, int32_t dirID, std::string *folder)
{
    if (dirID == 0 || dirID == fsRtDirID) {
        const FileVolume *volume = FindVolumeByRefNum(vRefNum);
        if (!volume) return nsvErr;
        *folder = volume->mountPoint;
        return noErr;
    }
    if (vRefNum != 0 && !FindVolumeByRefNum(vRefNum)) return nsvErr;
    if (dirID < kFirstDirId || dirID - kFirstDirId >= (int32_t)gFolderOfId.size()) return dirNFErr;
    const std::string &path = gFolderOfId[dirID - kFirstDirId];
    if (vRefNum != 0 && VolumeOfPOSIXPath(path)->vRefNum != vRefNum) return dirNFErr;
    *folder = path;
    return noErr;
}

void ResetDirIds(void)
{
    gIdOfFolder.clear();
    gFolderOfId.clear();
}
