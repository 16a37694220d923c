/*
 * Lifecycle.cpp: Init, Shutdown and the deferred-init flag. Init creates the lists and
 * the ten reserved globals from the host application's identity; Shutdown says "BYE "
 * to every partner that is still running and frees every list.
 */
#include "plugin/Plugin.h"
#include "files/Paths.h"
#include "iac/Iac.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextUtils.h"

void Plugin_Init(short hostVersion)
{
    (void)hostVersion;
    char appName[256], appPath[256], appFolder[256], signatureText[256];

    OSType signature = GetAppSignature();
    GetAppName(appName);
    GetAppFullPathName(appPath);
    GetAppFolderPathWithDelimiter(appFolder);
    OSTypeToString(signature, signatureText);

    InitDataLists();
    ReopenIac();

    SetGlobalFromStr(kAppNameGlobal, 1, appName);
    SetGlobalFromStr(kAppPathGlobal, 1, appPath);
    SetGlobalFromStr(kAppFolderGlobal, 1, appFolder);
    SetGlobalFromStr(kErrorDialogsGlobal, 1, "TRUE");
    SetGlobalFromStr(kHandleMessageScriptGlobal, 1, "TOPOLUX");
    SetGlobalFromStr(kPluginVersionGlobal, 1, kPluginVersionText);
    SetGlobalFromStr(kScriptMenuNameGlobal, 1, "Scripts");
    SetGlobalFromStr(kAppSignatureGlobal, 1, signatureText);
    SetGlobalFromStr(kAppPsigGlobal, 1, signatureText);
    SetGlobalFromStr(kAppDocGlobal, 1, "");
}

void Plugin_Shutdown(void)
{
    for (int i = 0; i < kFriendCount; i++) {
        OSType signature = gFriends[i].signature;
        if (signature == 0 || !AppIsRunning(signature))
            continue;
        if (!AppIsRunning(signature))
            continue;
        if (SetOutgoingMessageParameterFromStr("MSSG", "BYE ", 2) == 0)
            SendMessageToApp(signature, 2);
    }
    /* A shut-down plug-in takes no more messages: one still on its way (even a "BYE "
     * the host sent itself) must not land in the lists freed here. */
    CloseIac();
    DisposeDataLists();
}

void Plugin_DeferredInit(void)
{
    gDeferredInitDone = 1;
}

void Plugin_AppPrefs(void)
{
}

OSErr SendMessageToApp(unsigned long signature, short kind)
{
    return SendMessageFromOutgoingMessageParameters(signature, kind);
}
