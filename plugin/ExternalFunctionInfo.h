/*
 * ExternalFunctionInfo.h: what a user may know of each external function (id, name,
 * argument syntax, one-line summary), looked up by id or by name, and its synopsis line.
 * Pure data from ExternalFunctions.def: the host links it without the plug-in's code.
 */
#ifndef TPX1_EXTERNAL_FUNCTION_INFO_H
#define TPX1_EXTERNAL_FUNCTION_INFO_H

#include "plugin/ExternalIds.h"

struct ExternalFunctionInfo {
    long id;
    const char *name;      /* "TPX1SetGlobal" */
    int argLimit;          /* argument copy buffer, terminator included; 0: read from the handle */
    const char *args;      /* "name|value" */
    const char *summary;   /* "creates or replaces a global" */
};

enum { kSynopsisSize = 256 };

/* The row of an id, or null outside 0..kFunctionCount-1. */
const ExternalFunctionInfo *GetExternalFunctionInfo(long id);
/* The row of a display name, any letter case (as calculations name functions), or null. */
const ExternalFunctionInfo *FindExternalFunctionByName(const char *name);
/* "TPX1SetGlobal(name|value) - creates or replaces a global" into dest.
 * 0, or -1 for an unknown id, no buffer or a buffer too small (dest is then empty). */
int GetExternalFunctionSynopsis(long id, char *dest, long destSize);

#endif
