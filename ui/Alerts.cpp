/*
 * Alerts.cpp: error reports and general messages, all shown in the message dialog
 * with a single "OK" button. An error report names the function (from STR# 144), then
 * the memory sentence or the error number, then an optional message.
 */
#include "ui/Alerts.h"

#include <cstring>

#include "text/TextUtils.h"

enum {
    kFunctionNames = 144,
    kReportSlotSize = 256,
    kAlertTextSize = 2048
};

static const char kFunctionSentenceStart[] = "An error occurred in the plug-in function ";
static const char kMemorySentence[] = "Not enough memory to complete this operation.";
static const char kErrorPrefix[] = "Error: ";

/* Appends src to dest (a buffer of size bytes), cutting it where dest is full. */
static void AppendCut(char *dest, size_t size, const char *src)
{
    size_t used = strlen(dest);
    if (used + 1 >= size)
        return;
    strncat(dest, src, size - 1 - used);
}

void ReportErrorToUser(long functionNumber, short error)
{
    ReportErrorAndMsgToUser(functionNumber, error, "");
}

void ReportErrorIfAny(long functionNumber, long error)
{
    if (error)
        ReportErrorToUser(functionNumber, (short)error);
}

short ReportErrorMsgToUser(const char *message)
{
    return VariableDlg('M', message, "OK", "", "");
}

void ReportErrorAndMsgToUser(long functionNumber, short error, const char *message)
{
    char slots[3][kReportSlotSize] = {"", "", ""};
    int used = 0;
    if (functionNumber >= 0) {
        char name[kReportSlotSize];
        my_getindstring(name, kFunctionNames, (short)(functionNumber + 1));
        AppendCut(slots[used], kReportSlotSize, kFunctionSentenceStart);
        AppendCut(slots[used], kReportSlotSize, name);
        AppendCut(slots[used], kReportSlotSize, ".");
        used++;
    }
    if (error == memFullErr) {
        AppendCut(slots[used], kReportSlotSize, kMemorySentence);
    } else if (error != 0) {
        char number[24];
        mylong2str(error, number);
        AppendCut(slots[used], kReportSlotSize, kErrorPrefix);
        AppendCut(slots[used], kReportSlotSize, number);
    }
    used++;
    if (message)
        AppendCut(slots[used], kReportSlotSize, message);
    DoAlertMessage(slots[0], slots[1], slots[2], nullptr);
}

short DoAlertMessage(const char *line1, const char *line2, const char *line3, const char *line4)
{
    char text[kAlertTextSize] = "";
    if (line1) {
        AppendCut(text, sizeof text, line1);
        AppendCut(text, sizeof text, "\r\r");
    }
    const char *const furtherLines[] = {line2, line3, line4};
    for (const char *line : furtherLines) {
        if (line) {
            AppendCut(text, sizeof text, line);
            AppendCut(text, sizeof text, "\r");
        }
    }
    return VariableDlg('M', text, "OK", "", "");
}

void DoDebugMessage(const char *text)
{
    DoAlertMessage(text, nullptr, nullptr, nullptr);
}
