/*
 * SendMessage.cpp: turning an outgoing parameter list into one 'VESK'/'AEVT' event:
 * the defaults of the standard parameters, their order, the AEdata array, and the
 * low-level sender myAESend.
 */
#include <string.h>

#include <utility>

#include "iac/Iac.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"

namespace {

const char kEmptyText[1] = {0};

bool IsBlankParameter(const char *keyword, short list)
{
    return IsAllSpacesOSType(GetOutgoingMessageParameterInListAsOSType(keyword, list));
}

/* Writes the defaults of SIGN, PSIG and XTRA into the list; -2 without any signature. */
OSErr ApplyStandardDefaults(short list)
{
    char signature[5];
    OSErr err;
    if (IsBlankParameter("SIGN", list)) {
        OSType code = GetGlobalInListAsOSType(kAppSignatureGlobal);
        if (IsAllSpacesOSType(code))
            return kNoListOrSignatureErr;
        OSTypeToString(code, signature);
        if ((err = SetOutgoingMessageParameterFromStr("SIGN", signature, list)) != noErr)
            return err;
    } else {
        OSTypeToString(GetOutgoingMessageParameterInListAsOSType("SIGN", list), signature);
    }
    if (IsBlankParameter("PSIG", list)) {
        char psig[5];
        OSType code = GetGlobalInListAsOSType(kAppPsigGlobal);
        if (IsAllSpacesOSType(code))
            strcpy(psig, signature);
        else
            OSTypeToString(code, psig);
        if ((err = SetOutgoingMessageParameterFromStr("PSIG", psig, list)) != noErr)
            return err;
    }
    char **extra = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("XTRA", list);
    if (!extra || GetFHandleSize(extra) <= 0 || (*extra)[0] == 0)
        return SetOutgoingMessageParameterFromStr("XTRA", "", list);
    return noErr;
}

/* MSSG 0, SIGN 1, PSIG 2, XTRA 3, any other 4. The first letters tell the four apart,
 * so a name is compared once at most (the sort asks for ranks again and again). */
int StandardRank(const DataNode *node)
{
    const char *name = node->name;
    switch (name[0]) {
    case 'M': return strcmp(name, "MSSG") == 0 ? 0 : 4;
    case 'S': return strcmp(name, "SIGN") == 0 ? 1 : 4;
    case 'P': return strcmp(name, "PSIG") == 0 ? 2 : 4;
    case 'X': return strcmp(name, "XTRA") == 0 ? 3 : 4;
    default: return 4;
    }
}

bool ComesAfter(const DataNode *a, const DataNode *b)
{
    int rankA = StandardRank(a), rankB = StandardRank(b);
    if (rankA != rankB)
        return rankA > rankB;
    return rankA == 4 && GetFHandleSize(a->data) > GetFHandleSize(b->data);
}

/* Exchanges two C strings held in buffers of the same size, copying only the text. */
void SwapText(char *a, char *b)
{
    char saved[sizeof(DataNode::name)];
    size_t lengthA = strlen(a) + 1;
    memcpy(saved, a, lengthA);
    memcpy(a, b, strlen(b) + 1);
    memcpy(b, saved, lengthA);
}

/* Exchanges the contents of two nodes; the chain stays as it is. */
void SwapNodeContents(DataNode *a, DataNode *b)
{
    static_assert(sizeof(DataNode::name) == sizeof(DataNode::scriptName), "one buffer size for both texts");
    SwapText(a->name, b->name);
    SwapText(a->scriptName, b->scriptName);
    std::swap(a->isSystem, b->isSystem);
    std::swap(a->scriptEnabled, b->scriptEnabled);
    std::swap(a->data, b->data);
}

/* Bubble sort in place: MSSG, SIGN, PSIG, XTRA, then by value size; equal sizes keep their order. */
void SortOutgoingList(DataNode *first)
{
    bool swapped = true;
    while (swapped) {
        swapped = false;
        for (DataNode *n = first; n && n->next; n = n->next)
            if (ComesAfter(n, n->next)) {
                SwapNodeContents(n, n->next);
                swapped = true;
            }
    }
}

void FillEntry(AEdata *entry, const DataNode *node)
{
    entry->keyword = StringToOSType(node->name);
    entry->type = typeChar;
    long size = GetFHandleSize(node->data);
    if (size > 0) {
        entry->data = *node->data;
        entry->length = (int32_t)((*node->data)[size - 1] == 0 ? size - 1 : size);
    } else {
        entry->data = kEmptyText;
        entry->length = 0;
    }
}

}   // namespace

OSErr SendMessageFromOutgoingMessageParameters(unsigned long signature, short list)
{
    /* One array of entries in a host handle. An entry is four 32-bit fields on the classic
     * system; here it holds a real pointer, so the size is that of AEdata per entry. */
    char **array = NewFHandle(100);
    if (!array)
        return memFullErr;
    DataNode **head = OutgoingListHead(list);
    if (!head) {
        DisposeFHandle(array);
        return kNoListOrSignatureErr;
    }
    if (IsBlankParameter("MSSG", list)) {
        DisposeOutgoingMessageParameterList(list);
        DisposeFHandle(array);
        return kNoMessageIdErr;
    }
    OSErr err = ApplyStandardDefaults(list);
    if (err == noErr) {
        SortOutgoingList(*head);
        short count = 0;
        for (DataNode *n = *head; n; n = n->next)
            count++;
        err = SetFHandleSize(array, (long)sizeof(AEdata) * count);
        if (err == noErr) {
            LockAllOutgoingMessageParameters(*head);
            LockFHandle(array);
            AEdata *entries = (AEdata *)*array;
            short i = 0;
            for (DataNode *n = *head; n; n = n->next)
                FillEntry(&entries[i++], n);
            err = myAESend(entries, count, signature);
            UnlockFHandle(array);
            UnLockAllOutgoingMessageParameters(*head);
            DisposeOutgoingMessageParameterList(list);
        }
    }
    DisposeFHandle(array);
    return err;
}

OSErr myAESend(const AEdata *entries, short count, unsigned long signature)
{
    unsigned char launched = 0;
    OSErr err = MakeSureAppIsRunning(signature, &launched);
    if (err)
        return err;
    OSType target = (OSType)signature;
    AEAddressDesc address;
    AppleEvent event, reply;
    AEInitializeDesc(&address);
    AEInitializeDesc(&event);
    AEInitializeDesc(&reply);
    AECreateDesc(typeApplSignature, &target, sizeof target, &address);
    AECreateAppleEvent(kVeskEventClass, kVeskEventID, &address, kAutoGenerateReturnID, kAnyTransactionID, &event);
    for (short i = 0; i < count; i++)
        if (entries[i].data)
            AEPutParamPtr(&event, entries[i].keyword, entries[i].type, entries[i].data, entries[i].length);
    err = AESend(&event, &reply, kAENoReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&address);
    AEDisposeDesc(&event);
    return err;
}
