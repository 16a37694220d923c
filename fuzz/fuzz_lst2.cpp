/*
 * fuzz_lst2.cpp: fuzz target for the map object lists on arbitrary text. The cleaning
 * (CleanLST2Text, and TPX1ProcessLST2ParameterForTopolux on the outgoing list) is checked
 * against a plain model of its rule: with two lines or more, the lines are the pieces
 * between breaks (CR, LF or CR LF), the first lines as many as NumLinesInText counts are
 * kept only when valid and not equal (letter case folded) to an earlier kept line, any
 * further piece is kept, a kept piece that had a break ends in CR, and every 0x01 byte
 * goes; so the output lines are a subset of the input lines in their order and no 0x01
 * is left. The column output (TPX1GetParameterLST2),
 * the line functions and the copy to the outgoing list are checked against the same
 * kind of model built on the line fetcher that is not the one they use.
 *
 * Input: a format byte (below 0xC0 one of a few formats, else a format text follows), a
 * line number byte, then the list text (up to its first NUL).
 */
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/FuzzTargets.h"
#include "fuzz/Harness.h"
#include "fuzz/TestHooks.h"
#include "maplist/Lst2.h"
#include "store/MessageLists.h"
#include "text/TextUtils.h"

namespace {

const char *const kFormats[] = {"TOPOLUXID RETURN",
                                "TOPOLUXID TAB LAYERNAME TAB MAPNAME RETURN",
                                "mapname\tlayername space topoluxid return",
                                "MAPNAME BOGUS LAYERNAME",
                                "TAB TOPOLUXID",
                                "FILE TOPOLUXID RETURN",
                                "TOPOLUXID FILE",
                                "RETURN RETURN RETURN RETURN RETURN RETURN RETURN RETURN RETURN RETURN RETURN TAB",
                                ""};

bool IsValidLine(const std::string &line)
{
    if (line.size() < 17)
        return false;
    for (int i = 0; i < 16; i++) {
        char c = line[i];
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F')))
            return false;
    }
    return line[16] == '\t';
}

bool LinesEqualFolded(const std::string &a, const std::string &b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); i++)
        if (mytoupper(a[i]) != mytoupper(b[i]))
            return false;
    return true;
}

/* The cleaning's outcome by its rule, on a text without NUL. */
std::string ModelClean(const std::string &text)
{
    if (NumLinesInText(text.c_str()) < 2)
        return text;
    long counted = NumLinesInText(text.c_str());
    std::vector<std::string> pieces;
    std::vector<bool> endsInReturn;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        pieces.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
        endsInReturn.push_back(end != std::string::npos);
        if (end == std::string::npos)
            break;
        start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
    std::vector<std::string> keptLines;
    std::string out;
    for (size_t i = 0; i < pieces.size(); i++) {
        bool keep = true;
        if ((long)i < counted) {
            keep = IsValidLine(pieces[i]);
            for (size_t j = 0; keep && j < keptLines.size(); j++)
                keep = !LinesEqualFolded(keptLines[j], pieces[i]);
            if (keep)
                keptLines.push_back(pieces[i]);
        }
        if (keep)
            out += pieces[i] + (endsInReturn[i] ? "\r" : "");
    }
    std::string squeezed;
    for (char c : out)
        if (c != 1)
            squeezed += c;
    return squeezed;
}

/* The column output by its rule, reading lines with the non-looping fetcher. */
std::string ModelColumns(const std::string &format, const std::string &text, bool *fileError)
{
    *fileError = false;
    if (text.empty())
        return "";
    char upper[256];
    snprintf(upper, sizeof upper, "%s", format.substr(0, 255).c_str());
    StrToUpper(upper);
    static const char *const kWords[] = {"TOPOLUXID", "LAYERNAME", "MAPNAME", "SPACE", "TAB", "RETURN"};
    int codes[10] = {0};
    bool fileFlag = false;
    int k = 0;
    for (char *word = strtok(upper, " \t"); word && k < 10; word = strtok(nullptr, " \t"), k++) {
        if (strcmp(word, "FILE") == 0) {
            fileFlag = true;
            continue;
        }
        for (int w = 0; w < 6; w++)
            if (strcmp(word, kWords[w]) == 0) {
                codes[k] = w + 1;
                break;
            }
    }
    std::string out;
    bool composed = false;
    long count = NumLinesInText(text.c_str());
    for (long i = 0; i < count; i++) {
        char line[256];
        NthLineInTextNonOptimized(text.c_str(), i, line, sizeof line);
        char *id = strtok(line, "\t");
        char *layer = id ? strtok(nullptr, "\t") : nullptr;
        char *map = layer ? strtok(nullptr, "\t") : nullptr;
        if (!id || strlen(id) != 16 || !layer || strlen(layer) > 63 || !map || strlen(map) > 63)
            continue;
        if (fileFlag) {
            *fileError = true;
            return "";
        }
        composed = true;
        for (int slot = 0; slot < 10; slot++) {
            int code = codes[slot];
            if (code == 0 || code > 6)
                break;
            static const char *const kFixed[] = {"", "", "", " ", "\t", "\r"};
            out += code == 1 ? id : code == 2 ? layer : code == 3 ? map : kFixed[code - 1];
        }
    }
    /* Appending an empty line to the empty result leaves its terminator, and removing
     * the trailing terminator leaves a handle of one byte alone: one NUL comes back. */
    if (composed && out.empty())
        return std::string(1, '\0');
    return out;
}

std::string Printable(const std::string &text)
{
    std::string shown;
    for (unsigned char c : text) {
        if (c >= 32 && c < 127 && c != '\\') {
            shown += static_cast<char>(c);
        } else {
            char escape[8];
            snprintf(escape, sizeof escape, "\\x%02X", c);
            shown += escape;
        }
    }
    return shown;
}

void ExpectSame(const char *what, const std::string &expected, const std::string &actual)
{
    if (expected != actual)
        HarnessFail(what, "expected \"" + Printable(expected) + "\"\nactual   \"" + Printable(actual) + "\"");
}

void CheckCleaning(const std::string &text)
{
    std::vector<char> buffer(text.begin(), text.end());
    buffer.push_back(0);
    long newLength = -1;
    HarnessUseStandingBlock();
    OSErr err = CleanLST2Text(buffer.data(), &newLength);
    if (err != noErr)
        HarnessFail("CleanLST2Text failed without a memory failure", std::to_string(err));
    std::string cleaned(buffer.data());
    if (newLength != (long)cleaned.size() + 1)
        HarnessFail("CleanLST2Text gave a length that is not the text's", std::to_string(newLength));
    if (NumLinesInText(text.c_str()) >= 2 && cleaned.find('\x01') != std::string::npos)
        HarnessFail("a 0x01 byte is left after cleaning", Printable(cleaned));
    ExpectSame("CleanLST2Text differs from its rule", ModelClean(text), cleaned);
}

}  // namespace

int FuzzLst2OneInput(const uint8_t *data, size_t size)
{
    HarnessResetProcess(1);
    FuzzInput in(data, size);
    uint8_t formatPick = in.Byte();
    uint8_t lineNumber = in.Byte();
    std::string format = formatPick < 0xC0 ? kFormats[formatPick % (sizeof kFormats / sizeof *kFormats)] : in.Text();
    std::string text = in.Rest();
    text = text.substr(0, text.find('\0'));
    format = format.substr(0, format.find('\0'));

    CheckCleaning(text);

    HostPlugin *plugin = HarnessPlugin();
    HostInit(plugin, 60);
    HarnessUseStandingBlock();
    const char *message[] = {"MSSG", "INFO", "SIGN", "TPX1", "LST2", text.c_str(), "LAT ", "38.5", "LONG", "-77.0"};
    if (ArchiveMessageForTesting(message, 5) != noErr)
        HarnessFail("cannot archive a message", "");
    HostCallExternal(plugin, kTPX1GetNextMessage, "");

    bool fileError = false;
    std::string expected = ModelColumns(format, text, &fileError);
    HarnessTakeDialogs();
    ExpectSame("TPX1GetParameterLST2 differs from its rule", expected,
               HostCallExternal(plugin, kTPX1GetParameterLST2, format));
    std::vector<std::string> dialogs = HarnessTakeDialogs();
    if (fileError != !dialogs.empty())
        HarnessFail("TPX1GetParameterLST2 with FILE: error shown unlike its rule", std::to_string(dialogs.size()));

    char line[1024];
    NthLineInTextNonOptimized(text.c_str(), lineNumber, line, sizeof line);
    ExpectSame("TPX1GetParameterLST2Line differs from the line fetcher", text.empty() ? "" : line,
               HostCallExternal(plugin, kTPX1GetParameterLST2Line, std::to_string(lineNumber)));
    if (text.compare(0, 7, "NODUPES") != 0) {
        static char nth[5000];
        NthLineInTextNonOptimized(text.c_str(), lineNumber, nth, sizeof nth);
        ExpectSame("TPX1GetNthLine differs from the line fetcher", nth,
                   HostCallExternal(plugin, kTPX1GetNthLine, std::to_string(lineNumber + 1) + "|" + text));
    }
    ExpectSame("TPX1GetParameterLatLong", "38.5 -77.0", HostCallExternal(plugin, kTPX1GetParameterLatLong, ""));

    /* The outgoing list: copied from the incoming one, then cleaned in place. */
    HostCallExternal(plugin, kTPX1CopyIncomingLST2ToOutgoingLST2, "");
    HostCallExternal(plugin, kTPX1ProcessLST2ParameterForTopolux, "");
    HarnessUseStandingBlock();
    std::vector<char> outgoing(text.size() + 2);
    GetOutgoingMessageParameterInListAsStr("LST2", outgoing.data(), (long)outgoing.size(), 1);
    ExpectSame("TPX1ProcessLST2ParameterForTopolux differs from its rule", ModelClean(text), outgoing.data());
    HarnessTakeDialogs();

    HarnessShutdownAndCheck(plugin);
    return 0;
}
