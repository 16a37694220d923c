/*
 * IacState.h: what the messaging code keeps: the partner table and the handled message
 * ids, the sharing menus with their actions, the selection alert texts, the map table
 * and first view for TOPOLUX, the installed handler with its closed flag, and the
 * partners whose launch failed during the call under way. The frame
 * owns the one object that holds it with the rest of the plug-in's state
 * (plugin/CoreState.h); the code reads each piece through its g name, bound there.
 */
#ifndef TPX1_IACSTATE_H
#define TPX1_IACSTATE_H

#include "iac/IacTables.h"

enum { kFailedLaunchSlots = 8 };

struct IacState {
    AEEventHandlerUPP veskHandlerUPP;
    FriendEntry friends[kFriendCount];
    OSType handledMessages[kHandledMessageCount];
    SharingMenu topoluxSharingMenu;
    SharingMenu nimboSharingMenu;
    char topoluxNoneSelectedGetInfoAlert[kAlertTextSize];
    char topoluxNoneSelectedUnlinkAlert[kAlertTextSize];
    char topoluxNoneSelectedLinkAlert[kAlertTextSize];
    char topoluxMoreThanOneSelectedLinkAlert[kAlertTextSize];
    char nimboNoneSelectedGetInfoAlert[kAlertTextSize];
    MapEntry topoluxMaps[kMapCount];
    FirstView topoluxFirstView;
    bool iacClosed;   /* from Shutdown to the next Init */
    OSType failedLaunches[kFailedLaunchSlots];   /* started this call, did not come up */
    int nextFailedLaunch;
};

/* The handler as installed, and whether it refuses events (iac/ReceiveMessage.cpp). */
extern AEEventHandlerUPP &gVeskHandlerUPP;
extern bool &gIacClosed;
/* Partners started during the call under way that did not come up (ProcessLaunch.cpp). */
extern OSType (&gFailedLaunches)[kFailedLaunchSlots];
extern int &gNextFailedLaunch;

#endif
