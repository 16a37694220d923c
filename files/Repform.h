/*
 * Repform.h: the chunked scan and in-place rewrite of the submission identifiers in a
 * Repform file, used by the two external functions and by the benchmark.
 */
#ifndef TPX1_REPFORM_H
#define TPX1_REPFORM_H

#include "platform/MacTypes.h"
#include "files/FileOps.h"

/* The offset of the first identifier starting at an offset from..last of data (which
 * holds last + 8 bytes), with its year in *year; -1 when there is none. */
long FindNextRepformIdentifier(const unsigned char *data, long from, long last, int *year);

/* years[i] is set for each year 2000 + i found (2001-2009; 2000 is never flagged).
 * On failure *errorText may name it; the error is returned. */
OSErr ScanRepformYears(const char *path, bool years[10], const char **errorText);
/* newYear 2000-2009. Returns -1 when no buffer could be had. */
OSErr ChangeRepformYears(const char *path, int newYear, const char **errorText);

#endif
