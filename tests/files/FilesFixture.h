/*
 * FilesFixture.h: the test fixture of the files tests: a temporary folder holding a
 * fake host application (TPX1_APP_PATH), a host call block, the reserved application
 * globals, recorded dialogs, and helpers to make files and call external functions.
 */
#ifndef TPX1_TESTS_FILESFIXTURE_H
#define TPX1_TESTS_FILESFIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/ExternalIds.h"
#include "platform/Files.h"
#include "text/FMXExtern.h"

/* True when one of the texts contains part. */
inline bool Contains(const std::vector<std::string> &texts, const std::string &part)
{
    for (const auto &t : texts)
        if (t.find(part) != std::string::npos)
            return true;
    return false;
}

class FilesTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /* POSIX path of a name inside the temporary folder. */
    std::string Posix(const std::string &relative) const { return root_ + "/" + relative; }
    /* Classic path of a name inside the temporary folder ("Linux:tmp:x:" + relative with
     * "/" turned into ":"). */
    std::string Classic(const std::string &relative) const;
    std::string ClassicRoot() const { return classicRoot_; }
    /* The application folder, classic, ending in ':'. */
    std::string AppFolder() const { return Classic("Apps:"); }

    void MakeFolder(const std::string &relative);
    void WriteFile(const std::string &relative, const std::string &bytes);
    std::string ReadFile(const std::string &relative) const;
    bool Exists(const std::string &relative) const;

    /* Calls an external function through the dispatcher with the argument text;
     * returns the result text. */
    std::string Call(long funcId, const std::string &argument);

    /* Texts of the dialogs recorded since the last call, and clears the record. */
    std::vector<std::string> TakeDialogs();

    FMX_ExternCallBlock block_{};
    std::string root_;
    std::string classicRoot_;
};

/* Where the file system keeps no Finder information (no user extended attributes), type
 * and creator read as zero: a test that checks them says it skipped them. */
#define SKIP_WITHOUT_FINDER_INFO(info)                                                              \
    if ((info).fdType == 0)                                                                         \
    GTEST_SKIP() << "the file system keeps no Finder information: type and creator not checked"

#endif
