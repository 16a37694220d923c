/*
 * HostText.cpp: text at fmhost's edges. Values are Mac Roman inside the host and the
 * plug-in; script files, the terminal and printed results are UTF-8. Also the printed
 * forms of a value (visible escapes or plain lines) and the diagnostics' format.
 */
#include "host/HostLanguage.h"

#include "platform/Toolbox.h"

void HostSetError(HostError *error, const std::string &file, int line, int column, const std::string &message)
{
    if (!error || error->set)
        return;
    error->set = true;
    error->file = file;
    error->line = line;
    error->column = column;
    error->message = message;
}

std::string HostFormatError(const HostError &error)
{
    std::string text = error.file + ":" + std::to_string(error.line) + ":";
    if (error.column > 0)
        text += std::to_string(error.column) + ":";
    return text + " " + error.message;
}

long HostDecodeUTF8(const std::string &utf8, size_t at, int *length)
{
    unsigned char c = static_cast<unsigned char>(utf8[at]);
    int n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
    *length = 1;
    if (n == 0 || at + n > utf8.size())
        return -1;
    long cp = n == 1 ? c : c & (0x7F >> n);
    for (int i = 1; i < n; i++) {
        unsigned char d = static_cast<unsigned char>(utf8[at + i]);
        if ((d & 0xC0) != 0x80)
            return -1;
        cp = (cp << 6) | (d & 0x3F);
    }
    *length = n;
    return cp;
}

std::string HostEncodeUTF8(long cp)
{
    std::string out;
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    return out;
}

bool HostUTF8ToMacRoman(const std::string &utf8, std::string *macRoman, int *badCharIndex, long *badCodePoint)
{
    std::string buffer(utf8.size() + 1, '\0');
    int32_t firstBad = -1;
    int32_t n = PlatformUTF8ToMacRoman(utf8.data(), static_cast<int32_t>(utf8.size()), &buffer[0],
                                       static_cast<int32_t>(buffer.size()), &firstBad);
    if (n < 0)
        firstBad = 0;
    if (firstBad >= 0) {
        int index = 0;
        size_t at = 0;
        while (at < utf8.size() && at < static_cast<size_t>(firstBad)) {
            int length;
            HostDecodeUTF8(utf8, at, &length);
            at += length;
            index++;
        }
        int length;
        if (badCharIndex)
            *badCharIndex = index;
        if (badCodePoint)
            *badCodePoint = at < utf8.size() ? HostDecodeUTF8(utf8, at, &length) : -1;
        return false;
    }
    /* The count leaves out the NUL the conversion adds. */
    macRoman->assign(buffer.data(), static_cast<size_t>(n));
    return true;
}

std::string HostMacRomanToUTF8(const std::string &macRoman)
{
    std::string buffer(macRoman.size() * 3 + 1, '\0');
    int32_t n = PlatformMacRomanToUTF8(macRoman.data(), static_cast<int32_t>(macRoman.size()), &buffer[0],
                                       static_cast<int32_t>(buffer.size()));
    if (n <= 0)
        return std::string();
    return buffer.substr(0, static_cast<size_t>(n));
}

std::string HostVisibleText(const std::string &macRoman)
{
    std::string out = "\"";
    std::string run;
    auto flush = [&]() {
        out += HostMacRomanToUTF8(run);
        run.clear();
    };
    for (unsigned char c : macRoman) {
        const char *escape = nullptr;
        char hex[8];
        switch (c) {
        case '\t': escape = "\\t"; break;
        case '\r': escape = "\\r"; break;
        case '\n': escape = "\\n"; break;
        case '\\': escape = "\\\\"; break;
        case '"': escape = "\\\""; break;
        default:
            if (c < 32 || c == 127) {
                snprintf(hex, sizeof hex, "\\x%02X", c);
                escape = hex;
            }
        }
        if (escape) {
            flush();
            out += escape;
        } else {
            run += static_cast<char>(c);
        }
    }
    flush();
    return out + "\"";
}

std::string HostPlainText(const std::string &macRoman)
{
    std::string copy = macRoman;
    for (char &c : copy)
        if (c == '\r')
            c = '\n';
    return HostMacRomanToUTF8(copy);
}
