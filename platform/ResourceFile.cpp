/*
 * ResourceFile.cpp: the Linux implementation of the resource store. A resource file is
 * a UTF-8 text file of lines TYPE<TAB>ID<TAB>INDEX<TAB>TEXT (docs/resources.md); an
 * open file is parsed once into memory, its texts converted to Mac Roman, and is
 * known by a reference number, the smallest free one from 1 up.
 */
#include "platform/Services.h"
#include "platform/ResourceStore.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

namespace {

typedef std::tuple<OSType, int16_t, int16_t> ResourceKey;
typedef std::map<ResourceKey, std::string> ResourceItems;

std::mutex gResLock;
std::map<int16_t, ResourceItems> gOpenResFiles;

/* Undoes \t \r \n \\ in place; false on any other escape or a trailing backslash. */
bool UnescapeResourceText(std::string &text)
{
    size_t out = 0;
    for (size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c == '\\') {
            if (++i == text.size()) return false;
            switch (text[i]) {
            case 't': c = '\t'; break;
            case 'r': c = '\r'; break;
            case 'n': c = '\n'; break;
            case '\\': c = '\\'; break;
            default: return false;
            }
        }
        text[out++] = c;
    }
    text.resize(out);
    return true;
}

bool ParseResourceNumber(const std::string &field, long low, long high, int16_t *out)
{
    if (field.empty()) return false;
    char *end;
    errno = 0;
    long v = strtol(field.c_str(), &end, 10);
    if (errno != 0 || *end != 0 || v < low || v > high) return false;
    *out = (int16_t)v;
    return true;
}

std::string ToMacRoman(const std::string &utf8)
{
    std::string mac(utf8.size() + 1, '\0');
    int32_t n = PlatformUTF8ToMacRoman(utf8.data(), (int32_t)utf8.size(), mac.data(), (int32_t)mac.size(), nullptr);
    mac.resize(n < 0 ? 0 : n);
    return mac;
}

/* One line without its line end; comment, blank and malformed lines add nothing. */
void ParseResourceLine(std::string line, ResourceItems *items)
{
    if (line.empty() || line[0] == '#') return;
    std::string field[4];
    size_t start = 0;
    for (int i = 0; i < 3; i++) {
        size_t tab = line.find('\t', start);
        if (tab == std::string::npos) return;
        field[i] = line.substr(start, tab - start);
        start = tab + 1;
    }
    field[3] = line.substr(start);
    std::string type = ToMacRoman(field[0]);
    int16_t id, index;
    if (type.size() != 4) return;
    if (!ParseResourceNumber(field[1], INT16_MIN, INT16_MAX, &id)) return;
    if (!ParseResourceNumber(field[2], 0, INT16_MAX, &index)) return;
    if (!UnescapeResourceText(field[3])) return;
    OSType code = FOUR_CHAR(type[0], type[1], type[2], type[3]);
    (*items)[ResourceKey(code, id, index)] = ToMacRoman(field[3]);
}

int16_t LoadResourceFile(const char *posixPath)
{
    if (!posixPath || !*posixPath) return paramErr;
    FILE *f = fopen(posixPath, "r");
    if (!f) return PlatformErrnoToOSErr(errno);
    ResourceItems items;
    char *buf = nullptr;
    size_t cap = 0;
    ssize_t n;
    while ((n = getline(&buf, &cap, f)) >= 0) {
        while (n > 0 && (buf[n - 1] == '\n' || buf[n - 1] == '\r')) n--;
        ParseResourceLine(std::string(buf, n), &items);
    }
    bool failed = ferror(f) != 0;
    int savedErrno = errno;
    free(buf);
    fclose(f);
    if (failed) return PlatformErrnoToOSErr(savedErrno);

    std::lock_guard<std::mutex> hold(gResLock);
    int16_t ref = 1;
    while (gOpenResFiles.count(ref)) {
        if (ref == INT16_MAX) return tmfoErr;
        ref++;
    }
    gOpenResFiles[ref] = std::move(items);
    return ref;
}

void UnloadResourceFile(int16_t refNum)
{
    std::lock_guard<std::mutex> hold(gResLock);
    gOpenResFiles.erase(refNum);
}

OSErr CopyResourceText(int16_t refNum, OSType type, int16_t id, int16_t index, char *dest, int32_t destSize)
{
    std::lock_guard<std::mutex> hold(gResLock);
    auto file = gOpenResFiles.find(refNum);
    if (file == gOpenResFiles.end()) return resNotFound;
    const ResourceItems &items = file->second;
    auto it = items.find(ResourceKey(type, id, index));
    if (it == items.end() && index == 0) {
        it = items.lower_bound(ResourceKey(type, id, 0));
        if (it != items.end() && (std::get<0>(it->first) != type || std::get<1>(it->first) != id)) it = items.end();
    }
    if (it == items.end()) return resNotFound;
    if (dest && destSize > 0) {
        size_t len = it->second.size() < (size_t)destSize - 1 ? it->second.size() : (size_t)destSize - 1;
        memcpy(dest, it->second.data(), len);
        dest[len] = 0;
    }
    return noErr;
}

} // namespace

const Tpx1ResourceMethods gLinuxResources = {LoadResourceFile, UnloadResourceFile, CopyResourceText};

void ForgetAllResourceFiles(void)
{
    std::lock_guard<std::mutex> hold(gResLock);
    gOpenResFiles.clear();
}
