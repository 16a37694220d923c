/*
 * FileTestFolder.h: the fixture of the file service tests: a fresh folder made with
 * mkdtemp under /tmp, its classic path on the root volume "Linux", and small helpers
 * for Pascal strings and POSIX files.
 */
#ifndef TPX1_TESTS_FILETESTFOLDER_H
#define TPX1_TESTS_FILETESTFOLDER_H

#include "platform/Faults.h"
#include "platform/FileService.h"
#include "platform/Files.h"

#include <gtest/gtest.h>
#include <string>

/* A Pascal string from a C++ string (Mac Roman bytes). */
struct Pascal {
    Str255 text;
    explicit Pascal(const std::string &s);
    operator ConstStr255Param() const { return text; }
};

std::string FromPascal(const unsigned char *p);

class FileTestFolder : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /* POSIX and classic paths of an item of the test folder ("" for the folder). */
    std::string Posix(const std::string &relative) const;
    std::string Classic(const std::string &classicRelative) const;
    void WritePosixFile(const std::string &relative, const std::string &content) const;
    std::string ReadPosixFile(const std::string &relative) const;
    bool PosixExists(const std::string &relative) const;
    /* The FSSpec of an item named by a classic path relative to the test folder. */
    OSErr MakeSpec(const std::string &classicRelative, FSSpec *theSpec) const;

    std::string folder_;          /* POSIX, no trailing slash */
    std::string classicFolder_;   /* "Linux:tmp:tpx1files...:" */
};

#endif
