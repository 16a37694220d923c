/*
 * TestFolder.h: a private folder made with mkdtemp under /tmp, removed with everything in
 * it (locked files too), and its items by POSIX path and by classic path. The one
 * temporary folder of the tests, the fuzz targets and the sweeps: nothing they write
 * lies outside one.
 */
#ifndef TPX1_TESTS_TESTFOLDER_H
#define TPX1_TESTS_TESTFOLDER_H

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/Files.h"

class TestFolder {
public:
    TestFolder()
    {
        char pattern[] = "/tmp/tpx1-test-XXXXXX";
        if (!mkdtemp(pattern)) {
            perror("mkdtemp");
            abort();
        }
        path_ = pattern;
        char classic[1024];
        classic_ = PlatformPOSIXPathToClassic(path_.c_str(), classic, sizeof classic) == noErr ? classic : "";
        while (!classic_.empty() && classic_.back() == ':')
            classic_.pop_back();
    }
    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    /* "" names the folder itself (no trailing '/'); "A/b" an item inside it. */
    std::string Posix(const std::string &relative = "") const
    {
        return relative.empty() ? path_ : path_ + "/" + relative;
    }
    /* The same as a classic path: "" is the folder without its trailing ':', and every
     * '/' of the relative path becomes ':' ("A/b" and "A:b" are the same item). */
    std::string Classic(const std::string &relative = "") const
    {
        std::string path = relative.empty() ? classic_ : classic_ + ":" + relative;
        for (size_t i = classic_.size(); i < path.size(); i++)
            if (path[i] == '/')
                path[i] = ':';
        return path;
    }
    /* Writes the file (its folders made first); returns its POSIX path. */
    std::string Write(const std::string &relative, const std::string &bytes = "") const
    {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(Posix(relative)).parent_path(), ignored);
        std::ofstream(Posix(relative), std::ios::binary | std::ios::trunc) << bytes;
        return Posix(relative);
    }
    std::string Read(const std::string &relative) const
    {
        std::ifstream in(Posix(relative), std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    }
    bool Exists(const std::string &relative) const
    {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(Posix(relative), ignored));
    }
    void MakeFolder(const std::string &relative) const { std::filesystem::create_directories(Posix(relative)); }
    void Remove(const std::string &relative) const
    {
        std::error_code ignored;
        std::filesystem::remove_all(Posix(relative), ignored);
    }

private:
    std::string path_;
    std::string classic_;
};

#endif
