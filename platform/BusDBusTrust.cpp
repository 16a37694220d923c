/*
 * BusDBusTrust.cpp: what this process takes from the bus. An event is queued only when
 * its class is one that travels between applications (VESK/AEVT messages, aevt/odoc
 * documents), when the connection that sent it owns the bus name of every signature it
 * speaks as (its senderSignature and, for a message, its SIGN parameter) and when it has
 * at most kBusMaxEventParams parameters. A refused event is answered with a D-Bus error
 * when its sender asked for an answer and noted on standard error, at most one line a
 * second, so that a flood cannot flood the log. Also the printable form of the codes and
 * names that came from the bus.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstdio>

namespace {

const uint64_t kRefusalLineUsec = 1000000;
const AEKeyword kSignKeyword = FOUR_CHAR('S', 'I', 'G', 'N');
const OSType kBlankCode = FOUR_CHAR(' ', ' ', ' ', ' ');

uint64_t gLastRefusalLine = 0;
bool gRefusalSaid = false;
long gRefusalsUnsaid = 0;

bool OwnedBySender(sd_bus_message *m, OSType signature)
{
    const char *sender = sd_bus_message_get_sender(m);
    std::string owner;
    return sender && BusDBusOwnerOf(signature, &owner) && owner == sender;
}

std::string MustOwn(OSType signature)
{
    char name[32];
    PlatformBusNameForSignature(signature, name);
    return std::string("the sender must own ") + name + " to speak as '" + BusDBusPrintableCode(signature) + "'";
}

} // namespace

OSType BusDBusSignedAs(const AEDescRecord *record)
{
    const AEParamItem *sign = AEFindParam(record, kSignKeyword);
    if (!sign) return 0;
    std::string text = sign->data;
    if (sign->type != typeChar && AECoerceBytes(sign->type, sign->data, typeChar, &text)) return 0;
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    text.resize(4, ' ');
    OSType code = FOUR_CHAR(text[0], text[1], text[2], text[3]);
    return code == kBlankCode ? 0 : code;
}

bool BusDBusTakesEventClass(OSType eventClass, OSType eventID)
{
    return (eventClass == FOUR_CHAR('V', 'E', 'S', 'K') && eventID == FOUR_CHAR('A', 'E', 'V', 'T')) ||
           (eventClass == kCoreEventClass && eventID == kAEOpenDocuments);
}

int BusDBusCheckSpeaker(sd_bus_message *m, const AEDescRecord *record, OSType speaksAs, sd_bus_error *error)
{
    if (!speaksAs || OwnedBySender(m, speaksAs)) return 0;
    return BusDBusRefuse(m, record, SD_BUS_ERROR_ACCESS_DENIED, MustOwn(speaksAs), error);
}

int BusDBusRefuse(sd_bus_message *m, const AEDescRecord *record, const char *errorName, const std::string &reason,
                  sd_bus_error *error)
{
    uint64_t now = BusDBusNowUsec();
    if (gRefusalSaid && now - gLastRefusalLine < kRefusalLineUsec) {
        gRefusalsUnsaid++;
    } else {
        const char *sender = sd_bus_message_get_sender(m);
        std::string more;
        if (gRefusalsUnsaid > 0) more = " (" + std::to_string(gRefusalsUnsaid) + " more refused before it)";
        fprintf(stderr, "%s: refused a %s/%s event from %s: %s%s\n", program_invocation_short_name,
                BusDBusPrintableCode(record->eventClass).c_str(), BusDBusPrintableCode(record->eventID).c_str(),
                sender ? sender : "a connection without a name", reason.c_str(), more.c_str());
        gRefusalSaid = true;
        gLastRefusalLine = now;
        gRefusalsUnsaid = 0;
    }
    return sd_bus_error_set(error, errorName, reason.c_str());
}

void BusDBusReportRefusals(void)
{
    if (gRefusalsUnsaid == 0 || BusDBusNowUsec() - gLastRefusalLine < kRefusalLineUsec) return;
    fprintf(stderr, "%s: refused %ld more event%s from the bus\n", program_invocation_short_name, gRefusalsUnsaid,
            gRefusalsUnsaid == 1 ? "" : "s");
    gLastRefusalLine = BusDBusNowUsec();
    gRefusalsUnsaid = 0;
}

std::string BusDBusPrintable(const std::string &utf8)
{
    std::string out;
    for (size_t i = 0; i < utf8.size(); i++) {
        unsigned char c = (unsigned char)utf8[i];
        /* C0 controls, DEL, and the C1 controls (U+0080..U+009F) in their UTF-8 form. */
        bool c1 = c == 0xC2 && i + 1 < utf8.size() && (unsigned char)utf8[i + 1] < 0xA0 &&
                  (unsigned char)utf8[i + 1] >= 0x80;
        if (c < 0x20 || c == 0x7F || c1) {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", c1 ? (unsigned char)utf8[++i] : c);
            out += hex;
        } else {
            out += (char)c;
        }
    }
    return out;
}

std::string BusDBusPrintableCode(OSType code)
{
    char bytes[4] = {(char)(code >> 24), (char)(code >> 16), (char)(code >> 8), (char)code};
    std::string roman(bytes, 4), utf8(13, '\0');
    int32_t len = PlatformMacRomanToUTF8(roman.data(), 4, &utf8[0], (int32_t)utf8.size());
    utf8.resize(len < 0 ? 0 : len);
    return BusDBusPrintable(utf8);
}
