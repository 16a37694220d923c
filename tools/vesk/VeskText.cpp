/*
 * VeskText.cpp: four-character codes and texts for vesk: parsing codes and KEY=VALUE
 * arguments, Mac Roman <-> UTF-8, and the visible form of codes and texts (TAB, CR and
 * other control characters shown).
 */
#include "Vesk.h"

#include "platform/Toolbox.h"

bool ParseCode(const std::string &text, OSType *code)
{
    std::string roman = ToMacRoman(text);
    if (roman.empty() || roman.size() > 4) return false;
    while (roman.size() < 4) roman += ' ';
    *code = FOUR_CHAR(roman[0], roman[1], roman[2], roman[3]);
    return true;
}

std::string PrintableText(const std::string &text)
{
    std::string out;
    for (unsigned char c : text) {
        char hex[8];
        snprintf(hex, sizeof hex, "\\x%02x", c);
        out += c < 0x20 || c == 0x7F ? std::string(hex) : std::string(1, (char)c);
    }
    return out;
}

void AppendCodeText(std::string *out, OSType code)
{
    char bytes[4] = {(char)(code >> 24), (char)(code >> 16), (char)(code >> 8), (char)code};
    *out += ToUTF8(PrintableText(std::string(bytes, 4)));
}

std::string CodeText(OSType code)
{
    std::string text;
    AppendCodeText(&text, code);
    return text;
}

std::string ToMacRoman(const std::string &utf8)
{
    if (PlatformTextIsASCII(utf8.data(), (int32_t)utf8.size())) return utf8;
    std::string out(utf8.size() + 1, '\0');
    int32_t len = PlatformUTF8ToMacRoman(utf8.data(), (int32_t)utf8.size(), &out[0], (int32_t)out.size(), nullptr);
    out.resize(len < 0 ? 0 : len);
    return out;
}

std::string ToUTF8(const std::string &macRoman)
{
    if (PlatformTextIsASCII(macRoman.data(), (int32_t)macRoman.size())) return macRoman;
    std::string out(macRoman.size() * 3 + 1, '\0');
    int32_t len = PlatformMacRomanToUTF8(macRoman.data(), (int32_t)macRoman.size(), &out[0], (int32_t)out.size());
    out.resize(len < 0 ? 0 : len);
    return out;
}

void AppendVisibleText(std::string *out, const std::string &macRoman)
{
    std::string escaped;
    for (unsigned char c : macRoman) {
        switch (c) {
        case '\t': escaped += "\\t"; break;
        case '\r': escaped += "\\r"; break;
        case '\n': escaped += "\\n"; break;
        case '\\': escaped += "\\\\"; break;
        case '"': escaped += "\\\""; break;
        default:
            if (c < 0x20 || c == 0x7F) {
                char hex[8];
                snprintf(hex, sizeof hex, "\\x%02x", c);
                escaped += hex;
            } else {
                escaped += (char)c;
            }
        }
    }
    *out += ToUTF8(escaped);
}

std::string VisibleText(const std::string &macRoman)
{
    std::string text;
    AppendVisibleText(&text, macRoman);
    return text;
}

std::string UnescapeText(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '\\' || i + 1 >= text.size()) {
            out += text[i];
            continue;
        }
        char next = text[++i];
        switch (next) {
        case 't': out += '\t'; break;
        case 'r': out += '\r'; break;
        case 'n': out += '\n'; break;
        default: out += next; break;
        }
    }
    return out;
}

bool ParseAssignment(const std::string &text, VeskParam *param)
{
    size_t equals = text.find('=');
    if (equals == std::string::npos || !ParseCode(text.substr(0, equals), &param->keyword)) return false;
    param->type = typeChar;
    param->data = ToMacRoman(UnescapeText(text.substr(equals + 1)));
    return true;
}
