/*
 * AppleEventHandlers.cpp: the table of installed event handlers, by event class and id.
 * Installing again for the same class and id replaces the handler; typeWildCard as class
 * or id matches any, after the exact entries.
 */
#include "platform/AppleEventRecords.h"

#include <vector>

namespace {

struct HandlerEntry {
    AEEventClass eventClass;
    AEEventID eventID;
    AEEventHandlerUPP handler;
    intptr_t refcon;
};

std::vector<HandlerEntry> gHandlers;

} // namespace

OSErr AEHandlerInstall(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler, intptr_t refcon)
{
    if (!handler) return paramErr;
    for (HandlerEntry &entry : gHandlers) {
        if (entry.eventClass == eventClass && entry.eventID == eventID) {
            entry.handler = handler;
            entry.refcon = refcon;
            return noErr;
        }
    }
    gHandlers.push_back(HandlerEntry{eventClass, eventID, handler, refcon});
    return noErr;
}

OSErr AEHandlerRemove(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler)
{
    for (size_t i = 0; i < gHandlers.size(); i++) {
        const HandlerEntry &entry = gHandlers[i];
        if (entry.eventClass == eventClass && entry.eventID == eventID && (!handler || entry.handler == handler)) {
            gHandlers.erase(gHandlers.begin() + i);
            return noErr;
        }
    }
    return errAEEventNotHandled;
}

bool AEHandlerFind(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP *handler, intptr_t *refcon)
{
    const HandlerEntry *found = nullptr;
    for (const HandlerEntry &entry : gHandlers) {
        if (entry.eventClass == eventClass && entry.eventID == eventID) {
            found = &entry;
            break;
        }
    }
    for (size_t i = 0; !found && i < gHandlers.size(); i++) {
        const HandlerEntry &entry = gHandlers[i];
        if ((entry.eventClass == eventClass || entry.eventClass == typeWildCard) &&
            (entry.eventID == eventID || entry.eventID == typeWildCard))
            found = &entry;
    }
    if (!found) return false;
    *handler = found->handler;
    *refcon = found->refcon;
    return true;
}

void AEHandlerClearAll(void)
{
    gHandlers.clear();
}
