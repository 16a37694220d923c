/*
 * Paths.h: classic colon paths relative to the host application's folder or to a base
 * directory found through "BaseDirectoryList.txt", the host application's own name, path
 * and folder, and the conversion of a full classic path to its POSIX form.
 */
#ifndef TPX1_PATHS_H
#define TPX1_PATHS_H

#include "platform/MacTypes.h"
#include "platform/Files.h"

extern char (&gBaseDirectory)[256];

OSErr ResolvePathRelativeToApplication(const char *path, char *out);
OSErr ResolvePathRelativeToBaseDirectory(const char *path, char *out);
/* 0, or (with the report shown) no listed folder holds the reference file, or two do. */
enum { kNoBaseDirectoryErr = -1, kTwoBaseDirectoriesErr = -2 };
OSErr DetermineBaseDirectoryFromTheReferenceFile(const char *referenceFile);
OSErr ResolvePossiblePartialPath(const char *path, const char *referenceFile, int unused, char *out);
OSErr strcpyFileSystemRepresentationFromClassicPath(char *out, const char *classicPath, long outSize);
OSType GetAppSignature(void);
void GetAppFullPathName(char *out);
void GetAppFolderPathWithDelimiter(char *out);
void GetAppName(char *out);
OSErr GetPathWithDelimiterFromDirID(int32_t dirID, int16_t vRefNum, char *out);
OSErr GetFSSpecFromFullPath(const char *path, FSSpec *theSpec);
OSErr GetFullPathFromFSSpec(const FSSpec *theSpec, char *out);

void TPX1ResolveRelativePath(long funcId, char **argHandle, char **resultHandle);
void TPX1FileSystemRepresentationFromClassicPath(long funcId, char **argHandle, char **resultHandle);

#endif
