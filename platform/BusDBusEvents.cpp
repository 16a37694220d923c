/*
 * BusDBusEvents.cpp: Apple events on the wire. Sending builds one call of
 * org.vesk.AppleEvent1.Event(s eventClass, s eventID, s senderSignature, a(ssv)
 * parameters) to the addressee's well-known name; receiving turns such a call into an
 * event in the in-process queue and answers the caller with the handler's result when it
 * asked for an answer. Also the Activate method and the filter that catches the daemon's
 * errors for calls that expected no answer.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"
#include "platform/ServiceResets.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace {

/* Bodies above this make the daemon drop the sender: refuse them before sending. */
const uint64_t kMaxEventBytes = 64u * 1024u * 1024u;
/* Per-parameter framing of (ssv) on the wire, rounded up. */
const uint64_t kParamOverhead = 48;
const int kRememberedCookies = 256;

struct PendingCall {
    uint64_t cookie;
    OSType signature;
};

PendingCall gNoReplyCalls[kRememberedCookies];
int gNextCookieSlot = 0;
int32_t gActivations = 0;

void RememberNoReplyCall(uint64_t cookie, OSType signature)
{
    gNoReplyCalls[gNextCookieSlot] = PendingCall{cookie, signature};
    gNextCookieSlot = (gNextCookieSlot + 1) % kRememberedCookies;
}

bool ForgetNoReplyCall(uint64_t cookie, OSType *signature)
{
    for (PendingCall &call : gNoReplyCalls) {
        if (call.cookie && call.cookie == cookie) {
            *signature = call.signature;
            call.cookie = 0;
            return true;
        }
    }
    return false;
}

std::string ToUTF8(const std::string &roman)
{
    if (PlatformTextIsASCII(roman.data(), (int32_t)roman.size())) return roman;
    std::string utf8(roman.size() * 3 + 1, '\0');
    int32_t len = PlatformMacRomanToUTF8(roman.data(), (int32_t)roman.size(), &utf8[0], (int32_t)utf8.size());
    utf8.resize(len < 0 ? 0 : len);
    return utf8;
}

OSErr AppendParameter(sd_bus_message *m, const AEParamItem &item, uint64_t *total)
{
    DescType type = item.type;
    std::string value;
    char contents[3] = "ay";
    if (type == typeChar) {
        value = ToUTF8(item.data);
        strcpy(contents, "s");
    } else if (type == typeFSS) {
        /* An FSSpec means nothing to another process: it travels as a file URL. */
        OSErr err = AECoerceBytes(typeFSS, item.data, typeFileURL, &value);
        if (err) return err;
        type = typeFileURL;
    } else {
        value = item.data;
    }
    std::string keyword = BusDBusCodeString(item.keyword), typeName = BusDBusCodeString(type);
    if (keyword.empty() || typeName.empty()) return paramErr;
    *total += kParamOverhead + keyword.size() + typeName.size() + value.size();
    if (*total > kMaxEventBytes) return paramErr;
    /* The basic calls, not a format string: a message has many parameters, and parsing
     * the format for each costs more than the appending itself. */
    int r = sd_bus_message_open_container(m, 'r', "ssv");
    if (r >= 0) r = sd_bus_message_append_basic(m, 's', keyword.c_str());
    if (r >= 0) r = sd_bus_message_append_basic(m, 's', typeName.c_str());
    if (r >= 0) r = sd_bus_message_open_container(m, 'v', contents);
    if (r >= 0) {
        if (contents[0] == 's') r = sd_bus_message_append_basic(m, 's', value.c_str());
        else r = sd_bus_message_append_array(m, 'y', value.data(), value.size());
    }
    if (r >= 0) r = sd_bus_message_close_container(m);
    if (r >= 0) r = sd_bus_message_close_container(m);
    return r < 0 ? BusDBusFailure(r) : (OSErr)noErr;
}

OSErr AppendEvent(sd_bus_message *m, const AEDescRecord *event)
{
    uint64_t raw = 0;
    for (const AEParamItem &item : event->params) raw += kParamOverhead + item.data.size();
    if (raw > kMaxEventBytes || event->params.size() > kBusMaxEventParams) return paramErr;
    std::string eventClass = BusDBusCodeString(event->eventClass), eventID = BusDBusCodeString(event->eventID);
    std::string sender = BusDBusCodeString(PlatformProcessSignature());
    if (eventClass.empty() || eventID.empty()) return paramErr;
    int r = sd_bus_message_append(m, "sss", eventClass.c_str(), eventID.c_str(), sender.c_str());
    if (r >= 0) r = sd_bus_message_open_container(m, 'a', "(ssv)");
    if (r < 0) return BusDBusFailure(r);
    uint64_t total = 0;
    for (const AEParamItem &item : event->params) {
        OSErr err = AppendParameter(m, item, &total);
        if (err) return err;
    }
    r = sd_bus_message_close_container(m);
    return r < 0 ? BusDBusFailure(r) : (OSErr)noErr;
}

uint64_t TimeoutUsec(int32_t ticks)
{
    /* kAEDefaultTimeout and kNoTimeOut both get the bus's default, so that a partner
     * that never answers cannot hang the host. */
    if (ticks <= 0) return 0;
    return (uint64_t)ticks * 1000000u / 60u;
}

OSErr CallError(int r, const sd_bus_error *error)
{
    if (sd_bus_error_has_name(error, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
        sd_bus_error_has_name(error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) ||
        sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_OBJECT) ||
        sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_METHOD))
        return procNotFound;
    if (r == -ETIMEDOUT || sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) ||
        sd_bus_error_has_name(error, SD_BUS_ERROR_TIMEOUT))
        return errAETimeout;
    return BusDBusFailure(r);
}

/* ---- Receiving ---- */

void Warn(const char *format, OSType a, OSType b)
{
    std::string first = BusDBusPrintableCode(a), second = BusDBusPrintableCode(b);
    fprintf(stderr, "%s: ", program_invocation_short_name);
    fprintf(stderr, format, first.c_str(), second.c_str());
    fputc('\n', stderr);
}

/* Reads one (ssv) entry into item. A 'TEXT' value is Mac Roman inside: from a string it
 * is converted, from bytes taken as it is up to a NUL (a text ends there). */
int ReadParameter(sd_bus_message *m, OSType sender, AEParamItem *item, sd_bus_error *error)
{
    const char *keywordText, *typeText;
    int r = sd_bus_message_read_basic(m, 's', &keywordText);
    if (r >= 0) r = sd_bus_message_read_basic(m, 's', &typeText);
    if (r < 0) return r;
    if (!BusDBusCodeFromString(keywordText, &item->keyword) || !BusDBusCodeFromString(typeText, &item->type))
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "keywords and types are four-character codes");
    /* A 'TEXT' value comes as a string and any other as bytes; either form is taken for
     * any type. The expected one is tried first: a variant of other contents is refused
     * with -ENXIO and nothing read, which costs less than asking for its type. */
    bool text = item->type == typeChar;
    r = sd_bus_message_enter_container(m, 'v', text ? "s" : "ay");
    if (r == -ENXIO) {
        text = !text;
        r = sd_bus_message_enter_container(m, 'v', text ? "s" : "ay");
    }
    if (r == -ENXIO || r == 0)
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "parameter values are strings (s) or bytes (ay)");
    if (r < 0) return r;
    std::string &data = item->data;
    if (text) {
        const char *value;
        r = sd_bus_message_read_basic(m, 's', &value);
        if (r < 0) return r;
        size_t len = strlen(value);
        data.resize(len + 1);
        int32_t firstBad = -1;
        int32_t written = PlatformUTF8ToMacRoman(value, (int32_t)len, &data[0], (int32_t)data.size(), &firstBad);
        data.resize(written < 0 ? 0 : written);
        if (firstBad >= 0)
            Warn("event from '%s': parameter '%s' has characters without a Mac Roman form; they became '?'", sender,
                 item->keyword);
    } else {
        const void *bytes;
        size_t size;
        r = sd_bus_message_read_array(m, 'y', &bytes, &size);
        if (r < 0) return r;
        data.assign(static_cast<const char *>(bytes), size);
        if (item->type == typeChar && data.find('\0') != std::string::npos) {
            data.resize(data.find('\0'));
            Warn("event from '%s': parameter '%s' holds a NUL byte; its text was cut there", sender, item->keyword);
        }
    }
    return sd_bus_message_exit_container(m);
}

/* Reads the parameters into record, in their order; a repeated keyword replaces the
 * earlier value in place, found through an index, so that decoding costs time in
 * proportion to the event's size. One parameter too many refuses the event at once. */
int ReadParameters(sd_bus_message *m, AEDescRecord *record, sd_bus_error *error)
{
    std::unordered_map<AEKeyword, size_t> index;
    int r = sd_bus_message_enter_container(m, 'a', "(ssv)");
    for (size_t count = 0; r >= 0; count++) {
        r = sd_bus_message_enter_container(m, 'r', "ssv");
        if (r <= 0) break;
        if (count == kBusMaxEventParams)
            return BusDBusRefuse(m, record, SD_BUS_ERROR_LIMITS_EXCEEDED,
                                 "an event has at most " + std::to_string(kBusMaxEventParams) + " parameters", error);
        AEParamItem item;
        r = ReadParameter(m, record->sender, &item, error);
        if (r < 0) return r;
        auto [at, fresh] = index.emplace(item.keyword, record->params.size());
        if (fresh) record->params.push_back(std::move(item));
        else record->params[at->second] = std::move(item);
        r = sd_bus_message_exit_container(m);
    }
    return r < 0 ? r : sd_bus_message_exit_container(m);
}

void AnswerSender(void *token, OSErr result)
{
    sd_bus_message *m = static_cast<sd_bus_message *>(token);
    if (sd_bus_message_get_expect_reply(m) && sd_bus_message_get_bus(m) == BusDBusConnection()) {
        int r = sd_bus_reply_method_return(m, "i", (int32_t)result);
        if (r < 0) BusDBusFailure(r);
        else BusDBusFlush();
    }
    sd_bus_message_unref(m);
}

int EventMethod(sd_bus_message *m, void *userdata, sd_bus_error *error)
{
    const char *classText, *idText, *senderText;
    int r = sd_bus_message_read(m, "sss", &classText, &idText, &senderText);
    if (r < 0) return r;
    OSType eventClass, eventID, sender = 0;
    if (!BusDBusCodeFromString(classText, &eventClass) || !BusDBusCodeFromString(idText, &eventID) ||
        (*senderText && !BusDBusCodeFromString(senderText, &sender)))
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS,
                                "eventClass, eventID and senderSignature are four-character codes");
    AEDescRecord *record = AENewRecord();
    if (!record) return -ENOMEM;
    record->eventClass = eventClass;
    record->eventID = eventID;
    record->sender = sender;
    OSType self = PlatformProcessSignature();
    record->targetType = typeApplSignature;
    record->target.assign(reinterpret_cast<const char *>(&self), sizeof self);
    /* Who speaks and what is said are checked before anything is queued: events that
     * only this process sends itself (the do-script event) never come from the bus. */
    if (!BusDBusTakesEventClass(eventClass, eventID))
        r = BusDBusRefuse(m, record, SD_BUS_ERROR_ACCESS_DENIED,
                          "only VESK/AEVT and aevt/odoc events are taken from the bus", error);
    if (r >= 0) r = BusDBusCheckSpeaker(m, record, sender, error);
    if (r >= 0) r = ReadParameters(m, record, error);
    if (r >= 0 && !sd_bus_error_is_set(error) && eventClass == FOUR_CHAR('V', 'E', 'S', 'K'))
        r = BusDBusCheckSpeaker(m, record, BusDBusSignedAs(record), error);
    if (r < 0 || sd_bus_error_is_set(error)) {
        AEFreeRecord(record);
        return r < 0 ? r : -EINVAL;
    }
    AEQueueIncoming(record, AnswerSender, sd_bus_message_ref(m));
    return 1;
}

int ActivateMethod(sd_bus_message *m, void *userdata, sd_bus_error *error)
{
    gActivations++;
    return sd_bus_reply_method_return(m, "");
}

int ErrorFilter(sd_bus_message *m, void *userdata, sd_bus_error *error)
{
    if (!sd_bus_message_is_method_error(m, nullptr)) return 0;
    uint64_t cookie;
    OSType signature;
    if (sd_bus_message_get_reply_cookie(m, &cookie) < 0 || !ForgetNoReplyCall(cookie, &signature)) return 0;
    const sd_bus_error *failure = sd_bus_message_get_error(m);
    std::string to = BusDBusPrintableCode(signature);
    fprintf(stderr, "%s: an event to '%s' was not delivered: %s\n", program_invocation_short_name, to.c_str(),
            failure && failure->name ? failure->name : "error");
    return 0;
}

const sd_bus_vtable kAppVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("Event", "sssa(ssv)",
                             SD_BUS_PARAM(eventClass) SD_BUS_PARAM(eventID) SD_BUS_PARAM(senderSignature)
                                 SD_BUS_PARAM(parameters),
                             "i", SD_BUS_PARAM(result), EventMethod, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Activate", "", "", ActivateMethod, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

} // namespace

std::string BusDBusCodeString(OSType code)
{
    if (!code) return "";
    char bytes[4] = {(char)(code >> 24), (char)(code >> 16), (char)(code >> 8), (char)code};
    for (char c : bytes)
        if (!c) return "";
    return ToUTF8(std::string(bytes, 4));
}

bool BusDBusCodeFromString(const char *text, OSType *code)
{
    char roman[8];
    int32_t firstBad = -1;
    int32_t len = PlatformUTF8ToMacRoman(text, -1, roman, sizeof roman, &firstBad);
    if (len != 4 || firstBad >= 0) return false;
    *code = FOUR_CHAR(roman[0], roman[1], roman[2], roman[3]);
    return true;
}

int BusDBusAddObject(sd_bus *bus, sd_bus_slot **objectSlot, sd_bus_slot **filterSlot)
{
    int r = sd_bus_add_object_vtable(bus, objectSlot, kBusObjectPath, kBusInterface, kAppVtable, nullptr);
    if (r < 0) return r;
    return sd_bus_add_filter(bus, filterSlot, ErrorFilter, nullptr);
}

void ResetDBusCalls(void)
{
    for (PendingCall &call : gNoReplyCalls) call = PendingCall{0, 0};
    gNextCookieSlot = 0;
    gActivations = 0;
}

bool BusDBusActivationsPending(void)
{
    return gActivations > 0;
}

int32_t BusDBusTakeActivations(void)
{
    int32_t n = gActivations;
    gActivations = 0;
    return n;
}

OSErr BusDBusSendEvent(const AEDescRecord *event, OSType signature, int32_t sendMode, int32_t timeoutTicks,
                       OSErr *handlerResult)
{
    sd_bus *bus = BusDBusConnection();
    if (!bus) return connectionInvalid;
    std::string owner;
    if (!BusDBusOwnerOf(signature, &owner)) return procNotFound;
    char name[32];
    PlatformBusNameForSignature(signature, name);
    sd_bus_message *m = nullptr;
    int r = sd_bus_message_new_method_call(bus, &m, name, kBusObjectPath, kBusInterface, "Event");
    if (r < 0) return BusDBusFailure(r);
    OSErr err = AppendEvent(m, event);
    if (!err && (sendMode & 3) == kAEWaitReply) {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message *reply = nullptr;
        r = sd_bus_call(bus, m, TimeoutUsec(timeoutTicks), &error, &reply);
        if (r < 0) {
            err = CallError(r, &error);
        } else {
            int32_t result = 0;
            if (sd_bus_message_read(reply, "i", &result) >= 0) *handlerResult = (OSErr)result;
        }
        sd_bus_error_free(&error);
        sd_bus_message_unref(reply);
        /* What came in while the call waited sits in sd-bus's queue, where poll cannot
         * see it: read it now. A send that waits for nothing leaves incoming messages in
         * the socket, which keeps it readable for the event loop. */
        BusDBusDrain();
    } else if (!err) {
        uint64_t cookie = 0;
        r = sd_bus_message_set_expect_reply(m, 0);
        if (r >= 0) r = sd_bus_send(bus, m, &cookie);
        if (r < 0) err = BusDBusFailure(r);
        else RememberNoReplyCall(cookie, signature);
        BusDBusFlush();
    }
    sd_bus_message_unref(m);
    return err;
}
