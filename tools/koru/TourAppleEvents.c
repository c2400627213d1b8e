/* Tour section: an Apple event sent to this very process and answered by
 * its own handler, and a Lua script run with its result shown as text. */
#include "Tour.h"

#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>

#include <ctype.h>
#include <stdio.h>

typedef Boolean (*InstallFunction)(AEEventClass, AEEventID, AEEventHandlerProcPtr, SRefCon);
typedef Boolean (*UninstallFunction)(AEEventClass, AEEventID, AEEventHandlerProcPtr);
typedef Boolean (*SendDataFunction)(DescType, const void *, Size, AEEventClass, AEEventID, AppleEvent *,
                                    DescType, const void *, Size);
typedef Boolean (*GetParamFunction)(const AppleEvent *, AEKeyword, DescType, void *, Size);
typedef Boolean (*ExecuteFunction)(CFStringRef, CFStringRef *);

enum { kTourClass = 0x4B4F5255, kTourShout = 0x73686F75 }; /* 'KORU' 'shou' */

/* Answers the direct parameter upper-cased. */
static OSErr Shout(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    char text[64] = {0};
    Size size = 0;
    if (AEGetParamPtr(event, keyDirectObject, typeChar, NULL, text, sizeof text - 1, &size) != noErr)
        return errAEParamMissed;
    for (Size i = 0; i < size; ++i)
        text[i] = (char)toupper((unsigned char)text[i]);
    return AEPutParamPtr(reply, keyDirectObject, typeChar, text, size);
}

static bool TourAppleEvents(CFBundleRef bundle)
{
    InstallFunction install = (InstallFunction)KORUTourLookup(bundle, "AppleEventInstallHandler");
    UninstallFunction uninstall = (UninstallFunction)KORUTourLookup(bundle, "AppleEventUninstallHandler");
    SendDataFunction send = (SendDataFunction)KORUTourLookup(bundle, "AppleEventSendData");
    GetParamFunction getParam = (GetParamFunction)KORUTourLookup(bundle, "AppleEventGetParamDescData");
    ExecuteFunction execute = (ExecuteFunction)KORUTourLookup(bundle, "CFStringExecuteAppleScript");
    if (install == NULL || uninstall == NULL || send == NULL || getParam == NULL || execute == NULL)
        return false;

    const ProcessSerialNumber self = {0, kCurrentProcess};
    AppleEvent reply;
    char answer[64] = {0};
    bool ok = install(kTourClass, kTourShout, Shout, NULL) &&
              send(typeProcessSerialNumber, &self, sizeof self, kTourClass, kTourShout, &reply, typeChar,
                   "hello, me", 9) &&
              getParam(&reply, keyDirectObject, typeChar, answer, sizeof answer - 1);
    AEDisposeDesc(&reply);
    uninstall(kTourClass, kTourShout, Shout);
    printf("  'KORU'/'shou' \"hello, me\" to myself, reply: \"%s\"\n", answer);

    const char *source = "local t = {} for i = 1, 4 do t[i] = i * i end return t";
    CFStringRef script = CFStringCreateWithCString(NULL, source, kCFStringEncodingUTF8);
    CFStringRef result = NULL;
    ok = execute(script, &result) && result != NULL && ok;
    char text[256] = "<none>";
    if (result != NULL) {
        CFStringGetCString(result, text, sizeof text, kCFStringEncodingUTF8);
        CFRelease(result);
    }
    CFRelease(script);
    printf("  Lua: %s\n  result: %s\n", source, text);
    return ok;
}

KORU_TOUR_SECTION(60, "Apple events and scripts: an event to itself, a Lua script", TourAppleEvents)
