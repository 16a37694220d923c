/*
 * HostPlugin.cpp: how the host reaches a plug-in: finding it (beside fmhost in a build
 * folder, in lib/<multiarch>/tpx1/ of an install), loading the shared object and its
 * resource file (for the functions' display names; without one, the names the plug-in
 * carries built in), and the calls a FileMaker host makes (Init, Idle, External,
 * Shutdown, or any raw selector) through a call block whose memory callbacks are the
 * host memory's.
 */
#include "host/HostCore.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "platform/Toolbox.h"
#include "plugin/ExternalFunctionInfo.h"

#ifndef TPX1_PLUGIN_DIR_FROM_BINDIR
#define TPX1_PLUGIN_DIR_FROM_BINDIR "../lib/tpx1"
#endif

namespace {

const int16_t kFunctionNamesList = 144;   /* STR# 144: item id+1 is function id's name */
int16_t gHostVersionInUse = 60;           /* the version the last Init announced */

/* tpx1.fmx beside the executable (a build folder), else the installed one, found from
 * the executable's folder. With neither, *error says where it was looked for. */
std::string DefaultPluginPath(std::string *error)
{
    char exe[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n <= 0)
        return "tpx1.fmx";
    std::string folder(exe, static_cast<size_t>(n));
    folder.erase(folder.rfind('/'));
    std::string beside = folder + "/tpx1.fmx";
    if (access(beside.c_str(), F_OK) == 0)
        return beside;
    std::string installed = folder + "/" TPX1_PLUGIN_DIR_FROM_BINDIR "/tpx1.fmx";
    char resolved[PATH_MAX];
    if (realpath(installed.c_str(), resolved) != nullptr)
        return resolved;
    if (error)
        *error = "no plug-in: neither " + beside + " nor " + installed + " exists (give --plugin PATH)";
    return "";
}

std::string LowerCase(std::string text)
{
    for (char &c : text)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return text;
}

void ReadFunctionNames(HostPlugin *plugin)
{
    plugin->ids.clear();
    if (plugin->resFileRef < 0) {
        for (int id = 0; id < kFunctionCount; id++)
            plugin->names[id] = GetExternalFunctionInfo(id)->name;
        return;
    }
    int16_t previous = CurResFile();
    UseResFile(plugin->resFileRef);
    for (int id = 0; id < kFunctionCount; id++) {
        Str255 name;
        name[0] = 0;
        GetIndString(name, kFunctionNamesList, static_cast<int16_t>(id + 1));
        plugin->names[id].assign(reinterpret_cast<const char *>(name + 1), name[0]);
    }
    UseResFile(previous);
}

}  // namespace

int HostLoadPlugin(const char *path, HostPlugin *plugin, std::string *error)
{
    std::string where = path && *path ? std::string(path) : DefaultPluginPath(error);
    if (where.empty())
        return -1;
    if (where.find('/') == std::string::npos)
        where = "./" + where;   /* a bare name means this folder, not the library path */
    void *library = dlopen(where.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        if (error)
            *error = "cannot load plug-in " + where + ": " + dlerror();
        return -1;
    }
    void *entry = dlsym(library, "FMExternCallProc");
    if (!entry) {
        if (error)
            *error = "plug-in " + where + " has no FMExternCallProc";
        dlclose(library);
        return -1;
    }
    int16_t previous = CurResFile();
    std::string resourcePath = where + ".rsrc";
    int16_t ref = OpenResFile(resourcePath.c_str());
    if (ref < 0) {
        /* The plug-in finds its resources in its own table when the host's reference names
         * no file, and the names are the ones fmhost knows: a warning, not a stop. */
        int openErr = ResError();
        std::string why = access(resourcePath.c_str(), R_OK) != 0 ? strerror(errno)
                                                                  : "error " + std::to_string(openErr);
        fprintf(stderr, "fmhost: cannot open resource file %s (%s): using the plug-in's built-in resources\n",
                resourcePath.c_str(), why.c_str());
    }
    UseResFile(previous);
    plugin->entry = reinterpret_cast<FMX_ExternCallProc>(entry);
    plugin->library = library;
    plugin->resFileRef = ref;
    plugin->path = where;
    ReadFunctionNames(plugin);
    return 0;
}

void HostUnloadPlugin(HostPlugin *plugin)
{
    if (plugin->resFileRef > 0)
        CloseResFile(plugin->resFileRef);
    if (plugin->library)
        dlclose(plugin->library);
    plugin->entry = nullptr;
    plugin->library = nullptr;
    plugin->resFileRef = -1;
}

int32_t HostCallRaw(HostPlugin *plugin, uint8_t whichCall, int16_t hostVersion, int8_t parm1,
                    int32_t parm2, FMX_Handle parm3, FMX_Handle resultHandle)
{
    /* The plug-in keeps the block's address between calls (an event handler that runs
     * between calls allocates through it), so blocks live for the whole process: one per
     * nesting level, as FileMaker keeps the block of the innermost call valid. */
    static FMX_ExternCallBlock blocks[16];
    static int depth = 0;
    if (depth >= 16)
        return -1;
    FMX_ExternCallBlock &block = blocks[depth];
    block = FMX_ExternCallBlock{};
    HostMemoryInstall(&block);
    block.hostVersion = hostVersion;
    block.resFileRef = plugin->resFileRef;
    block.whichCall = whichCall;
    block.parm1 = parm1;
    block.parm2 = parm2;
    block.parm3 = parm3;
    if (resultHandle)
        block.result.handle = resultHandle;
    else
        block.result.value = 0;
    HostMarkHandleInCall(parm3, true);
    HostMarkHandleInCall(resultHandle, true);
    depth++;
    if (plugin->entry)
        plugin->entry(&block);
    depth--;
    HostMarkHandleInCall(parm3, false);
    HostMarkHandleInCall(resultHandle, false);
    return resultHandle ? 0 : block.result.value;
}

int32_t HostInit(HostPlugin *plugin, int16_t hostVersion)
{
    gHostVersionInUse = hostVersion;
    return HostCallRaw(plugin, kFMXT_Init, hostVersion, 0, 0, nullptr, nullptr);
}

void HostIdle(HostPlugin *plugin, int8_t idleLevel)
{
    HostCallRaw(plugin, kFMXT_Idle, gHostVersionInUse, idleLevel, 0, nullptr, nullptr);
}

/* Makes the argument and an empty result handle, runs call on them and returns the
 * result's bytes; both handles are the host's and go afterwards. */
static std::string CallWithTextHandles(const std::string &argBytes,
                                       const std::function<void(FMX_Handle, FMX_Handle)> &call)
{
    FMX_Handle argument = HostNewTextHandle(argBytes);
    FMX_Handle result = HostNewTextHandle(std::string());
    call(argument, result);
    std::string text = HostHandleBytes(result);
    HostDisposeHandle(argument);
    HostDisposeHandle(result);
    return text;
}

std::string HostCallExternal(HostPlugin *plugin, int32_t funcId, const std::string &arg)
{
    return CallWithTextHandles(arg, [&](FMX_Handle argument, FMX_Handle result) {
        HostCallRaw(plugin, kFMXT_External, gHostVersionInUse, 0, funcId, argument, result);
    });
}

std::string HostCallCoreFunction(void (*function)(long, char **, char **), long funcId, const std::string &argument)
{
    return CallWithTextHandles(argument + std::string(1, '\0'),
                               [&](FMX_Handle arg, FMX_Handle result) { function(funcId, arg, result); });
}

void HostShutdown(HostPlugin *plugin)
{
    HostCallRaw(plugin, kFMXT_Shutdown, gHostVersionInUse, 0, 0, nullptr, nullptr);
}

int HostFunctionId(const HostPlugin *plugin, const std::string &name)
{
    if (name.empty())
        return -1;
    if (plugin->ids.empty()) {
        /* The first of two equal names wins, as a search in order would find it. */
        for (int id = 0; id < kFunctionCount; id++)
            if (!plugin->names[id].empty())
                plugin->ids.emplace(LowerCase(plugin->names[id]), id);
    }
    auto found = plugin->ids.find(LowerCase(name));
    return found == plugin->ids.end() ? -1 : found->second;
}
