/*
 * FileOps.h: the file operation functions (exists, copy, delete, read a slice, list a
 * folder, ask for a file name, the unsupported zip functions), the internal file
 * helpers, and the report-file submission identifiers.
 */
#ifndef TPX1_FILEOPS_H
#define TPX1_FILEOPS_H

#include "platform/MacTypes.h"

bool FileExists(const char *path);
OSErr WriteBufferToFile(const char *path, const char *buffer, long length);
OSErr AppendBufferToFile(const char *path, const char *buffer, long length);
OSErr WriteCStringToFile(const char *path, const char *text);
char **ReadFileIntoTerminatedFHandle(const char *path, bool reportErrors);
OSErr MakeListOfMatchingItemsInFolder(const char *path, char **result);
OSErr TransferFileSection(int16_t source, int16_t destination, long start, long end);
bool AskUserForFileNameToRead(char *out);
bool AskUserForFileNameToWrite(char *inOut);

void TPX1FileExists(long funcId, char **argHandle, char **resultHandle);
void TPX1CopyFile(long funcId, char **argHandle, char **resultHandle);
void TPX1DeleteFile(long funcId, char **argHandle, char **resultHandle);
void TPX1ZipFiles(long funcId, char **argHandle, char **resultHandle);
void TPX1UnzipFiles(long funcId, char **argHandle, char **resultHandle);
void TPX1UnzipFilesBatchMode(long funcId, char **argHandle, char **resultHandle);
void TPX1AskUserForFileNameToRead(long funcId, char **argHandle, char **resultHandle);
void TPX1AskUserForFileNameToWrite(long funcId, char **argHandle, char **resultHandle);
void TPX1GetCharsFromFile(long funcId, char **argHandle, char **resultHandle);
void TPX1GetListOfFilesInFolder(long funcId, char **argHandle, char **resultHandle);

/* Report-file identifiers. */
int RepformYearOfIdentifier(const unsigned char *eight);   /* 2000..2009 or 0 */
void TPX1GetRepformYearsFromIDs(long funcId, char **argHandle, char **resultHandle);
void TPX1ChangeRepformIDsInFile(long funcId, char **argHandle, char **resultHandle);

#endif
