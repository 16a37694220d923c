/*
 * TextHandles.h: the host's text handles. Every argument, result and stored value is a
 * handle of host memory, sized, locked and freed only through the callbacks of the host
 * call block saved in gFMX_ExternCallPtr. Results handed to the host carry no terminating
 * NUL; values kept by the plug-in do. Also the host memory primitives the stores use.
 */
#ifndef TPX1_TEXTHANDLES_H
#define TPX1_TEXTHANDLES_H

#include "text/FMXExtern.h"
#include "platform/MacTypes.h"

extern FMX_ExternCallBlock *&gFMX_ExternCallPtr;

/* Host memory primitives (null-safe where it makes sense: a null handle has size 0). */
char **NewFHandle(long size);
void DisposeFHandle(char **h);
long GetFHandleSize(char **h);
void LockFHandle(char **h);
void UnlockFHandle(char **h);
void *NewFPointer(long size);
void DisposeFPointer(void *p);

OSErr SetFHandleSize(char **h, long size);
OSErr SetResultsHandle(char **h, const char *text);
OSErr SetHandleContentsAndIncludeTerminator(char **h, const char *text);
OSErr CatHandleContents(char **h, const char *text);
OSErr AppendStructToHandle(char **h, const void *data, long count);
OSErr MergeHandleContents(char **h, char *lines);
OSErr EnsureHandleIsNullTerminated(char **h);
void RemoveTrailingNullTerminator(char **h);
int strcmpFHandles(char **a, char **b);
OSErr CopyFHandleToResultHandle(char **from, char **to);
long strcpyFHandleToCStr(char *dest, long limit, char **h);

#endif
