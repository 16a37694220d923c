/*
 * BaseDirectory.cpp: the current base directory and how it is found: a reference file
 * that exists in exactly one of the folders listed in "BaseDirectoryList.txt" beside
 * the application names the base; a reference file beside the application clears it.
 */
#include <cstdio>
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "ui/Alerts.h"

enum { kListLineSize = 255, kListBlockSize = 4096 };

/* Reads the list file a line at a time, as a text stream would: a line ends at CR,
 * LF or CR LF, and a longer line than kListLineSize - 1 characters comes in pieces. */
struct ListFileReader {
    int16_t refNum;
    unsigned char block[kListBlockSize];
    int32_t filled;
    int32_t next;
    bool atEnd;
};

static bool FillListBlock(ListFileReader *reader)
{
    if (reader->atEnd)
        return false;
    int32_t count = kListBlockSize;
    OSErr err = FSRead(reader->refNum, &count, reader->block);
    if (err != noErr)
        reader->atEnd = true;
    if (count <= 0)
        return false;
    reader->filled = count;
    reader->next = 0;
    return true;
}

static int PeekListByte(ListFileReader *reader)
{
    if (reader->next >= reader->filled && !FillListBlock(reader))
        return -1;
    return reader->block[reader->next];
}

/* Returns false at the end of the file. The line keeps no CR or LF. */
static bool ReadListLine(ListFileReader *reader, char *line)
{
    int length = 0;
    int c = PeekListByte(reader);
    if (c < 0)
        return false;
    while (length < kListLineSize - 1) {
        c = PeekListByte(reader);
        if (c < 0)
            break;
        reader->next++;
        if (c == '\r') {
            if (PeekListByte(reader) == '\n')
                reader->next++;
            break;
        }
        if (c == '\n')
            break;
        line[length++] = (char)c;
    }
    line[length] = 0;
    return true;
}

static void StripListLine(char *line)
{
    size_t length = strlen(line);
    if (length > 0 && (line[length - 1] == ':' || line[length - 1] == '\\'))
        line[length - 1] = 0;
}

static void SetBaseDirectory(const char *folder)
{
    CopyPathPiece(gBaseDirectory, folder);
}

static bool ReferenceExistsUnderBase(const char *referenceFile)
{
    char resolved[kPathSize];
    ResolvePathRelativeToBaseDirectory(referenceFile, resolved);
    return FileExists(resolved);
}

static void ReportReferenceProblem(const char *format, const char *referenceFile)
{
    char message[kPathSize + 160];
    snprintf(message, sizeof message, format, referenceFile);
    ReportErrorMsgToUser(message);
}

OSErr DetermineBaseDirectoryFromTheReferenceFile(const char *referenceFile)
{
    if (!referenceFile || referenceFile[0] == 0) {
        gBaseDirectory[0] = 0;
        return noErr;
    }
    char resolved[kPathSize];
    ResolvePathRelativeToApplication(referenceFile, resolved);
    if (FileExists(resolved)) {
        gBaseDirectory[0] = 0;
        return noErr;
    }
    if (gBaseDirectory[0] != 0 && ReferenceExistsUnderBase(referenceFile))
        return noErr;
    gBaseDirectory[0] = 0;

    char listPath[kPathSize];
    Str255 pascalListPath;
    ResolvePathRelativeToApplication(":BaseDirectoryList.txt", listPath);
    if (!FileExists(listPath))
        return noErr;
    MakePascalPath(listPath, pascalListPath);
    ListFileReader reader;
    memset(&reader, 0, sizeof reader);
    if (HOpenDF(0, 0, pascalListPath, fsRdPerm, &reader.refNum) != noErr)
        return noErr;

    char line[kListLineSize];
    char found[kPathSize] = "";
    bool haveFound = false;
    OSErr err = noErr;
    while (ReadListLine(&reader, line)) {
        if (line[0] == 0)
            continue;
        StripListLine(line);
        SetBaseDirectory(line);
        if (ReferenceExistsUnderBase(referenceFile)) {
            if (haveFound) {
                err = kTwoBaseDirectoriesErr;
                break;
            }
            CopyPathPiece(found, line);
            haveFound = true;
        }
    }
    FSClose(reader.refNum);

    if (err == kTwoBaseDirectoriesErr) {
        ReportReferenceProblem("Error: more than one base directory listed in BaseDirectoryList.txt "
                               "contains the reference file \"%s\"",
                               referenceFile);
        return kTwoBaseDirectoriesErr;
    }
    if (haveFound) {
        SetBaseDirectory(found);
        return noErr;
    }
    gBaseDirectory[0] = 0;
    ReportReferenceProblem("Error: base directory could not be found containing the reference file \"%s\"",
                           referenceFile);
    return kNoBaseDirectoryErr;
}
