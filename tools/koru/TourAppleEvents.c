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

static GetParamFunction gGetParam;
static char gAnswer[64];

/* Answers the direct parameter upper-cased, and keeps the answer: the
 * sender's reply is queued, so it is read back here. */
static OSErr Shout(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    char text[64] = {0};
    Size size = 0;
    if (AEGetParamPtr(event, keyDirectObject, typeChar, NULL, text, sizeof text - 1, &size) != noErr)
        return errAEParamMissed;
    for (Size i = 0; i < size; ++i)
        text[i] = (char)toupper((unsigned char)text[i]);
    OSErr err = AEPutParamPtr(reply, keyDirectObject, typeChar, text, size);
    if (err == noErr && !gGetParam(reply, keyDirectObject, typeChar, gAnswer, sizeof gAnswer - 1))
        err = errAEParamMissed;
    return err;
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

    /* Handled inside the send; the reply itself comes later as an
     * 'aevt'/'ansr' event, so the one handed back now is null. */
    const ProcessSerialNumber self = {0, kCurrentProcess};
    AppleEvent reply;
    gGetParam = getParam;
    bool ok = install(kTourClass, kTourShout, Shout, NULL) &&
              send(typeProcessSerialNumber, &self, sizeof self, kTourClass, kTourShout, &reply, typeChar,
                   "hello, me", 9) &&
              reply.descriptorType == typeNull && gAnswer[0] != '\0';
    AEDisposeDesc(&reply);
    uninstall(kTourClass, kTourShout, Shout);
    printf("  'KORU'/'shou' \"hello, me\" to myself, answered: \"%s\" (the reply is queued)\n", gAnswer);

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
