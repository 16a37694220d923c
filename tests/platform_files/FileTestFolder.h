/*
 * FileTestFolder.h: the fixture of the file service tests: the service as at load (root
 * volume "Linux", the real mount table, no faults) around a private test folder, classic
 * paths inside it, and Pascal strings.
 */
#ifndef TPX1_TESTS_FILETESTFOLDER_H
#define TPX1_TESTS_FILETESTFOLDER_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/Faults.h"
#include "platform/FileService.h"
#include "platform/Files.h"
#include "tests/common/TestFolder.h"

/* A Pascal string from a C++ string (Mac Roman bytes), and back. */
struct Pascal {
    Str255 text;
    explicit Pascal(const std::string &s)
    {
        text[0] = (unsigned char)(s.size() > 255 ? 255 : s.size());
        memcpy(text + 1, s.data(), text[0]);
    }
    operator ConstStr255Param() const { return text; }
};

inline std::string FromPascal(const unsigned char *p)
{
    return std::string((const char *)p + 1, p[0]);
}

class FileTestFolder : public ::testing::Test {
protected:
    void SetUp() override { Restore(); }
    void TearDown() override { Restore(); }
    static void Restore()
    {
        unsetenv("TPX1_ROOT_VOLUME");
        PlatformFilesUseMountInfo(nullptr);
        PlatformFilesReset();
        PlatformFaultClearAll();
    }
    /* A classic path relative to the test folder, taken as it is ('/' is part of a name). */
    std::string Classic(const std::string &classicRelative) const { return folder.Classic() + ":" + classicRelative; }
    OSErr MakeSpec(const std::string &classicRelative, FSSpec *theSpec) const
    {
        return FSMakeFSSpec(0, 0, Pascal(Classic(classicRelative)), theSpec);
    }

    TestFolder folder;
};

#endif
