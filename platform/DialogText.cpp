/*
 * DialogText.cpp: helpers of the dialog backends: text conversion for display and the
 * hand-over of answers from the file dialogs.
 */
#include "platform/DialogBackends.h"

#include <cstring>

std::string MacRomanToUTF8String(const char *mac)
{
    if (!mac) return std::string();
    size_t len = strlen(mac);
    std::string utf8(len * 3 + 1, '\0');
    int32_t n = PlatformMacRomanToUTF8(mac, (int32_t)len, utf8.data(), (int32_t)utf8.size());
    utf8.resize(n < 0 ? 0 : n);
    return utf8;
}

std::string FlatDialogText(const char *mac)
{
    std::string flat;
    for (const char *p = mac ? mac : ""; *p; p++) {
        if (*p == '\r' || *p == '\n') {
            if (*p == '\r' && p[1] == '\n') p++;
            flat += " / ";
        } else {
            flat += *p;
        }
    }
    return MacRomanToUTF8String(flat.c_str());
}

const char *DialogIconWord(int16_t icon)
{
    switch (icon) {
    case 0: return "Stop";
    case 1: return "Note";
    case 2: return "Caution";
    default: return "";
    }
}

static OSErr CopyAnswer(const char *src, size_t len, char *dst, int32_t dstSize)
{
    if (!dst || dstSize < 1 || len > (size_t)dstSize - 1) return paramErr;
    memcpy(dst, src, len);
    dst[len] = 0;
    return noErr;
}

OSErr AnswerChosenFile(const char *classicPath, char *path, int32_t pathSize)
{
    if (!classicPath || !*classicPath) return userCanceledErr;
    return CopyAnswer(classicPath, strlen(classicPath), path, pathSize);
}

OSErr AnswerPutFile(const char *classicPath, char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    if (!classicPath || !*classicPath) return userCanceledErr;
    const char *colon = strrchr(classicPath, ':');
    size_t folderLen = colon ? (size_t)(colon - classicPath + 1) : 0;
    OSErr err = CopyAnswer(classicPath, folderLen, folderPath, folderSize);
    if (!err) err = CopyAnswer(classicPath + folderLen, strlen(classicPath + folderLen), fileName, nameSize);
    return err;
}
