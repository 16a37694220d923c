/*
 * AppleEventCoercion.cpp: conversion of descriptor data between types: text and
 * numbers, text and four-character codes, file URLs and FSSpecs; file URLs from and to
 * POSIX paths; and the document named by an open-document event.
 */
#include "platform/AppleEventRecords.h"
#include "platform/Files.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

#define typeType FOUR_CHAR('t', 'y', 'p', 'e')
#define typeEnumerated FOUR_CHAR('e', 'n', 'u', 'm')
#define typeKeyword FOUR_CHAR('k', 'e', 'y', 'w')
#define typeSInt16 FOUR_CHAR('s', 'h', 'o', 'r')

bool IsCodeType(DescType type)
{
    return type == typeApplSignature || type == typeType || type == typeEnumerated || type == typeKeyword;
}

bool ParseDecimal(const std::string &text, long long *value)
{
    std::string copy(text);
    const char *start = copy.c_str();
    while (*start == ' ') start++;
    if (!*start) return false;
    char *end;
    long long v = strtoll(start, &end, 10);
    while (*end == ' ') end++;
    if (*end) return false;
    *value = v;
    return true;
}

bool ReadNumber(DescType type, const std::string &in, long long *value)
{
    if (type == typeSInt32 && in.size() == 4) {
        int32_t v;
        memcpy(&v, in.data(), 4);
        *value = v;
        return true;
    }
    if (type == typeSInt16 && in.size() == 2) {
        int16_t v;
        memcpy(&v, in.data(), 2);
        *value = v;
        return true;
    }
    if (type == typeChar) return ParseDecimal(in, value);
    return false;
}

OSErr FSSpecFromPOSIX(const std::string &path, std::string *out)
{
    char classic[1024];
    OSErr err = PlatformPOSIXPathToClassic(path.c_str(), classic, sizeof classic);
    if (err) return err;
    size_t len = strlen(classic);
    if (len > 255) return errAECoercionFail;
    Str255 name;
    name[0] = (unsigned char)len;
    memcpy(name + 1, classic, len);
    FSSpec theSpec;
    memset(&theSpec, 0, sizeof theSpec);
    err = FSMakeFSSpec(0, 0, name, &theSpec);
    if (err && err != fnfErr) return err;
    out->assign(reinterpret_cast<const char *>(&theSpec), sizeof theSpec);
    return noErr;
}

OSErr POSIXFromFSSpec(const std::string &in, std::string *path)
{
    if (in.size() != sizeof(FSSpec)) return errAECoercionFail;
    FSSpec theSpec;
    memcpy(&theSpec, in.data(), sizeof theSpec);
    char buffer[4096];
    OSErr err = FSpGetPOSIXPath(&theSpec, buffer, sizeof buffer);
    if (err) return err;
    *path = buffer;
    return noErr;
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

OSErr AECoerceBytes(DescType from, const std::string &in, DescType to, std::string *out)
{
    if (from == to || to == typeWildCard) {
        *out = in;
        return noErr;
    }
    long long number;
    if ((to == typeSInt32 || to == typeSInt16) && ReadNumber(from, in, &number)) {
        if (to == typeSInt32) {
            if (number < INT32_MIN || number > INT32_MAX) return errAECoercionFail;
            int32_t v = (int32_t)number;
            out->assign(reinterpret_cast<const char *>(&v), 4);
        } else {
            if (number < INT16_MIN || number > INT16_MAX) return errAECoercionFail;
            int16_t v = (int16_t)number;
            out->assign(reinterpret_cast<const char *>(&v), 2);
        }
        return noErr;
    }
    if (to == typeChar && (from == typeSInt32 || from == typeSInt16) && ReadNumber(from, in, &number)) {
        char text[32];
        snprintf(text, sizeof text, "%lld", number);
        *out = text;
        return noErr;
    }
    if (to == typeChar && IsCodeType(from) && in.size() == 4) {
        OSType code;
        memcpy(&code, in.data(), 4);
        char text[4] = {(char)(code >> 24), (char)(code >> 16), (char)(code >> 8), (char)code};
        out->assign(text, 4);
        return noErr;
    }
    if (IsCodeType(to) && (from == typeChar || IsCodeType(from)) && in.size() == 4) {
        OSType code = from == typeChar ? FOUR_CHAR(in[0], in[1], in[2], in[3]) : 0;
        if (from != typeChar) memcpy(&code, in.data(), 4);
        out->assign(reinterpret_cast<const char *>(&code), 4);
        return noErr;
    }
    if (to == typeChar && from == typeFileURL) {
        *out = in;
        return noErr;
    }
    if (to == typeFSS && from == typeFileURL) {
        std::string path;
        if (!AEPOSIXFromFileURL(in, &path)) return errAECoercionFail;
        return FSSpecFromPOSIX(path, out);
    }
    if (to == typeFileURL && from == typeFSS) {
        std::string path;
        OSErr err = POSIXFromFSSpec(in, &path);
        if (err) return err;
        *out = AEFileURLFromPOSIX(path);
        return noErr;
    }
    return errAECoercionFail;
}

std::string AEFileURLFromPOSIX(const std::string &path)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string url = "file://";
    for (unsigned char c : path) {
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                     strchr("/-._~!$&'()*+,;=:@", c);
        if (plain && c) {
            url += (char)c;
        } else {
            url += '%';
            url += kHex[c >> 4];
            url += kHex[c & 15];
        }
    }
    return url;
}

bool AEPOSIXFromFileURL(const std::string &url, std::string *path)
{
    const char *prefix = "file://";
    if (url.compare(0, 7, prefix) != 0) return false;
    size_t start = 7;
    /* file://localhost/... names this machine too. */
    if (url.compare(start, 9, "localhost") == 0) start += 9;
    if (start >= url.size() || url[start] != '/') return false;
    std::string out;
    for (size_t i = start; i < url.size(); i++) {
        if (url[i] == '%') {
            if (i + 2 >= url.size()) return false;
            int high = HexValue(url[i + 1]), low = HexValue(url[i + 2]);
            if (high < 0 || low < 0 || (high == 0 && low == 0)) return false;
            out += (char)(high * 16 + low);
            i += 2;
        } else {
            out += url[i];
        }
    }
    *path = out;
    return true;
}

std::string AEDocumentPOSIXPath(const AEDescRecord *record)
{
    if (!record) return "";
    const AEParamItem *item = AEFindParam(record, keyDirectObject);
    if (!item) return "";
    std::string path;
    if (item->type == typeFileURL && AEPOSIXFromFileURL(item->data, &path)) return path;
    if (item->type == typeFSS && POSIXFromFSSpec(item->data, &path) == noErr) return path;
    return "";
}
