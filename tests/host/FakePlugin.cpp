/*
 * FakePlugin.cpp: the fake plug-in behind the host tests (see FakePlugin.h). It uses
 * only the call block's memory callbacks, as a real plug-in must.
 */
#include "FakePlugin.h"

#include <cctype>
#include <cstring>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/Processes.h"
#include "platform/Toolbox.h"

int gFakeCalls[8];
int gFakeLastIdleLevel = -1;

namespace {

FMX_ExternCallBlock *gFakeBlock = nullptr;
std::vector<FMX_Handle> gFakeLeaks;

std::string ReadArgument(FMX_Handle h)
{
    int32_t size = gFakeBlock->getHandleSize(h);
    gFakeBlock->lockHandle(h);
    std::string text(*h, static_cast<size_t>(size));
    gFakeBlock->unlockHandle(h);
    return text;
}

void SetResult(FMX_Handle h, const std::string &text)
{
    gFakeBlock->setHandleSize(h, static_cast<int32_t>(text.size()));
    if (gFakeBlock->getHandleSize(h) != static_cast<int32_t>(text.size()))
        return;
    gFakeBlock->lockHandle(h);
    if (!text.empty())
        memcpy(*h, text.data(), text.size());
    gFakeBlock->unlockHandle(h);
}

void SendDoScript(const std::string &name)
{
    OSType self = PlatformProcessSignature();
    AEAddressDesc address;
    AppleEvent event, reply;
    AEInitializeDesc(&address);
    AEInitializeDesc(&event);
    AEInitializeDesc(&reply);
    if (AECreateDesc(typeApplSignature, &self, sizeof self, &address) == noErr &&
        AECreateAppleEvent(kAEMiscStandards, kAEDoScript, &address, kAutoGenerateReturnID, kAnyTransactionID,
                           &event) == noErr &&
        AEPutParamPtr(&event, keyDirectObject, typeChar, name.data(), static_cast<int32_t>(name.size())) == noErr)
        AESend(&event, &reply, kAENoReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&event);
    AEDisposeDesc(&address);
}

std::string ShowAlert(const std::string &text)
{
    DialogSpec theSpec{};
    theSpec.kind = 'N';
    theSpec.text = text.c_str();
    theSpec.buttons[0] = "OK";
    theSpec.buttons[1] = "Cancel";
    theSpec.buttons[2] = "";
    theSpec.shown[0] = theSpec.shown[1] = 1;
    theSpec.defaultButton = 1;
    theSpec.cancelButton = 2;
    theSpec.icon = -1;
    theSpec.caption = "";
    return std::to_string(RunModalDialog(&theSpec));
}

void FakeExternal(int32_t id, FMX_Handle arg, FMX_Handle result)
{
    std::string text = ReadArgument(arg);
    switch (id) {
    case 0:
        SetResult(result, text);
        break;
    case 1:
        for (char &c : text)
            c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
        SetResult(result, text);
        break;
    case 2:
        SetResult(result, "\t");
        break;
    case 3: {
        FMX_Handle kept = gFakeBlock->newHandle(4);
        if (kept)
            gFakeLeaks.push_back(kept);
        SetResult(result, "leaked");
        break;
    }
    case 4:
        SendDoScript(text);
        break;
    case 5:
        SetResult(result, ShowAlert(text));
        break;
    default:
        break;
    }
}

void FakeEntry(FMX_ExternCallBlock *block)
{
    gFakeBlock = block;
    if (block->whichCall < 8)
        gFakeCalls[block->whichCall]++;
    switch (block->whichCall) {
    case kFMXT_Init:
        block->result.value = block->hostVersion >= 50 && block->hostVersion <= 255 ? 51 : -1;
        break;
    case kFMXT_Idle:
        gFakeLastIdleLevel = block->parm1;
        break;
    case kFMXT_External:
        FakeExternal(block->parm2, block->parm3, block->result.handle);
        break;
    default:
        break;
    }
}

}  // namespace

void FakePluginInstall(HostPlugin *plugin)
{
    static const char *const names[] = {"FakeEcho", "FakeUpper", "FakeTab", "FakeLeak", "FakeDoScript", "FakeAlert"};
    plugin->entry = FakeEntry;
    plugin->library = nullptr;
    plugin->resFileRef = -1;
    for (int i = 0; i < 66; i++)
        plugin->names[i] = i < 6 ? names[i] : "";
    memset(gFakeCalls, 0, sizeof gFakeCalls);
}

void FakePluginFreeLeaks(void)
{
    FMX_ExternCallBlock block{};
    HostMemoryInstall(&block);
    for (FMX_Handle h : gFakeLeaks)
        block.disposeHandle(h);
    gFakeLeaks.clear();
}
