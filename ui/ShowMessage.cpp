/*
 * ShowMessage.cpp: TPX1ShowMessage, the solution's own message in the plug-in's dialog;
 * the result is the number of the button that closed it.
 */
#include "ui/Alerts.h"

#include "text/TextHandles.h"

void TPX1ShowMessage(long funcId, char **argHandle, char **resultHandle)
{
    if (!argHandle)
        return;
    LockFHandle(argHandle);
    short answer = VariableDlg('M', *argHandle, "OK", "", "");
    UnlockFHandle(argHandle);
    if (answer > 0) {
        char number[24];
        my_numtostring(answer, number);
        ReportErrorIfAny(funcId, SetResultsHandle(resultHandle, number));
    }
}
