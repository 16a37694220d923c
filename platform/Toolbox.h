/*
 * Toolbox.h: the small services of the platform library under the toolbox names the
 * core uses: tick counts, the resource files of a plug-in, the system beep, the modal
 * dialog and the file dialogs, text measurement, Mac Roman text, errno mapping and the
 * process's environment settings. Each call is a thin wrapper over one table of
 * functions per service (Services.h) and the one place where its faults are injected.
 */
#ifndef TPX1_TOOLBOX_H
#define TPX1_TOOLBOX_H

#include "platform/MacTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Ticks: 60 per second from the monotonic clock, unsigned 32-bit, wrapping. ---- */
TPX1_API uint32_t TickCount(void);
/* Test clocks: a manual clock that stands at start and moves on by step at every
 * TickCount call (step 0: only PlatformClockAdvance moves it), and the real clock. */
TPX1_API void PlatformClockUseManual(uint32_t start, uint32_t step);
TPX1_API void PlatformClockAdvance(uint32_t ticks);
TPX1_API void PlatformClockUseReal(void);

/* ---- Resources. A resource file is a plain-text file (format in docs/resources.md):
 * one resource item per line. OpenResFile returns a reference number > 0, or -1 with
 * ResError() telling why. The current file is per process. ---- */
TPX1_API int16_t OpenResFile(const char *posixPath);
TPX1_API void CloseResFile(int16_t refNum);
TPX1_API int16_t CurResFile(void);
TPX1_API void UseResFile(int16_t refNum);
TPX1_API OSErr ResError(void);
/* Item index (1-based) of string list strListID, searched in the current resource
 * file; Pascal string, Mac Roman; the empty string when missing (ResError resNotFound). */
TPX1_API void GetIndString(StringPtr theString, int16_t strListID, int16_t index);
/* Any resource item as Mac Roman C text (STR#, DLOG, ...): 0 or resNotFound. */
TPX1_API OSErr GetResourceText(OSType type, int16_t id, int16_t index, char *dest, int32_t destSize);

/* ---- Sound ---- */
TPX1_API void SysBeep(int16_t duration);

/* ---- The modal dialog. The core lays the dialog out (platform-neutral model);
 * the dialog service shows it with one of its backends (log, terminal, headless). ---- */
typedef struct DialogSpec {
    char kind;                    /* 'S', 'N', 'W', 'C', 'M', ... as the caller gave it */
    const char *text;             /* Mac Roman, NUL-terminated, any length */
    const char *buttons[3];       /* titles, Mac Roman; "" for a hidden button */
    Boolean shown[3];             /* which buttons are visible */
    int16_t defaultButton;        /* 1..3 */
    int16_t cancelButton;         /* 1..3 */
    int16_t icon;                 /* -1 none, 0 stop, 1 note, 2 caution */
    const char *caption;          /* Mac Roman, "" when none */
    Boolean beep;                 /* SysBeep(5) was sounded for this dialog */
    Rect window;                  /* window bounds after growing */
    Rect textItem;                /* item 5 */
    Rect buttonItems[3];          /* items 1, 2, 3 */
    Rect iconItem;                /* item 6 (empty rect when hidden) */
    Rect captionItem;             /* item 7 (empty rect when hidden) */
    int16_t textHeight;           /* pixels the text needed */
} DialogSpec;
/* Shows the dialog and returns the button (1..3) that closed it, or -1 if it could not
 * be shown. */
TPX1_API int16_t RunModalDialog(const DialogSpec *theSpec);

/* Lines a text needs when laid out in a box widthPixels wide (word wrap, CR and LF
 * break lines) and the line height of the system font, both in pixels. */
TPX1_API int32_t TEMeasureLines(const char *text, int32_t length, int16_t widthPixels);
TPX1_API int16_t TELineHeight(void);

/* The file dialogs. They return noErr with a full classic path in path (Mac Roman, at
 * most pathSize-1 bytes), userCanceledErr when the user cancelled, or another error.
 * AskFileToSave answers the folder the user chose (classic path ending in ':') and the
 * name the user typed, separately. */
TPX1_API OSErr NavChooseFile(const char *windowTitle, const char *clientName, char *path, int32_t pathSize);
TPX1_API OSErr NavPutFile(const char *windowTitle, const char *clientName, const char *proposedName,
                          char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize);

/* Test backend of the dialog service: records every dialog (a copy of its layout) and
 * every beep, and answers from a queue (button 1 when the queue is empty; file dialogs
 * cancel when their queue is empty). PlatformDialogUseDefault goes back to the backend
 * the environment chooses (log, terminal or headless). */
TPX1_API void PlatformDialogUseRecorder(void);
TPX1_API void PlatformDialogUseDefault(void);
TPX1_API void PlatformDialogQueueAnswer(int16_t button);
TPX1_API void PlatformDialogQueueFileAnswer(const char *classicPathOrEmpty);
TPX1_API int32_t PlatformDialogRecordedCount(void);
TPX1_API const DialogSpec *PlatformDialogRecorded(int32_t i);   /* 0-based; NULL past the end */
TPX1_API int32_t PlatformBeepCount(void);
TPX1_API void PlatformDialogClearRecord(void);

/* ---- Mac Roman and UTF-8. Both return the bytes written (a NUL is always added),
 * or -1 when dst is too small. Every Mac Roman byte has a UTF-8 form. A UTF-8
 * character without a Mac Roman form becomes '?', and *firstBad (if not NULL) receives
 * the byte offset of the first such character in src, or -1 when there was none. ---- */
TPX1_API int32_t PlatformMacRomanToUTF8(const char *src, int32_t srcLen, char *dst, int32_t dstSize);
TPX1_API int32_t PlatformUTF8ToMacRoman(const char *src, int32_t srcLen, char *dst, int32_t dstSize, int32_t *firstBad);
/* True when all len bytes are below 0x80: such text is the same in Mac Roman and UTF-8. */
TPX1_API Boolean PlatformTextIsASCII(const char *src, int32_t len);

/* ---- Errors ---- */
TPX1_API OSErr PlatformErrnoToOSErr(int err);

/* ---- Settings from the environment (TPX1_... variables); NULL when unset. ---- */
TPX1_API const char *PlatformSetting(const char *name);

#ifdef __cplusplus
}
#endif

#endif
