/*
 * VeskEvents.cpp: events for vesk: reading every parameter of a received event, sending
 * a message event, the readable block and the log line of an event, owning a bus name,
 * and the event loop that runs until the tool is told to stop.
 */
#include "Vesk.h"

#include <csignal>
#include <cstring>

namespace {

volatile sig_atomic_t gStop = 0;

void OnStopSignal(int)
{
    gStop = 1;
}

OSType CodeAttribute(const AppleEvent *event, AEKeyword keyword)
{
    OSType value = 0;
    DescType type;
    int32_t size;
    if (AEGetAttributePtr(event, keyword, typeWildCard, &type, &value, sizeof value, &size) || size != 4) return 0;
    return value;
}

std::string ValueText(const VeskParam &param)
{
    if (param.type == typeChar) return "\"" + VisibleText(param.data) + "\"";
    if (param.type == typeFileURL) return "<" + VisibleText(param.data) + ">";
    std::string hex;
    for (unsigned char c : param.data) {
        char two[4];
        snprintf(two, sizeof two, "%02x", c);
        hex += two;
    }
    return "0x" + hex;
}

} // namespace

std::vector<VeskParam> EventParams(const AppleEvent *event)
{
    std::vector<VeskParam> params;
    for (int32_t i = 1;; i++) {
        VeskParam param;
        int32_t size = 0;
        if (PlatformEventGetNthParam(event, i, &param.keyword, &param.type, nullptr, 0, &size)) break;
        param.data.resize(size);
        PlatformEventGetNthParam(event, i, &param.keyword, &param.type, size ? &param.data[0] : nullptr, size, &size);
        params.push_back(param);
    }
    return params;
}

OSType EventSender(const AppleEvent *event)
{
    return CodeAttribute(event, keyOriginalAddressAttr);
}

AEEventClass EventClass(const AppleEvent *event)
{
    return CodeAttribute(event, keyEventClassAttr);
}

AEEventID EventID(const AppleEvent *event)
{
    return CodeAttribute(event, keyEventIDAttr);
}

std::string ParamText(const std::vector<VeskParam> &params, OSType keyword, bool *found)
{
    for (const VeskParam &param : params) {
        if (param.keyword == keyword) {
            if (found) *found = true;
            return param.data;
        }
    }
    if (found) *found = false;
    return "";
}

OSErr SendEvent(OSType to, AEEventClass eventClass, AEEventID eventID, const std::vector<VeskParam> &params)
{
    AEAddressDesc target;
    OSErr err = AECreateDesc(typeApplSignature, &to, sizeof to, &target);
    if (err) return err;
    AppleEvent event;
    err = AECreateAppleEvent(eventClass, eventID, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AEDisposeDesc(&target);
    if (err) return err;
    for (const VeskParam &param : params) {
        err = AEPutParamPtr(&event, param.keyword, param.type, param.data.data(), (int32_t)param.data.size());
        if (err) break;
    }
    if (!err) err = AESend(&event, nullptr, kAENoReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&event);
    return err;
}

std::string EventBlock(const AppleEvent *event)
{
    OSType sender = EventSender(event);
    std::string block = "event " + CodeText(EventClass(event)) + "/" + CodeText(EventID(event)) + " from " +
                        (sender ? CodeText(sender) : std::string("(unknown)")) + "\n";
    for (const VeskParam &param : EventParams(event))
        block += "  " + CodeText(param.keyword) + " " + CodeText(param.type) + " " + ValueText(param) + "\n";
    return block;
}

std::string EventLine(const AppleEvent *event)
{
    return EventLine(EventClass(event), EventID(event), EventSender(event), EventParams(event));
}

std::string EventLine(AEEventClass eventClass, AEEventID eventID, OSType sender, const std::vector<VeskParam> &params)
{
    std::string line = "event ";
    AppendCodeText(&line, eventClass);
    line += '/';
    AppendCodeText(&line, eventID);
    line += " from ";
    if (sender) AppendCodeText(&line, sender);
    else line += "????";
    for (const VeskParam &param : params) {
        line += '\t';
        AppendCodeText(&line, param.keyword);
        line += '=';
        if (param.type == typeChar || param.type == typeFileURL) AppendVisibleText(&line, param.data);
        else line += ValueText(param);
    }
    return line;
}

std::string ErrorText(OSErr err)
{
    const char *meaning = "";
    switch (err) {
    case procNotFound: meaning = " (the application is not running)"; break;
    case connectionInvalid: meaning = " (no connection to the bus)"; break;
    case paramErr: meaning = " (bad or too large an event)"; break;
    case errAETimeout: meaning = " (no answer in time)"; break;
    default: break;
    }
    return "error " + std::to_string(err) + meaning;
}

bool OwnSignature(OSType signature)
{
    PlatformSetProcessSignature(signature);
    if (PlatformBusOwnsSignatureName()) return true;
    char name[32];
    PlatformBusNameForSignature(signature, name);
    fprintf(stderr, "vesk: cannot own the bus name %s ('%s')\n", name, CodeText(signature).c_str());
    return false;
}

void RunUntilSignalled(void (*afterEvents)(void))
{
    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_handler = OnStopSignal;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    while (!gStop) {
        PlatformEventWait(500);
        if (afterEvents) afterEvents();
        /* Without the bus (the daemon went away) a stand-in has nobody left to talk to. */
        if (!gStop && !PlatformBusOwnsSignatureName()) {
            fprintf(stderr, "vesk: no longer on the bus; stopping\n");
            break;
        }
    }
}
