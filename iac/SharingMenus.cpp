/*
 * SharingMenus.cpp: the solution's sharing menus in TOPOLUX and NIMBO with the action
 * of each item, and the selection alert texts, with their external functions.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "store/Globals.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

enum { kTopoluxGetInfoAlertId = 47, kTopoluxUnlinkAlertId = 48, kTopoluxLinkAlertId = 49,
       kTopoluxMoreThanOneLinkAlertId = 50, kNimboGetInfoAlertId = 57 };

/* "name|items": both parts must be present to replace the menu. */
static void SetSharingMenu(SharingMenu *menu, long funcId, char **argHandle)
{
    char name[256] = {0};
    char items[kMenuItemsSize] = {0};
    bool noDupes = false;
    OSErr err = GetAndStripNameAndDupes(argHandle, name, &noDupes);
    if (err) {
        ReportErrorToUser(funcId, err);
        return;
    }
    strcpyFHandleToCStr(items, sizeof items, argHandle);
    if (!name[0] || !items[0])
        return;
    menu->name[0] = 0;
    strncat(menu->name, name, sizeof menu->name - 1);
    strcpy(menu->items, items);
}

/* Item n gets the code of the n-th word; empty words are skipped as separators. */
void SetSharingMenuActions(bool nimbo, const char *words)
{
    SharingMenu *menu = nimbo ? &gNimboSharingMenu : &gTopoluxSharingMenu;
    char buffer[512] = {0};
    if (words)
        strncat(buffer, words, sizeof buffer - 1);
    char *word = strtok(buffer, "|");
    for (int i = 0; i < kMenuItemCount; i++) {
        menu->actions[i] = ActionWordToCode(word);
        if (word)
            word = strtok(nullptr, "|");
    }
}

void SetSelectionAlertText(long funcId, const char *text)
{
    char *alert;
    switch (funcId) {
    case kTopoluxGetInfoAlertId: alert = gTopoluxNoneSelectedGetInfoAlert; break;
    case kTopoluxUnlinkAlertId: alert = gTopoluxNoneSelectedUnlinkAlert; break;
    case kTopoluxLinkAlertId: alert = gTopoluxNoneSelectedLinkAlert; break;
    case kTopoluxMoreThanOneLinkAlertId: alert = gTopoluxMoreThanOneSelectedLinkAlert; break;
    case kNimboGetInfoAlertId: alert = gNimboNoneSelectedGetInfoAlert; break;
    default: return;
    }
    alert[0] = 0;
    if (text)
        strncat(alert, text, kAlertTextSize - 1);
}

static void SetActionsFromArgument(bool nimbo, char **argHandle)
{
    char words[512] = {0};
    strcpyFHandleToCStr(words, sizeof words, argHandle);
    SetSharingMenuActions(nimbo, words);
}

static void SetAlertFromArgument(long alertId, char **argHandle)
{
    char text[kAlertTextSize] = {0};
    strcpyFHandleToCStr(text, sizeof text, argHandle);
    SetSelectionAlertText(alertId, text);
}

void TPX1SetTopoluxSharingMenu(long funcId, char **argHandle, char **resultHandle)
{
    SetSharingMenu(&gTopoluxSharingMenu, funcId, argHandle);
}

void TPX1SetNimboSharingMenu(long funcId, char **argHandle, char **resultHandle)
{
    SetSharingMenu(&gNimboSharingMenu, funcId, argHandle);
}

void TPX1SetTopoluxSharingMenuActions(long funcId, char **argHandle, char **resultHandle)
{
    SetActionsFromArgument(false, argHandle);
}

void TPX1SetNimboSharingMenuActions(long funcId, char **argHandle, char **resultHandle)
{
    SetActionsFromArgument(true, argHandle);
}

void TPX1SetTopoluxNoneSelectedGetInfoAlert(long funcId, char **argHandle, char **resultHandle)
{
    SetAlertFromArgument(kTopoluxGetInfoAlertId, argHandle);
}

void TPX1SetTopoluxNoneSelectedUnlinkAlert(long funcId, char **argHandle, char **resultHandle)
{
    SetAlertFromArgument(kTopoluxUnlinkAlertId, argHandle);
}

void TPX1SetTopoluxNoneSelectedLinkAlert(long funcId, char **argHandle, char **resultHandle)
{
    SetAlertFromArgument(kTopoluxLinkAlertId, argHandle);
}

void TPX1SetTopoluxMoreThanOneSelectedLinkAlert(long funcId, char **argHandle, char **resultHandle)
{
    SetAlertFromArgument(kTopoluxMoreThanOneLinkAlertId, argHandle);
}

void TPX1SetNimboNoneSelectedGetInfoAlert(long funcId, char **argHandle, char **resultHandle)
{
    SetAlertFromArgument(kNimboGetInfoAlertId, argHandle);
}
