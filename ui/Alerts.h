/*
 * Alerts.h: the plug-in's modal message dialog (VariableDlg: the platform-neutral
 * model of the dialog, shown by the platform's dialog service), the error reports of
 * the external functions, and the small toolbox helpers the dialogs use.
 */
#ifndef TPX1_ALERTS_H
#define TPX1_ALERTS_H

#include "platform/MacTypes.h"
#include "platform/Toolbox.h"

/* Lays out the dialog (without showing it): cancel button, icon, caption, beep, hidden
 * buttons, the text area grown by the text's height and the buttons moved down by it.
 * Returns 0, or -1 when DLOG 23005 is missing. */
short LayoutVariableDlg(char kind, const char *text, const char *button1, const char *button2,
                        const char *button3, DialogSpec *theSpec, char *caption, long captionSize);
short VariableDlg(char kind, const char *text, const char *button1, const char *button2, const char *button3);

/* A negative function number reports the error without naming a function. */
enum { kNoFunctionNumber = -1 };
void ReportErrorToUser(long functionNumber, short error);
/* ReportErrorToUser when error is not 0 (narrowed to 16 bits). */
void ReportErrorIfAny(long functionNumber, long error);
short ReportErrorMsgToUser(const char *message);
void ReportErrorAndMsgToUser(long functionNumber, short error, const char *message);
short DoAlertMessage(const char *line1, const char *line2, const char *line3, const char *line4);
void DoDebugMessage(const char *text);

void my_getindstring(char *s, short id, short index);
void my_numtostring(long n, char *s);
void my_stringtonum(const char *s, long *n);
void my_p2cstr(unsigned char *s);
void my_c2pstr(char *s);

void TPX1ShowMessage(long funcId, char **argHandle, char **resultHandle);

#endif
