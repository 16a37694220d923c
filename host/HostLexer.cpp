/*
 * HostLexer.cpp: splits one line of fmhost's language into tokens. Text literals use
 * FileMaker's escapes (\" \\ \¶, and ¶ inside a literal is a carriage return) and are
 * converted to Mac Roman here, so that a character without a Mac Roman form is reported
 * with its line and column. Columns count characters, from 1.
 */
#include "host/HostLanguage.h"

#include <cctype>

namespace {

const long kPilcrow = 0xB6;

bool IsNameStart(unsigned char c)
{
    return isalpha(c) || c == '_';
}

bool IsNameChar(unsigned char c)
{
    return isalnum(c) || c == '_' || c == '.';
}

std::string CodePointName(long cp)
{
    char buf[16];
    snprintf(buf, sizeof buf, "U+%04lX", cp);
    return buf;
}

}  // namespace

bool HostLexLine(const std::string &file, int line, const std::string &source, std::vector<HostToken> *tokens,
                 HostError *error)
{
    tokens->clear();
    size_t at = 0;
    int column = 1;
    while (at < source.size()) {
        unsigned char c = static_cast<unsigned char>(source[at]);
        int length = 1;
        long cp = HostDecodeUTF8(source, at, &length);
        if (cp < 0) {
            HostSetError(error, file, line, column, "the line is not valid UTF-8");
            return false;
        }
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || cp == 0xA0) {
            at += length;
            column++;
            continue;
        }
        if (c == '#')
            break;
        HostToken token;
        token.column = column;
        if (c == '"') {
            /* A text literal: collect its UTF-8 text, then convert it as one piece. */
            std::string utf8;
            std::vector<int> columns;   /* source column of each character collected */
            size_t p = at + 1;
            int col = column + 1;
            bool closed = false;
            while (p < source.size()) {
                int n;
                long ch = HostDecodeUTF8(source, p, &n);
                if (ch < 0) {
                    HostSetError(error, file, line, col, "the line is not valid UTF-8");
                    return false;
                }
                if (ch == '"') {
                    closed = true;
                    p += n;
                    col++;
                    break;
                }
                if (ch == '\\' && p + 1 < source.size()) {
                    int m;
                    long next = HostDecodeUTF8(source, p + 1, &m);
                    if (next == '"' || next == '\\' || next == kPilcrow) {
                        utf8 += source.substr(p + 1, m);
                        columns.push_back(col + 1);
                        p += 1 + m;
                        col += 2;
                        continue;
                    }
                }
                if (ch == kPilcrow) {
                    utf8 += '\r';
                } else {
                    utf8 += source.substr(p, n);
                }
                columns.push_back(col);
                p += n;
                col++;
            }
            if (!closed) {
                HostSetError(error, file, line, column, "expected a closing \" to end this text");
                return false;
            }
            int bad = -1;
            long badCp = -1;
            if (!HostUTF8ToMacRoman(utf8, &token.text, &bad, &badCp)) {
                int badColumn = bad >= 0 && bad < static_cast<int>(columns.size()) ? columns[bad] : column;
                HostSetError(error, file, line, badColumn,
                             "the character " + CodePointName(badCp) + " has no Mac Roman form");
                return false;
            }
            token.kind = kTokString;
            tokens->push_back(token);
            at = p;
            column = col;
            continue;
        }
        if (isdigit(c)) {
            size_t p = at;
            while (p < source.size() && isdigit(static_cast<unsigned char>(source[p])))
                p++;
            if (p + 1 < source.size() && source[p] == '.' && isdigit(static_cast<unsigned char>(source[p + 1]))) {
                p++;
                while (p < source.size() && isdigit(static_cast<unsigned char>(source[p])))
                    p++;
            }
            token.kind = kTokNumber;
            token.text = source.substr(at, p - at);
            tokens->push_back(token);
            column += static_cast<int>(p - at);
            at = p;
            continue;
        }
        if (IsNameStart(c)) {
            size_t p = at;
            while (p < source.size() && IsNameChar(static_cast<unsigned char>(source[p])))
                p++;
            token.kind = kTokName;
            token.text = source.substr(at, p - at);
            tokens->push_back(token);
            column += static_cast<int>(p - at);
            at = p;
            continue;
        }
        if (c == '$') {
            size_t p = at + 1;
            if (p < source.size() && source[p] == '$')
                p++;
            size_t nameStart = p;
            while (p < source.size() && IsNameChar(static_cast<unsigned char>(source[p])))
                p++;
            if (p == nameStart) {
                HostSetError(error, file, line, column, "expected a variable name after $");
                return false;
            }
            token.kind = kTokVariable;
            token.text = source.substr(at, p - at);
            tokens->push_back(token);
            column += static_cast<int>(p - at);
            at = p;
            continue;
        }
        switch (cp) {
        case '&': token.kind = kTokAmp; break;
        case kPilcrow: token.kind = kTokPilcrow; break;
        case '(': token.kind = kTokLParen; break;
        case ')': token.kind = kTokRParen; break;
        case '[': token.kind = kTokLBracket; break;
        case ']': token.kind = kTokRBracket; break;
        case ';': token.kind = kTokSemicolon; break;
        case ':': token.kind = kTokColon; break;
        case '-': token.kind = kTokMinus; break;
        case '=':
            if (at + 1 < source.size() && source[at + 1] == '=') {
                token.kind = kTokEqualsEquals;
                length = 2;
            } else {
                token.kind = kTokEquals;
            }
            break;
        default: {
            std::string shown = cp >= 32 && cp != 127 ? "\"" + source.substr(at, length) + "\"" : CodePointName(cp);
            HostSetError(error, file, line, column, "unexpected character " + shown);
            return false;
        }
        }
        tokens->push_back(token);
        at += length;
        column += cp == '=' && length == 2 ? 2 : 1;
    }
    HostToken end;
    end.kind = kTokEnd;
    end.column = column;
    tokens->push_back(end);
    return true;
}
