/*
 * IacTables.h: the tables and helpers shared inside iac/: the sharing menus with their
 * item actions, the selection alert texts, the map table and first view handed to
 * TOPOLUX, the composing of the plug-in's own messages in outgoing list 2, the FRWD,
 * MYOD and ALRT senders, and the process search by signature.
 */
#ifndef TPX1_IACTABLES_H
#define TPX1_IACTABLES_H

#include "iac/Iac.h"

enum { kMenuItemCount = 10, kMenuNameSize = 64, kMenuItemsSize = 512, kAlertTextSize = 256,
       kMapFieldSize = 512, kViewValueSize = 32 };

/* Action codes of sharing-menu items (ActionWordToCode). */
enum { kActionNone = 0, kActionGetInfo = 1, kActionGoToMe = 2, kActionGetInfoFile = 3,
       kActionGetRidsInfo = 4, kActionLink = 5, kActionUnlink = 6 };

struct SharingMenu {
    char name[kMenuNameSize];
    char items[kMenuItemsSize];
    short actions[kMenuItemCount];   /* item n (1..10) at index n - 1 */
};
extern SharingMenu &gTopoluxSharingMenu;
extern SharingMenu &gNimboSharingMenu;

extern char (&gTopoluxNoneSelectedGetInfoAlert)[kAlertTextSize];
extern char (&gTopoluxNoneSelectedUnlinkAlert)[kAlertTextSize];
extern char (&gTopoluxNoneSelectedLinkAlert)[kAlertTextSize];
extern char (&gTopoluxMoreThanOneSelectedLinkAlert)[kAlertTextSize];
extern char (&gNimboNoneSelectedGetInfoAlert)[kAlertTextSize];

struct MapEntry {
    char folder[kMapFieldSize];      /* the key: a resolved folder path, "" = free */
    char options[kMapFieldSize];
};
extern MapEntry (&gTopoluxMaps)[kMapCount];

struct FirstView {
    char llat[kViewValueSize];
    char llng[kViewValueSize];
    char hlat[kViewValueSize];
    char hlng[kViewValueSize];
};
extern FirstView &gTopoluxFirstView;

/* ---- The plug-in's own messages, composed in outgoing list 2 ----
 * BeginStdMessage empties list 2 and puts the (keyword, value) pairs in order;
 * PutStdParameters puts more pairs; both stop at the first error. FinishStdMessage sends
 * list 2 to the signature when err is 0, and leaves list 2 empty in every case. */
OSErr BeginStdMessage(const char *const *keywordValuePairs, int pairCount);
OSErr PutStdParameters(const char *const *keywordValuePairs, int pairCount);
OSErr FinishStdMessage(unsigned long signature, OSErr err);

OSErr SendTopoluxFirstView(void);
/* "FRWD" to the partner when it runs; 0 otherwise. */
OSErr SendForwardNotice(unsigned long partner);
/* "MYOD" for an action code (1, 3, 5, 6; 1 for any other); -234 when TOPOLUX is not running. */
OSErr SendSelectionRequestToTopolux(short action);
/* "ALRT" with the text; -234 when TOPOLUX is not running. */
OSErr SendAlertToTopolux(const char *text);

/* The first process whose signature matches: 0, or the Process Manager's error
 * (procNotFound at the end of the list) with *psn left at no process. */
OSErr FindProcessBySignature(unsigned long signature, ProcessSerialNumber *psn, ProcessInfoRec *info);

#endif
