/*
 * FileTestFolder.cpp: the fixture of the file service tests (see FileTestFolder.h).
 */
#include "FileTestFolder.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

Pascal::Pascal(const std::string &s)
{
    size_t n = s.size() > 255 ? 255 : s.size();
    text[0] = (unsigned char)n;
    memcpy(text + 1, s.data(), n);
}

std::string FromPascal(const unsigned char *p)
{
    return std::string((const char *)p + 1, p[0]);
}

namespace {

int RemoveItem(const char *path, const struct stat *, int type, struct FTW *)
{
    chmod(path, type == FTW_DP ? 0700 : 0600);
    return remove(path);
}

} // namespace

void FileTestFolder::SetUp()
{
    unsetenv("TPX1_ROOT_VOLUME");
    PlatformFilesUseMountInfo(nullptr);
    PlatformFilesReset();
    PlatformFaultClearAll();
    char templ[] = "/tmp/tpx1filesXXXXXX";
    ASSERT_NE(mkdtemp(templ), nullptr);
    folder_ = templ;
    classicFolder_ = "Linux:tmp:" + folder_.substr(5) + ":";
}

void FileTestFolder::TearDown()
{
    PlatformFilesReset();
    PlatformFaultClearAll();
    PlatformFilesUseMountInfo(nullptr);
    unsetenv("TPX1_ROOT_VOLUME");
    if (!folder_.empty()) nftw(folder_.c_str(), RemoveItem, 16, FTW_DEPTH | FTW_PHYS);
}

std::string FileTestFolder::Posix(const std::string &relative) const
{
    return relative.empty() ? folder_ : folder_ + "/" + relative;
}

std::string FileTestFolder::Classic(const std::string &classicRelative) const
{
    return classicFolder_ + classicRelative;
}

void FileTestFolder::WritePosixFile(const std::string &relative, const std::string &content) const
{
    int fd = open(Posix(relative).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0) << relative;
    ASSERT_EQ(write(fd, content.data(), content.size()), (ssize_t)content.size());
    close(fd);
}

std::string FileTestFolder::ReadPosixFile(const std::string &relative) const
{
    std::string content;
    int fd = open(Posix(relative).c_str(), O_RDONLY);
    if (fd < 0) return "<missing>";
    char buffer[4096];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof buffer)) > 0) content.append(buffer, n);
    close(fd);
    return content;
}

bool FileTestFolder::PosixExists(const std::string &relative) const
{
    struct stat st;
    return lstat(Posix(relative).c_str(), &st) == 0;
}

OSErr FileTestFolder::MakeSpec(const std::string &classicRelative, FSSpec *theSpec) const
{
    return FSMakeFSSpec(0, 0, Pascal(Classic(classicRelative)), theSpec);
}
