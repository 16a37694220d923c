/*
 * FileLinuxVolumes.cpp: the volumes of the file service. The root file system is the
 * volume "Linux" (or the name in TPX1_ROOT_VOLUME), reference number -1; a file system
 * mounted at /media/<user>/<name>, /run/media/<user>/<name> or /mnt/<name> is the volume
 * <name>, numbered -2, -3, ... in the order it was first seen. The mount table is read
 * from /proc/self/mountinfo again whenever the kernel says it changed.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <vector>

namespace {

const char kDefaultRootName[] = "Linux";
const char kProcMountInfo[] = "/proc/self/mountinfo";

std::vector<FileVolume> gVolumes;   /* [0] is the root volume */
std::string gRootSetting;           /* TPX1_ROOT_VOLUME as last seen */
bool gRootNameKnown = false;
std::string gMountInfoPath = kProcMountInfo;
int gMountInfoFd = -1;
bool gMountsRead = false;

std::string ReadWholeFile(int fd)
{
    std::string text;
    char chunk[8192];
    if (lseek(fd, 0, SEEK_SET) < 0) return text;
    for (;;) {
        ssize_t n = read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        text.append(chunk, (size_t)n);
    }
    return text;
}

/* Mount points in mountinfo escape blanks, tabs, newlines and backslashes as \ooo. */
std::string UnescapeMountField(const std::string &field)
{
    std::string out;
    for (size_t i = 0; i < field.size(); i++) {
        if (field[i] == '\\' && i + 3 < field.size() &&
            field[i + 1] >= '0' && field[i + 1] <= '3' && field[i + 2] >= '0' && field[i + 2] <= '7' &&
            field[i + 3] >= '0' && field[i + 3] <= '7') {
            out += (char)((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

/* The volume name of a mount point, or empty when the mount point makes no volume. */
std::string VolumeNameOfMountPoint(const std::string &mountPoint)
{
    std::vector<std::string> parts;
    size_t start = 1;
    while (start <= mountPoint.size()) {
        size_t slash = mountPoint.find('/', start);
        if (slash == std::string::npos) slash = mountPoint.size();
        if (slash > start) parts.push_back(mountPoint.substr(start, slash - start));
        start = slash + 1;
    }
    if (parts.size() == 2 && parts[0] == "mnt") return parts[1];
    if (parts.size() == 3 && parts[0] == "media") return parts[2];
    if (parts.size() == 4 && parts[0] == "run" && parts[1] == "media") return parts[3];
    return std::string();
}

void NoteMountPoint(const std::string &mountPoint, std::vector<bool> *seen)
{
    std::string posixName = VolumeNameOfMountPoint(mountPoint);
    if (posixName.empty()) return;
    for (size_t i = 1; i < gVolumes.size(); i++) {
        if (gVolumes[i].mountPoint == mountPoint) {
            (*seen)[i] = true;
            return;
        }
    }
    FileVolume volume;
    volume.vRefNum = (int16_t)(-1 - (int)gVolumes.size());
    volume.representable = POSIXNameToClassic(posixName.data(), posixName.size(), &volume.name);
    volume.mountPoint = mountPoint;
    volume.present = true;
    gVolumes.push_back(volume);
    seen->push_back(true);
}

void ParseMountInfo(const std::string &text)
{
    std::vector<bool> seen(gVolumes.size(), false);
    size_t lineStart = 0;
    while (lineStart < text.size()) {
        size_t lineEnd = text.find('\n', lineStart);
        if (lineEnd == std::string::npos) lineEnd = text.size();
        /* Fields: id, parent id, major:minor, root, mount point, ... */
        size_t p = lineStart;
        std::string field;
        for (int i = 0; i < 5 && p < lineEnd; i++) {
            size_t blank = text.find(' ', p);
            if (blank == std::string::npos || blank > lineEnd) blank = lineEnd;
            field = text.substr(p, blank - p);
            p = blank + 1;
            if (i == 4) NoteMountPoint(UnescapeMountField(field), &seen);
        }
        lineStart = lineEnd + 1;
    }
    for (size_t i = 1; i < gVolumes.size(); i++) gVolumes[i].present = seen[i];
}

void RefreshRootName()
{
    const char *setting = PlatformSetting("TPX1_ROOT_VOLUME");
    std::string wanted = (setting && *setting) ? setting : kDefaultRootName;
    if (gRootNameKnown && wanted == gRootSetting) return;
    gRootSetting = wanted;
    gRootNameKnown = true;
    gVolumes[0].representable = POSIXNameToClassic(wanted.data(), wanted.size(), &gVolumes[0].name);
}

void RefreshMounts()
{
    if (gMountInfoFd < 0) {
        if (gMountsRead) return;   /* the table could not be opened: only the root volume */
        gMountInfoFd = open(gMountInfoPath.c_str(), O_RDONLY | O_CLOEXEC);
        gMountsRead = true;
        if (gMountInfoFd < 0) return;
        ParseMountInfo(ReadWholeFile(gMountInfoFd));
        return;
    }
    if (gMountInfoPath != kProcMountInfo) return;
    struct pollfd watch = {gMountInfoFd, POLLPRI, 0};
    if (poll(&watch, 1, 0) > 0 && (watch.revents & (POLLPRI | POLLERR)))
        ParseMountInfo(ReadWholeFile(gMountInfoFd));
}

void RefreshVolumes()
{
    if (gVolumes.empty()) {
        FileVolume root;
        root.vRefNum = -1;
        root.mountPoint = "/";
        root.present = true;
        root.representable = true;
        gVolumes.push_back(root);
        gRootNameKnown = false;
    }
    RefreshRootName();
    RefreshMounts();
}

bool IsUnder(const std::string &path, const std::string &mountPoint)
{
    if (mountPoint == "/") return true;
    return path.size() >= mountPoint.size() && path.compare(0, mountPoint.size(), mountPoint) == 0 &&
           (path.size() == mountPoint.size() || path[mountPoint.size()] == '/');
}

} // namespace

const FileVolume *FindVolumeByName(const unsigned char *name, size_t length)
{
    RefreshVolumes();
    for (const FileVolume &volume : gVolumes)
        if (volume.present && volume.representable && SameClassicNameIgnoringCase(name, length, volume.name))
            return &volume;
    return nullptr;
}

const FileVolume *FindVolumeByRefNum(int16_t vRefNum)
{
    RefreshVolumes();
    if (vRefNum == 0) return &gVolumes[0];
    int index = -1 - vRefNum;
    if (index < 0 || index >= (int)gVolumes.size() || !gVolumes[index].present) return nullptr;
    return &gVolumes[index];
}

const FileVolume *VolumeOfPOSIXPath(const std::string &normalPath)
{
    RefreshVolumes();
    const FileVolume *best = &gVolumes[0];
    for (size_t i = 1; i < gVolumes.size(); i++) {
        const FileVolume &volume = gVolumes[i];
        if (volume.present && IsUnder(normalPath, volume.mountPoint) &&
            volume.mountPoint.size() > best->mountPoint.size())
            best = &volume;
    }
    return best;
}

void ResetVolumes(void)
{
    gVolumes.clear();
    gRootSetting.clear();
    gRootNameKnown = false;
    if (gMountInfoFd >= 0) close(gMountInfoFd);
    gMountInfoFd = -1;
    gMountsRead = false;
}

void UseMountInfoFile(const char *posixPath)
{
    ResetVolumes();
    gMountInfoPath = posixPath ? posixPath : kProcMountInfo;
}

extern "C" void PlatformFilesUseMountInfo(const char *posixPath)
{
    UseMountInfoFile(posixPath);
}
