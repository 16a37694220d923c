/*
 * FileSupport.h: helpers shared by the file functions of this folder: splitting a
 * bar-separated argument into path pieces, resolving them, setting a result text,
 * opening a file together with its Finder information and length (with the fixed
 * failure texts), and asking the host for a buffer that shrinks while memory is short.
 */
#ifndef TPX1_FILESUPPORT_H
#define TPX1_FILESUPPORT_H

#include "platform/MacTypes.h"
#include "platform/Files.h"

enum { kPathSize = 256 };

extern const char kResolveFailedText[];   /* "Error: ResolvePossiblePartialPath returned an error" */

/* Copies the argument handle into buffer (at most size-1 characters). */
void CopyArgumentText(char **argHandle, char *buffer, long size);

/* Splits text in place at "|": fields[0..maxFields-1] point into text, the last field
 * keeps whatever follows (bars included); missing fields are "". Returns how many
 * fields the text really had (at most maxFields). */
int SplitBarFields(char *text, char **fields, int maxFields);

/* Copies at most 255 characters of src into a 256-byte dest. */
void CopyPathPiece(char *dest, const char *src);

/* Splits "path|reference" (the reference optional), each piece cut at 255, and
 * resolves the path into resolved. Returns the resolver's error. */
OSErr ResolvePathAndReference(char *pathAndReference, char *resolved);

/* The common start of the functions that take "path|reference" and work on an existing
 * file: the argument is resolved into resolved (a failure sets the result to the
 * resolver's failure text) and the file must exist. True when the function goes on. */
bool ResolveExistingFileArgument(long funcId, char **argHandle, char **resultHandle, char *resolved);

/* Sets the result to text; an error in doing so is reported with funcId. */
void SetResultTextOrReport(long funcId, char **resultHandle, const char *text);

/* A full classic path as the Pascal string the File Manager calls take. */
void MakePascalPath(const char *path, Str255 pascalPath);

/* HGetFInfo, HOpenDF with the permission, GetEOF, in that order. On failure returns
 * the error with *errorText "Error: hgetfinfo failed.", "Error: hopendf failed." or
 * "Error: GetEOF failed."; *refNum stays 0 unless the file was opened (and is left
 * open when GetEOF fails). */
OSErr OpenFileWithInfo(const unsigned char *pascalPath, int8_t permission, FInfo *info,
                       int16_t *refNum, int32_t *length, const char **errorText);

/* Asks the host for size + extra bytes, giving back step bytes of size after every
 * refusal; null when size reaches 0 or below. *granted receives the size obtained. */
char *NewBufferBackingOff(long size, long step, long extra, long *granted);

#endif
