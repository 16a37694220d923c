/*
 * FileLinuxNames.cpp: classic names and POSIX names. A classic name is Mac Roman and may
 * hold '/'; its POSIX name is UTF-8 with ':' in place of '/' (the other way round as
 * well, as Mac OS X does). Also the Mac Roman upper-casing that gives catalog order and
 * the small lexical helpers for POSIX paths.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <climits>
#include <cstring>
#include <vector>

namespace {

/* Mac Roman lower-case letters above 0x7F and their capitals. */
constexpr unsigned char kMacRomanCasePairs[][2] = {
    {0x87, 0xE7}, {0x88, 0xCB}, {0x89, 0xE5}, {0x8A, 0x80}, {0x8B, 0xCC}, {0x8C, 0x81},
    {0x8D, 0x82}, {0x8E, 0x83}, {0x8F, 0xE9}, {0x90, 0xE6}, {0x91, 0xE8}, {0x92, 0xEA},
    {0x93, 0xED}, {0x94, 0xEB}, {0x95, 0xEC}, {0x96, 0x84}, {0x97, 0xEE}, {0x98, 0xF1},
    {0x99, 0xEF}, {0x9A, 0x85}, {0x9B, 0xCD}, {0x9C, 0xF2}, {0x9D, 0xF4}, {0x9E, 0xF3},
    {0x9F, 0x86}, {0xBE, 0xAE}, {0xBF, 0xAF}, {0xCF, 0xCE}, {0xD8, 0xD9},
};

struct UpperTable {
    unsigned char map[256];
    constexpr UpperTable() : map()
    {
        for (int c = 0; c < 256; c++) map[c] = (unsigned char)((c >= 'a' && c <= 'z') ? c - 32 : c);
        for (const auto &pair : kMacRomanCasePairs) map[pair[0]] = pair[1];
    }
};

constexpr UpperTable gUpper;

void SwapSlashAndColon(char *text, size_t length)
{
    for (size_t i = 0; i < length; i++) {
        if (text[i] == '/') text[i] = ':';
        else if (text[i] == ':') text[i] = '/';
    }
}

} // namespace

bool ClassicNameToPOSIX(const unsigned char *name, size_t length, std::string *posixName)
{
    if (length == 0 || memchr(name, 0, length)) return false;
    if ((length == 1 && name[0] == '.') || (length == 2 && name[0] == '.' && name[1] == '.')) return false;
    std::vector<char> classic(name, name + length);
    SwapSlashAndColon(classic.data(), length);
    std::vector<char> utf8(length * 3 + 1);
    int32_t n = PlatformMacRomanToUTF8(classic.data(), (int32_t)length, utf8.data(), (int32_t)utf8.size());
    if (n <= 0 || n > NAME_MAX) return false;
    posixName->assign(utf8.data(), n);
    return true;
}

bool POSIXNameToClassic(const char *name, size_t length, std::string *classicName)
{
    std::vector<char> roman(length + 1);
    int32_t firstBad = -1;
    int32_t n = PlatformUTF8ToMacRoman(name, (int32_t)length, roman.data(), (int32_t)roman.size(), &firstBad);
    if (n < 0) {
        classicName->assign(length, '?');
        return false;
    }
    SwapSlashAndColon(roman.data(), n);
    classicName->assign(roman.data(), n);
    return firstBad < 0;
}

unsigned char MacRomanUpper(unsigned char c)
{
    return gUpper.map[c];
}

int CompareClassicNames(const std::string &a, const std::string &b)
{
    size_t n = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < n; i++) {
        unsigned char ca = MacRomanUpper((unsigned char)a[i]), cb = MacRomanUpper((unsigned char)b[i]);
        if (ca != cb) return ca < cb ? -1 : 1;
    }
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    int bytewise = a.compare(b);
    return bytewise < 0 ? -1 : (bytewise > 0 ? 1 : 0);
}

bool SameClassicNameIgnoringCase(const unsigned char *a, size_t aLength, const std::string &b)
{
    if (aLength != b.size()) return false;
    for (size_t i = 0; i < aLength; i++)
        if (MacRomanUpper(a[i]) != MacRomanUpper((unsigned char)b[i])) return false;
    return true;
}

void SetPascalName(unsigned char *pascal, const std::string &text)
{
    size_t n = text.size() > 255 ? 255 : text.size();
    pascal[0] = (unsigned char)n;
    memcpy(pascal + 1, text.data(), n);
}

std::string JoinPOSIX(const std::string &folder, const std::string &name)
{
    if (folder == "/") return "/" + name;
    return folder + "/" + name;
}

std::string ParentOfPOSIX(const std::string &path)
{
    size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return "/";
    return path.substr(0, slash);
}

std::string LastComponentOfPOSIX(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool NormalizePOSIX(const char *path, std::string *normal, bool *trailingSlash)
{
    if (!path || path[0] != '/') return false;
    size_t length = strlen(path);
    if (trailingSlash) *trailingSlash = length > 1 && path[length - 1] == '/';
    std::string result;
    const char *p = path;
    while (*p) {
        while (*p == '/') p++;
        const char *start = p;
        while (*p && *p != '/') p++;
        size_t n = (size_t)(p - start);
        if (n == 0 || (n == 1 && start[0] == '.')) continue;
        if (n == 2 && start[0] == '.' && start[1] == '.') {
            size_t slash = result.rfind('/');
            result.erase(slash == std::string::npos ? 0 : slash);
            continue;
        }
        result += '/';
        result.append(start, n);
    }
    *normal = result.empty() ? "/" : result;
    if (*normal == "/" && trailingSlash) *trailingSlash = false;
    return true;
}
