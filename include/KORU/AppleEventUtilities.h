/* Apple events and script execution.
 *
 * Building and sending Apple events with typed parameters, installing and
 * removing handlers in the application's dispatch table, reading typed data
 * out of received events and descriptor lists, and running scripts with the
 * default scripting component ('osa ' / 'ascr'): source text, or a compiled
 * script file whose run handler or the handler for an event is executed.
 *
 * Every descriptor made here starts as the null descriptor and is disposed on
 * every way out; a reply handed to the caller is the caller's to dispose.
 * Script results come back as new CF strings for people (the caller releases
 * them): the result displayed as text, the script error's message, or
 * "Unknown error (<status>)".  The script functions answer true when the
 * script was attempted, whatever its outcome; the result text tells which.
 * Bad arguments give false, NULL or 0.  Only a failed send is logged (through
 * CFLogCore).  The functions may be used from one thread at a time. */
#ifndef KORU_APPLEEVENTUTILITIES_H
#define KORU_APPLEEVENTUTILITIES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/Files.h>
#include <OpenScripting/OSA.h>

CF_EXTERN_C_BEGIN

/* One parameter of an event: keyword, descriptor type, data and its size in
 * bytes.  A parameter whose data is NULL or whose size is not positive is
 * skipped. */
typedef struct AppleEventParam {
    AEKeyword keyword;
    DescType descType;
    const void *dataPtr;
    SInt32 dataSize;
} AppleEventParam;

/* --- Sending ----------------------------------------------------------- */

/* Builds an event of the class and id for the target address (its type, data
 * and size, e.g. 'psn ' and a ProcessSerialNumber), puts the parameters in
 * order (one that cannot be put is skipped) and sends it: with kAEQueueReply
 * when reply is given (the reply, a null descriptor if none came yet, is then
 * the caller's to dispose), with kAENoReply otherwise.  True when the send
 * succeeded; a failed send is logged.  False for NULL or empty target data. */
Boolean AppleEventSendDataArray(DescType targetType, const void *targetData, Size targetSize,
                                AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                                const AppleEventParam *params, CFIndex paramCount);

/* The same with one direct parameter ('----') of the type, data and size. */
Boolean AppleEventSendData(DescType targetType, const void *targetData, Size targetSize,
                           AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                           DescType dataType, const void *dataPtr, Size dataSize);

/* The same without parameters. */
Boolean AppleEventSend(DescType targetType, const void *targetData, Size targetSize,
                       AEEventClass eventClass, AEEventID eventID, AppleEvent *reply);

/* Sends 'aevt' eventID (kAERestart, kAEShutDown, kAELogOut, kAESleep, ...)
 * to the system process without waiting for a reply. */
Boolean AppleEventSendToSystemProcess(AEEventID eventID);

/* Puts the parameter into the event under its keyword; false for NULL
 * arguments, NULL data, a size that is not positive or a failed call. */
Boolean AppleEventPutAppleEventParam(AppleEvent *event, const AppleEventParam *param);

/* --- Handlers and received events -------------------------------------- */

/* Installs the handler in the application's dispatch table; false for a
 * NULL handler or a failed install. */
Boolean AppleEventInstallHandler(AEEventClass eventClass, AEEventID eventID,
                                 AEEventHandlerProcPtr handler, SRefCon refCon);

/* Removes the handler from the application's table; true on success. */
Boolean AppleEventUninstallHandler(AEEventClass eventClass, AEEventID eventID,
                                   AEEventHandlerProcPtr handler);

/* Copies the parameter, coerced to the desired type, into the buffer; false
 * for a NULL buffer, a size below 1, a missing parameter, a failed coercion
 * or data larger than the buffer. */
Boolean AppleEventGetParamDescData(const AppleEvent *event, AEKeyword keyword, DescType desiredType,
                                   void *buffer, Size bufferSize);

/* A new CFData with the data of every item of the type found at any depth of
 * the list or record, depth first in item order; NULL when none was found.
 * The caller releases it. */
CFDataRef AppleEventCopyData(const AEDesc *desc, DescType descType);

/* The worker of AppleEventCopyData: appends to data and answers its length
 * so far (0 for NULL arguments). */
CFIndex AppleEventCopyDataCore(const AEDesc *desc, DescType descType, CFMutableDataRef data);

/* --- Scripts ----------------------------------------------------------- */

/* Compiles and runs the source; *result (may be NULL) receives the result
 * text or NULL when the script gave no value.  False for NULL or empty source
 * or a missing component. */
Boolean CFStringExecuteAppleScript(CFStringRef source, CFStringRef *result);

/* Loads a compiled script file (its whole contents as 'scpt') into the
 * component; the script id, or 0 on any failure (an empty file included). */
OSAID OSALoadFileFromURL(ComponentInstance component, CFURLRef url);
OSAID OSALoadFileFromRef(ComponentInstance component, const FSRef *ref);

/* Loads the script file and runs the handler for the event, or its run
 * handler when event is NULL; *result (may be NULL) as above.  False for a
 * NULL URL or reference, a missing component or a file that does not load. */
Boolean CFURLExecuteHandler(CFURLRef url, const AppleEvent *event, CFStringRef *result);
Boolean CFURLExecuteRun(CFURLRef url, CFStringRef *result);
Boolean FSExecuteHandler(const FSRef *ref, const AppleEvent *event, CFStringRef *result);
Boolean FSExecuteRun(const FSRef *ref, CFStringRef *result);

CF_EXTERN_C_END

#endif
