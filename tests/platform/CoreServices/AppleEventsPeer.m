/* A second process for the Apple-event tests: installs its handlers, says
 * "ready" in its record file and runs its main run loop.  'KORU'/'echo'
 * records "echo <text>" and answers the text upper-cased, and once the run
 * loop is free again (the answer sent, whatever the reply mode) "done
 * <text>"; 'KORU'/'stop' ends it; 'KORU'/'hang' never answers (the process
 * waits for its end). */
#import <Foundation/Foundation.h>

#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>

#include <ctype.h>
#include <stdio.h>
#include <unistd.h>

static const char *gRecord;
static BOOL gDone;
static char gEchoed[300]; /* "done <text>" of the last echo, until recorded */

static void Record(const char *line)
{
    FILE *file = fopen(gRecord, "a");
    if (file != NULL) {
        fprintf(file, "%s\n", line);
        fclose(file);
    }
}

static OSErr Echo(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    char text[256] = {0};
    Size size = 0;
    if (AEGetParamPtr(event, keyDirectObject, typeUTF8Text, NULL, text, sizeof text - 1, &size) != noErr)
        return errAEParamMissed;
    char line[300];
    snprintf(line, sizeof line, "echo %s", text);
    Record(line);
    snprintf(gEchoed, sizeof gEchoed, "done %s", text);
    for (Size i = 0; i < size; ++i)
        text[i] = (char)toupper((unsigned char)text[i]);
    return AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, text, size);
}

static OSErr Stop(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)event, (void)reply, (void)refcon;
    gDone = YES;
    return noErr;
}

static OSErr Hang(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)event, (void)reply, (void)refcon;
    for (;;)
        pause();
    return noErr;
}

int main(int argc, char **argv)
{
    if (argc < 2)
        return 2;
    gRecord = argv[1];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    AEInstallEventHandler(0x4B4F5255, 0x6563686F, NewAEEventHandlerUPP(Echo), NULL, false);
    AEInstallEventHandler(0x4B4F5255, 0x73746F70, NewAEEventHandlerUPP(Stop), NULL, false);
    AEInstallEventHandler(0x4B4F5255, 0x68616E67, NewAEEventHandlerUPP(Hang), NULL, false);
    Record("ready");
    while (!gDone) {
        NSAutoreleasePool *inner = [NSAutoreleasePool new];
        [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode
                              beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.5]];
        if (gEchoed[0] != '\0') {
            Record(gEchoed);
            gEchoed[0] = '\0';
        }
        [inner drain];
    }
    [pool drain];
    return 0;
}
