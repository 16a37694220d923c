/*
 * StdMessages.cpp: composing and sending the plug-in's own messages in outgoing list 2,
 * and the small fixed messages built that way: "FRWD", "MYOD", "ALRT" and the first
 * map view for TOPOLUX.
 */
#include "iac/IacTables.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"

enum { kStdList = 2 };

OSErr PutStdParameters(const char *const *keywordValuePairs, int pairCount)
{
    for (int i = 0; i < pairCount; i++) {
        OSErr err = SetOutgoingMessageParameterFromStr(keywordValuePairs[2 * i], keywordValuePairs[2 * i + 1],
                                                       kStdList);
        if (err)
            return err;
    }
    return noErr;
}

OSErr BeginStdMessage(const char *const *keywordValuePairs, int pairCount)
{
    DisposeOutgoingMessageParameterList(kStdList);
    return PutStdParameters(keywordValuePairs, pairCount);
}

OSErr FinishStdMessage(unsigned long signature, OSErr err)
{
    if (err == noErr)
        err = SendMessageFromOutgoingMessageParameters(signature, kStdList);
    /* A send refused for want of a signature keeps its list; this one never outlives its message. */
    DisposeOutgoingMessageParameterList(kStdList);
    return err;
}

OSErr SendTopoluxFirstView(void)
{
    const FirstView &v = gTopoluxFirstView;
    if (!v.llat[0] || !v.llng[0] || !v.hlat[0] || !v.hlng[0])
        return noErr;
    const char *const pairs[] = {"MSSG", "VIEW", "LLAT", v.llat, "LLNG", v.llng, "HLAT", v.hlat, "HLNG", v.hlng};
    return FinishStdMessage(kTopoluxSignature, BeginStdMessage(pairs, 5));
}

OSErr SendForwardNotice(unsigned long partner)
{
    if (!AppIsRunning(partner))
        return noErr;
    char who[256];
    GetGlobalInListAsStr(kAppSignatureGlobal, who, sizeof who);
    const char *const pairs[] = {"WHO ", who, "NAME", "", "MSSG", "FRWD"};
    return FinishStdMessage(partner, BeginStdMessage(pairs, 3));
}

OSErr SendSelectionRequestToTopolux(short action)
{
    if (!AppIsRunning(kTopoluxSignature))
        return kPartnerNotRunningErr;
    const char *extra = nullptr;
    const char *options = "SELECTED";
    switch (action) {
    case kActionGetInfo: extra = "GETINFO"; break;
    case kActionGetInfoFile: extra = "GETINFOFILE"; options = "FILE SELECTED"; break;
    case kActionLink: extra = "LINK"; break;
    case kActionUnlink: extra = "UNLINK"; break;
    default: return 1;
    }
    const char *const pairs[] = {"XTRA", extra, "OPTN", options, "MSSG", "MYOD"};
    return FinishStdMessage(kTopoluxSignature, BeginStdMessage(pairs, 3));
}

OSErr SendAlertToTopolux(const char *text)
{
    if (!AppIsRunning(kTopoluxSignature))
        return kPartnerNotRunningErr;
    const char *const pairs[] = {"TEXT", text, "ICON", "0", "MSSG", "ALRT"};
    return FinishStdMessage(kTopoluxSignature, BeginStdMessage(pairs, 3));
}
