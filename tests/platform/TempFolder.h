/*
 * TempFolder.h: a private folder under /tmp for one test, removed with its files.
 */
#ifndef TPX1_TESTS_TEMPFOLDER_H
#define TPX1_TESTS_TEMPFOLDER_H

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <dirent.h>
#include <unistd.h>

struct TempFolder {
    std::string path;
    TempFolder()
    {
        char tmpl[] = "/tmp/tpx1-platform-XXXXXX";
        path = mkdtemp(tmpl);
    }
    ~TempFolder()
    {
        if (DIR *d = opendir(path.c_str())) {
            while (struct dirent *e = readdir(d))
                if (e->d_name[0] != '.') unlink((path + "/" + e->d_name).c_str());
            closedir(d);
        }
        rmdir(path.c_str());
    }
    std::string File(const char *name) const { return path + "/" + name; }
    std::string Write(const char *name, const std::string &content) const
    {
        std::ofstream(File(name), std::ios::binary) << content;
        return File(name);
    }
    std::string Read(const char *name) const
    {
        std::ifstream in(File(name), std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
};

#endif
