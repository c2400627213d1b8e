// Apple events and script execution.
#include <KORU/AppleEventUtilities.h>

#include <KORU/CFStringUtilities.h>
#include <KORU/Debug.h>

#include "CFReference.h"

#include <ApplicationServices/Processes.h>
#include <CoreServices/MacErrors.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using koru::CFReference;

namespace {

// A descriptor of our own: null from the start, disposed on every way out.
class OwnedDesc {
public:
    OwnedDesc() { AEInitializeDesc(&desc_); }
    ~OwnedDesc() { AEDisposeDesc(&desc_); }
    OwnedDesc(const OwnedDesc &) = delete;
    OwnedDesc &operator=(const OwnedDesc &) = delete;
    AEDesc *get() { return &desc_; }

    // Hands the descriptor on; ours is null again.
    AEDesc release()
    {
        AEDesc desc = desc_;
        AEInitializeDesc(&desc_);
        return desc;
    }

private:
    AEDesc desc_;
};

// The default scripting component, closed when the owner goes.
class ScriptingComponent {
public:
    ScriptingComponent() : instance_(OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype)) {}
    ~ScriptingComponent()
    {
        if (instance_ != nullptr)
            CloseComponent(instance_);
    }
    ScriptingComponent(const ScriptingComponent &) = delete;
    ScriptingComponent &operator=(const ScriptingComponent &) = delete;
    ComponentInstance get() const { return instance_; }

private:
    ComponentInstance instance_;
};

// A script or value id, disposed when the owner goes.
class OwnedScript {
public:
    explicit OwnedScript(ComponentInstance component) : component_(component) {}
    ~OwnedScript()
    {
        if (id_ != kOSANullScript)
            OSADispose(component_, id_);
    }
    OwnedScript(const OwnedScript &) = delete;
    OwnedScript &operator=(const OwnedScript &) = delete;
    OSAID *out() { return &id_; }
    OSAID get() const { return id_; }

private:
    ComponentInstance component_;
    OSAID id_ = kOSANullScript;
};

// The text of a 'TEXT' descriptor in the system encoding.
CFStringRef StringFromText(AEDesc *text)
{
    return CFStringCreateWithAEDesc(text, CFStringGetSystemEncoding());
}

// The result text of a script step: its error message, the fall-back text
// with the status, the displayed result, or nothing.
CFStringRef CreateResultText(ComponentInstance component, OSAError status, OSAID resultID)
{
    if (status == errOSAScriptError) {
        OwnedDesc message;
        OSAScriptError(component, kOSAErrorMessage, typeChar, message.get());
        return StringFromText(message.get());
    }
    if (status != noErr)
        return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("Unknown error (%li)"), static_cast<long>(status));
    if (resultID == kOSANullScript)
        return nullptr;
    OwnedDesc text;
    if (OSADisplay(component, resultID, typeChar, kOSAModeDisplayForHumans, text.get()) != noErr)
        return nullptr;
    return StringFromText(text.get());
}

void HandOut(CFStringRef text, CFStringRef *result)
{
    if (result != nullptr)
        *result = text;
    else if (text != nullptr)
        CFRelease(text);
}

bool ReadWholeFile(CFURLRef url, std::string *contents)
{
    char path[PATH_MAX];
    if (!CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8 *>(path), sizeof path))
        return false;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    contents->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return !file.bad();
}

CFURLRef CreateURLFromRef(const FSRef *ref)
{
    return ref != nullptr ? CFURLCreateFromFSRef(nullptr, ref) : nullptr;
}

} // namespace

// --- Sending ----------------------------------------------------------------

extern "C" Boolean AppleEventPutAppleEventParam(AppleEvent *event, const AppleEventParam *param)
{
    if (event == nullptr || param == nullptr || param->dataPtr == nullptr || param->dataSize <= 0)
        return false;
    OwnedDesc desc;
    if (AECreateDesc(param->descType, param->dataPtr, param->dataSize, desc.get()) != noErr)
        return false;
    return AEPutParamDesc(event, param->keyword, desc.get()) == noErr;
}

extern "C" Boolean AppleEventSendDataArray(DescType targetType, const void *targetData, Size targetSize,
                                           AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                                           const AppleEventParam *params, CFIndex paramCount)
{
    if (reply != nullptr)
        AEInitializeDesc(reply);
    if (targetData == nullptr || targetSize < 1)
        return false;
    OwnedDesc target;
    if (AECreateDesc(targetType, targetData, targetSize, target.get()) != noErr)
        return false;
    OwnedDesc event;
    if (AECreateAppleEvent(eventClass, eventID, target.get(), kAutoGenerateReturnID, kAnyTransactionID,
                           event.get()) != noErr)
        return false;
    for (CFIndex i = 0; params != nullptr && i < paramCount; ++i)
        AppleEventPutAppleEventParam(event.get(), &params[i]);
    OwnedDesc answer;
    const OSErr result = AESend(event.get(), answer.get(), reply != nullptr ? kAEQueueReply : kAENoReply,
                                kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    if (result != noErr) {
        // The format is the log line as it has always been written, "%l" and all.
        CFLogCore("AppleEventSendDataArray", 309, CFSTR("AESend failed (result=%l)"), static_cast<long>(result));
        return false;
    }
    if (reply != nullptr)
        *reply = answer.release();
    return true;
}

extern "C" Boolean AppleEventSendData(DescType targetType, const void *targetData, Size targetSize,
                                      AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                                      DescType dataType, const void *dataPtr, Size dataSize)
{
    if (dataSize > INT32_MAX)
        dataSize = 0; // too large for a parameter record: skipped like any bad size
    const AppleEventParam param = {keyDirectObject, dataType, dataPtr, static_cast<SInt32>(dataSize)};
    return AppleEventSendDataArray(targetType, targetData, targetSize, eventClass, eventID, reply, &param, 1);
}

extern "C" Boolean AppleEventSend(DescType targetType, const void *targetData, Size targetSize,
                                  AEEventClass eventClass, AEEventID eventID, AppleEvent *reply)
{
    return AppleEventSendData(targetType, targetData, targetSize, eventClass, eventID, reply, typeNull, nullptr, 0);
}

extern "C" Boolean AppleEventSendToSystemProcess(AEEventID eventID)
{
    const ProcessSerialNumber system = {0, kSystemProcess};
    return AppleEventSend(typeProcessSerialNumber, &system, sizeof system, kCoreEventClass, eventID, nullptr);
}

// --- Handlers and received events -------------------------------------------

extern "C" Boolean AppleEventInstallHandler(AEEventClass eventClass, AEEventID eventID,
                                            AEEventHandlerProcPtr handler, SRefCon refCon)
{
    if (handler == nullptr)
        return false;
    return AEInstallEventHandler(eventClass, eventID, NewAEEventHandlerUPP(handler), refCon, false) == noErr;
}

extern "C" Boolean AppleEventUninstallHandler(AEEventClass eventClass, AEEventID eventID,
                                              AEEventHandlerProcPtr handler)
{
    return AERemoveEventHandler(eventClass, eventID, handler, false) == noErr;
}

extern "C" Boolean AppleEventGetParamDescData(const AppleEvent *event, AEKeyword keyword, DescType desiredType,
                                              void *buffer, Size bufferSize)
{
    if (event == nullptr || buffer == nullptr || bufferSize < 1)
        return false;
    OwnedDesc param;
    if (AEGetParamDesc(event, keyword, desiredType, param.get()) != noErr)
        return false;
    const Size size = AEGetDescDataSize(param.get());
    if (size > bufferSize)
        return false;
    return AEGetDescData(param.get(), buffer, size) == noErr;
}

extern "C" CFIndex AppleEventCopyDataCore(const AEDesc *desc, DescType descType, CFMutableDataRef data)
{
    if (desc == nullptr || data == nullptr)
        return 0;
    long count = 0;
    if (AECountItems(desc, &count) == noErr) {
        for (long index = 1; index <= count; ++index) {
            OwnedDesc item;
            if (AEGetNthDesc(desc, index, typeWildCard, nullptr, item.get()) != noErr)
                continue;
            if (item.get()->descriptorType == descType) {
                const Size size = AEGetDescDataSize(item.get());
                std::vector<UInt8> bytes;
                try {
                    bytes.resize(static_cast<size_t>(size));
                } catch (...) {
                    continue; // an item whose buffer cannot be had is skipped
                }
                AEGetDescData(item.get(), bytes.data(), size);
                CFDataAppendBytes(data, bytes.data(), size);
            } else {
                AppleEventCopyDataCore(item.get(), descType, data);
            }
        }
    }
    return CFDataGetLength(data);
}

extern "C" CFDataRef AppleEventCopyData(const AEDesc *desc, DescType descType)
{
    if (desc == nullptr)
        return nullptr;
    CFReference<CFMutableDataRef> data(CFDataCreateMutable(nullptr, 0));
    if (!data || AppleEventCopyDataCore(desc, descType, data.get()) == 0)
        return nullptr;
    return data.release();
}

// --- Scripts ----------------------------------------------------------------

extern "C" Boolean CFStringExecuteAppleScript(CFStringRef source, CFStringRef *result)
{
    if (result != nullptr)
        *result = nullptr;
    if (CFStringIsVoid(source))
        return false;
    ScriptingComponent component;
    if (component.get() == nullptr)
        return false;
    char *bytes = CFStringAllocConvertableCString(source);
    if (bytes == nullptr)
        return false;
    OwnedDesc text;
    const OSErr made = AECreateDesc(typeChar, bytes, static_cast<Size>(std::strlen(bytes)), text.get());
    std::free(bytes);
    if (made != noErr)
        return false;
    OwnedScript script(component.get());
    OwnedScript value(component.get());
    OSAError status = OSACompile(component.get(), text.get(), kOSAModeNull, script.out());
    if (status == noErr && script.get() != kOSANullScript)
        status = OSAExecute(component.get(), script.get(), kOSANullScript, kOSAModeNull, value.out());
    HandOut(CreateResultText(component.get(), status, value.get()), result);
    return true;
}

extern "C" OSAID OSALoadFileFromURL(ComponentInstance component, CFURLRef url)
{
    if (component == nullptr || url == nullptr)
        return kOSANullScript;
    std::string contents;
    try {
        if (!ReadWholeFile(url, &contents) || contents.empty())
            return kOSANullScript;
    } catch (...) {
        return kOSANullScript;
    }
    OwnedDesc storage;
    if (AECreateDesc(typeOSAGenericStorage, contents.data(), static_cast<Size>(contents.size()), storage.get()) !=
        noErr)
        return kOSANullScript;
    OSAID script = kOSANullScript;
    if (OSALoad(component, storage.get(), kOSAModeNull, &script) != noErr)
        return kOSANullScript;
    return script;
}

extern "C" OSAID OSALoadFileFromRef(ComponentInstance component, const FSRef *ref)
{
    CFReference<CFURLRef> url(CreateURLFromRef(ref));
    return url ? OSALoadFileFromURL(component, url.get()) : OSAID(kOSANullScript);
}

extern "C" Boolean CFURLExecuteHandler(CFURLRef url, const AppleEvent *event, CFStringRef *result)
{
    if (result != nullptr)
        *result = nullptr;
    if (url == nullptr)
        return false;
    ScriptingComponent component;
    if (component.get() == nullptr)
        return false;
    OwnedScript script(component.get());
    *script.out() = OSALoadFileFromURL(component.get(), url);
    if (script.get() == kOSANullScript)
        return false;
    OwnedScript value(component.get());
    const OSAError status =
        event != nullptr ? OSAExecuteEvent(component.get(), event, script.get(), kOSAModeNull, value.out())
                         : OSAExecute(component.get(), script.get(), kOSANullScript, kOSAModeNull, value.out());
    HandOut(CreateResultText(component.get(), status, value.get()), result);
    return true;
}

extern "C" Boolean CFURLExecuteRun(CFURLRef url, CFStringRef *result)
{
    return CFURLExecuteHandler(url, nullptr, result);
}

extern "C" Boolean FSExecuteHandler(const FSRef *ref, const AppleEvent *event, CFStringRef *result)
{
    if (result != nullptr)
        *result = nullptr;
    CFReference<CFURLRef> url(CreateURLFromRef(ref));
    return url ? CFURLExecuteHandler(url.get(), event, result) : Boolean(false);
}

extern "C" Boolean FSExecuteRun(const FSRef *ref, CFStringRef *result)
{
    return FSExecuteHandler(ref, nullptr, result);
}
