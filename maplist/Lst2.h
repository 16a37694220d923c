/*
 * Lst2.h: the LST2 map object list format (one object per line: a 16-character
 * identifier, the layer name and the map name, TAB-separated) with the functions that
 * read an incoming list, and the cleaning of an outgoing list for the mapping application.
 */
#ifndef TPX1_LST2_H
#define TPX1_LST2_H

#include "platform/MacTypes.h"

void TPX1GetParameterLST2(long funcId, char **argHandle, char **resultHandle);
void TPX1GetParameterLST2Line(long funcId, char **argHandle, char **resultHandle);
void TPX1GetParameterLatLong(long funcId, char **argHandle, char **resultHandle);
void TPX1GetNthLine(long funcId, char **argHandle, char **resultHandle);
void TPX1ProcessLST2ParameterForTopolux(long funcId, char **argHandle, char **resultHandle);
void TPX1CopyIncomingLST2ToOutgoingLST2(long funcId, char **argHandle, char **resultHandle);
void TPX1RenameIncomingLSTAtoLST2(long funcId, char **argHandle, char **resultHandle);

/* The cleaning on a NUL-terminated text in place; returns 0 or -108, *newLength gets
 * the kept length with the NUL. Exposed for the benchmark and the fuzz target. */
OSErr CleanLST2Text(char *text, long *newLength);
/* The same on a text whose lines the caller has already counted (NumLinesInText);
 * with fewer than two lines nothing changes and *newLength is strlen + 1. */
OSErr CleanLST2Lines(char *text, long lineCount, long *newLength);

#endif
