/*
 * fuzz_paths.cpp: fuzz target for path resolution and the base directory list. The
 * input gives the contents of "BaseDirectoryList.txt" (written beside the harness's
 * host application), a reference file, a path and an earlier base directory; the
 * character '~' in them stands for the private folder's classic path, so that inputs can
 * name folders that exist. Checked: the base directory found holds the reference file,
 * the error codes come with their one message, and every resolver agrees with a plain
 * model of the relative-path rule, 255-character cut included.
 *
 * Input: a flags byte (bit 0: no list file, bit 1: Ref.txt in Data1, bit 2: in Data2,
 * bit 3: beside the application, bit 4: an earlier base directory follows), then the
 * texts: list file, reference file, [earlier base directory,] path.
 */
#include <cstdint>
#include <cstring>
#include <string>

#include "files/FileOps.h"
#include "files/Paths.h"
#include "fuzz/FuzzTargets.h"
#include "fuzz/Harness.h"
#include "store/Globals.h"

namespace {

std::string ExpandRoot(const std::string &text)
{
    std::string out;
    for (char c : text) {
        if (c == '~')
            out += HarnessFolder().Classic();
        else
            out += c;
    }
    return out.substr(0, out.find('\0'));
}

/* The relative-path rule against a folder given without its trailing ':'. */
std::string ModelResolve(const std::string &folder, const std::string &path)
{
    std::string work = path.substr(0, 255);
    if (work.empty() || (work[0] != ':' && work[0] != '\\'))
        return work;
    for (size_t i = 0; i < work.size(); i++)
        if (work[i] == '\\' && (i + 1 >= work.size() || work[i + 1] != ':'))
            work[i] = ':';
    size_t levels = 0;
    while (1 + levels < work.size() && work[1 + levels] == ':')
        levels++;
    std::string base = folder.substr(0, 255);
    for (size_t i = 0; i < levels; i++) {
        size_t colon = base.rfind(':');
        if (colon != std::string::npos)
            base.erase(colon);
    }
    return (base + work.substr(levels)).substr(0, 255);
}

std::string AppFolderWithoutDelimiter()
{
    char folder[256];
    GetGlobalInListAsStr(kAppFolderGlobal, folder, sizeof folder);
    std::string text = folder;
    if (!text.empty() && text.back() == ':')
        text.pop_back();
    return text;
}

void ExpectSame(const char *what, const std::string &expected, const char *actual)
{
    if (!memchr(actual, 0, 256))
        HarnessFail(what, "the output is not terminated within 256 bytes");
    if (expected != actual)
        HarnessFail(what, "expected \"" + expected + "\"\nactual   \"" + actual + "\"");
}

void CheckBaseDirectory(OSErr err, const std::string &reference, bool listFile)
{
    if (!memchr(gBaseDirectory, 0, sizeof gBaseDirectory))
        HarnessFail("gBaseDirectory is not terminated", "");
    std::vector<std::string> dialogs = HarnessTakeDialogs();
    if (err != 0 && err != -1 && err != -2)
        HarnessFail("DetermineBaseDirectoryFromTheReferenceFile returned an unknown code", std::to_string(err));
    if (dialogs.size() != (err == 0 ? 0u : 1u))
        HarnessFail("DetermineBaseDirectoryFromTheReferenceFile: wrong number of messages",
                    std::to_string(err) + " with " + std::to_string(dialogs.size()) + " dialogs");
    const char *expectedStart = err == -1 ? "Error: base directory could not be found containing the reference file \""
                              : err == -2 ? "Error: more than one base directory listed in BaseDirectoryList.txt contains the reference file \""
                                          : nullptr;
    if (expectedStart && dialogs[0].compare(0, strlen(expectedStart), expectedStart) != 0)
        HarnessFail("DetermineBaseDirectoryFromTheReferenceFile: wrong message", dialogs[0]);
    if (err == -1 && gBaseDirectory[0] != 0)
        HarnessFail("a base directory is set although none was found", gBaseDirectory);
    char resolved[256];
    if (err == 0 && gBaseDirectory[0] != 0) {
        if (strchr(gBaseDirectory, '\r') || strchr(gBaseDirectory, '\n'))
            HarnessFail("the base directory keeps a line break", gBaseDirectory);
        ResolvePathRelativeToBaseDirectory(reference.c_str(), resolved);
        if (!FileExists(resolved))
            HarnessFail("the base directory found does not hold the reference file",
                        std::string(gBaseDirectory) + " / " + resolved);
    }
    if (err == 0 && gBaseDirectory[0] == 0 && !reference.empty() && listFile) {
        ResolvePathRelativeToApplication(reference.c_str(), resolved);
        if (!FileExists(resolved))
            HarnessFail("no base directory although the reference file is not beside the application", resolved);
    }
}

}  // namespace

int FuzzPathsOneInput(const uint8_t *data, size_t size)
{
    HarnessResetProcess(1);
    FuzzInput in(data, size);
    uint8_t flags = in.Byte();
    std::string list = ExpandRoot(in.Text());
    std::string reference = ExpandRoot(in.Text()).substr(0, 255);
    std::string earlier = (flags & 0x10) ? ExpandRoot(in.Text()) : std::string();
    std::string path = ExpandRoot(in.Rest());

    bool listFile = !(flags & 1);
    if (listFile)
        HarnessFolder().Write("Apps/BaseDirectoryList.txt", list);
    if (flags & 2)
        HarnessFolder().Write("Data1/Ref.txt", "1");
    if (flags & 4)
        HarnessFolder().Write("Data2/Ref.txt", "2");
    if (flags & 8)
        HarnessFolder().Write("Apps/Ref.txt", "app");

    HostPlugin *plugin = HarnessPlugin();
    HostInit(plugin, 60);
    HarnessUseStandingBlock();
    HarnessTakeDialogs();
    snprintf(gBaseDirectory, sizeof gBaseDirectory, "%s", earlier.c_str());

    OSErr err = DetermineBaseDirectoryFromTheReferenceFile(reference.c_str());
    CheckBaseDirectory(err, reference, listFile);

    char out[512];
    memset(out, 0x5A, sizeof out);
    ResolvePathRelativeToApplication(path.c_str(), out);
    std::string appFolder = AppFolderWithoutDelimiter();
    ExpectSame("ResolvePathRelativeToApplication differs from the rule", ModelResolve(appFolder, path), out);
    memset(out, 0x5A, sizeof out);
    ResolvePathRelativeToBaseDirectory(path.c_str(), out);
    std::string base = gBaseDirectory[0] ? std::string(gBaseDirectory) : appFolder;
    ExpectSame("ResolvePathRelativeToBaseDirectory differs from the rule", ModelResolve(base, path), out);

    memset(out, 0x5A, sizeof out);
    err = ResolvePossiblePartialPath(path.c_str(), reference.c_str(), 0, out);
    CheckBaseDirectory(err, reference, listFile);
    base = gBaseDirectory[0] ? std::string(gBaseDirectory) : appFolder;
    if (err == 0)
        ExpectSame("ResolvePossiblePartialPath differs from the rule", ModelResolve(base, path), out);

    /* The external function, as a calculation calls it. */
    if (path.find('|') == std::string::npos && path.size() <= 255) {
        std::string result = HostCallExternal(plugin, kTPX1ResolveRelativePath, path + "|" + reference);
        base = gBaseDirectory[0] ? std::string(gBaseDirectory) : appFolder;
        if (result != "Error: DetermineBaseDirectoryFromTheReferenceFile returned an error" &&
            result != ModelResolve(base, path))
            HarnessFail("TPX1ResolveRelativePath differs from the rule", result);
        HarnessTakeDialogs();
    }

    HarnessShutdownAndCheck(plugin);
    return 0;
}
