/*
 * DialogBackends.h: the backends of the dialog service and the helpers they share,
 * internal to the platform library.
 */
#ifndef TPX1_DIALOGBACKENDS_H
#define TPX1_DIALOGBACKENDS_H

#include "platform/Services.h"

#include <string>

extern const Tpx1DialogMethods gDialogLog;       /* DialogLog.cpp: JSON lines to TPX1_DIALOG_LOG */
extern const Tpx1DialogMethods gDialogTerminal;  /* DialogTerminal.cpp: a box on the terminal */
extern const Tpx1DialogMethods gDialogHeadless;  /* DialogHeadless.cpp: one line on stderr */
extern const Tpx1DialogMethods gDialogRecorder;  /* DialogRecorder.cpp: the tests' recorder */

/* The log's queue of answers from TPX1_DIALOG_ANSWERS is read again at next use. */
void ResetDialogLog(void);
void ClearDialogRecorder(void);

/* DialogText.cpp */
std::string MacRomanToUTF8String(const char *mac);
/* The text on one line: each CR, LF or CR LF shown as " / ". UTF-8. */
std::string FlatDialogText(const char *mac);
/* The icon as a word ("Stop", "Note", "Caution"), "" for none. */
const char *DialogIconWord(int16_t icon);
/* Hands a chosen classic path (Mac Roman) to NavChooseFile's caller. */
OSErr AnswerChosenFile(const char *classicPath, char *path, int32_t pathSize);
/* Splits a chosen classic path into folder (ending in ':') and name for NavPutFile. */
OSErr AnswerPutFile(const char *classicPath, char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize);

#endif
