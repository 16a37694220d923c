/*
 * fuzz_repform.cpp: fuzz target for the report-file identifiers: the scan and the
 * in-place rewrite on arbitrary file contents and lengths. The input's payload is put
 * into a file as it is, or padded so that it straddles the first or the second chunk
 * border (the chunk is 300000 bytes behind 8 carried ones), or repeated past the first
 * border; the host may refuse the first buffer so that the smaller chunk's borders are
 * crossed. Checked against a plain model of the eight-byte rule: the years found, and
 * the rewritten file byte for byte (same length, only year digits of identifiers
 * changed, every identifier changed); then the two external functions on the result.
 *
 * Input: a mode byte (bits 0-1: as is / first border / second border / repeated;
 * bit 4: rewrite through TPX1ChangeRepformIDsInFile; bit 5: the host refuses the first
 * buffer of the straight scan and rewrite), a year byte (from 250 on: a year out of range), a shift byte (-128..127
 * bytes around the border), a filler byte, then the payload.
 */
#include <cstdint>
#include <cstring>
#include <string>

#include "files/Repform.h"
#include "fuzz/FuzzTargets.h"
#include "fuzz/Harness.h"

namespace {

const long kFirstBorder = 8 + 300000;

int ModelYear(const std::string &content, size_t at)
{
    if (at + 8 > content.size())
        return 0;
    auto up = [](char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; };
    char a = up(content[at]), b = up(content[at + 1]);
    bool prefix = (a == 'C' && (b == 'K' || b == 'L' || b == 'M' || b == 'T' || b == 'V')) ||
                  (a == 'F' && (b == 'A' || b == 'D')) || (a == 'P' && b == 'H');
    if (!prefix || up(content[at + 2]) != 'T' || content.compare(at + 3, 4, "R200") != 0)
        return 0;
    char digit = content[at + 7];
    return digit >= '0' && digit <= '9' ? 2000 + (digit - '0') : 0;
}

std::string ModelYearsText(const std::string &content)
{
    bool years[10] = {false};
    if (content.size() >= 20)
        for (size_t at = 0; at + 8 <= content.size(); at++)
            if (int year = ModelYear(content, at); year > 2000)
                years[year - 2000] = true;
    std::string text;
    for (int i = 0; i < 10; i++)
        if (years[i])
            text += (text.empty() ? "200" : " 200") + std::to_string(i);
    return text;
}

std::string ModelRewrite(const std::string &content, int newYear)
{
    std::string out = content;
    if (content.size() < 20)
        return out;
    for (size_t at = 0; at + 8 <= content.size(); at++)
        if (ModelYear(content, at))
            out[at + 7] = static_cast<char>('0' + (newYear - 2000));
    return out;
}

std::string FirstDifference(const std::string &expected, const std::string &actual)
{
    if (expected.size() != actual.size())
        return "length " + std::to_string(expected.size()) + " became " + std::to_string(actual.size());
    for (size_t i = 0; i < expected.size(); i++)
        if (expected[i] != actual[i])
            return "offset " + std::to_string(i) + ": expected '" + expected[i] + "', found '" + actual[i] + "'";
    return "";
}

std::string BuildContent(uint8_t mode, int shift, char filler, const std::string &payload)
{
    long middle = static_cast<long>(payload.size() / 2);
    switch (mode & 3) {
    case 1:
    case 2: {
        long border = (mode & 3) == 1 ? kFirstBorder : kFirstBorder + 300000;
        long padding = border - middle + shift;
        return std::string(padding > 0 ? padding : 0, filler) + payload;
    }
    case 3: {
        if (payload.empty())
            return payload;
        std::string content;
        while ((long)content.size() < kFirstBorder + 64)
            content += payload;
        return content;
    }
    default:
        return payload;
    }
}

}  // namespace

int FuzzRepformOneInput(const uint8_t *data, size_t size)
{
    HarnessResetProcess(1);
    FuzzInput in(data, size);
    uint8_t mode = in.Byte();
    uint8_t yearByte = in.Byte();
    int shift = static_cast<int8_t>(in.Byte());
    char filler = static_cast<char>(in.Byte());
    std::string content = BuildContent(mode, shift, filler, in.Rest());
    HarnessFolder().Write("Apps/Report.RPF", content);
    std::string path = HarnessFolder().Classic("Apps/Report.RPF");

    HostPlugin *plugin = HarnessPlugin();
    HostInit(plugin, 60);
    HarnessUseStandingBlock();

    /* The scan, straight. */
    bool years[10] = {false};
    const char *errorText = nullptr;
    if (mode & 0x20)
        HostMemorySetFailure(1, kHostFailOnce);
    OSErr err = ScanRepformYears(path.c_str(), years, &errorText);
    HostMemorySetFailure(0, kHostFailOff);
    if (err != noErr)
        HarnessFail("ScanRepformYears failed", std::to_string(err) + " " + (errorText ? errorText : ""));
    std::string found;
    for (int i = 0; i < 10; i++)
        if (years[i])
            found += (found.empty() ? "200" : " 200") + std::to_string(i);
    std::string expected = ModelYearsText(content);
    if (found != expected)
        HarnessFail("ScanRepformYears differs from the rule", "expected \"" + expected + "\", found \"" + found + "\"");

    /* The rewrite. */
    int newYear = yearByte >= 250 ? (yearByte & 1 ? 1999 : 2010) : 2000 + yearByte % 10;
    if ((mode & 0x10) || newYear < 2000 || newYear > 2009) {
        std::string result =
            HostCallExternal(plugin, kTPX1ChangeRepformIDsInFile, std::to_string(newYear) + "|" + path);
        bool outOfRange = newYear < 2000 || newYear > 2009;
        std::string expectedResult =
            outOfRange ? "Programmer Error: TPX1ChangeRepformIDsInFile year must be between 2000 and 2009" : "";
        if (result != expectedResult)
            HarnessFail("TPX1ChangeRepformIDsInFile gave an unexpected result", result);
        if (outOfRange)
            newYear = 0;
    } else {
        if (mode & 0x20)
            HostMemorySetFailure(1, kHostFailOnce);
        err = ChangeRepformYears(path.c_str(), newYear, &errorText);
        HostMemorySetFailure(0, kHostFailOff);
        if (err != noErr)
            HarnessFail("ChangeRepformYears failed", std::to_string(err) + " " + (errorText ? errorText : ""));
    }
    std::string rewritten = HarnessFolder().Read("Apps/Report.RPF");
    std::string model = newYear ? ModelRewrite(content, newYear) : content;
    std::string difference = FirstDifference(model, rewritten);
    if (!difference.empty())
        HarnessFail("the rewrite differs from the rule", difference);

    /* The external scan on what the rewrite left. */
    std::string result = HostCallExternal(plugin, kTPX1GetRepformYearsFromIDs, path);
    if (result != ModelYearsText(rewritten))
        HarnessFail("TPX1GetRepformYearsFromIDs differs from the rule", result);
    if (!HarnessTakeDialogs().empty())
        HarnessFail("a dialog was shown on a file that reads and writes well", "");

    HarnessShutdownAndCheck(plugin);
    return 0;
}
