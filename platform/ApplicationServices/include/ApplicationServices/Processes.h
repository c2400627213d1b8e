/* Process Manager: the running processes of the current user.
 *
 * A ProcessSerialNumber is {0, pid}.  Two numbers are reserved: {0, 2}
 * (kCurrentProcess) always means the calling process and {0, 1}
 * (kSystemProcess) the system's first process; {0, 0} (kNoProcess) means none
 * and starts an enumeration.  A process's bundle location is the ".app" folder
 * around its executable (/proc/<pid>/exe), else the executable itself; its name
 * is that bundle's CFBundleName, else the executable's file name.
 *
 * The front process is the owner (_NET_WM_PID) of the active window
 * (_NET_ACTIVE_WINDOW) when an X display is reachable, else the current
 * process.  The X library is loaded on first use, so programs without a
 * display never need it.  All functions may be called from any thread. */
#ifndef APPLICATIONSERVICES_PROCESSES_H
#define APPLICATIONSERVICES_PROCESSES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
} ProcessSerialNumber;
typedef ProcessSerialNumber *ProcessSerialNumberPtr;

enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

/* {0, pid of the caller}.  paramErr for a NULL argument. */
OSErr GetCurrentProcess(ProcessSerialNumber *PSN);

/* The owner of the active window, or the current process without a display
 * (or when the active window names no process).  paramErr for NULL. */
OSErr GetFrontProcess(ProcessSerialNumber *PSN);

/* The current user's next process in pid order after *PSN ({0, 0} starts at
 * the first); kernel threads are skipped.  procNotFound after the last one,
 * paramErr for NULL. */
OSErr GetNextProcess(ProcessSerialNumber *PSN);

/* Asks the window manager to activate the process's window (the EWMH
 * _NET_ACTIVE_WINDOW request).  Without a display only the current process
 * counts as front, so it answers noErr for that one and procNotFound for
 * others; procNotFound too when the process has no window. */
OSErr SetFrontProcess(const ProcessSerialNumber *PSN);

/* *result becomes whether the two numbers name the same process (so
 * kCurrentProcess equals the caller's own {0, pid}).  paramErr for NULL. */
OSErr SameProcess(const ProcessSerialNumber *PSN1, const ProcessSerialNumber *PSN2,
                  Boolean *result);

/* The process's name in a new string the caller releases; *name is NULL on
 * failure (procNotFound for a process that is gone, paramErr for NULL). */
OSStatus CopyProcessName(const ProcessSerialNumber *PSN, CFStringRef *name);

/* The process's bundle location as an FSRef.  procNotFound when the process
 * is gone or its executable cannot be seen, paramErr for NULL. */
OSStatus GetProcessBundleLocation(const ProcessSerialNumber *psn, FSRef *location);

/* The pid behind a number, and the number of a pid.  procNotFound when no
 * such process runs, paramErr for NULL. */
OSStatus GetProcessPID(const ProcessSerialNumber *psn, pid_t *pid);
OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber *psn);

/* What GetProcessInformation fills.  processName and processAppSpec (or
 * processAppRef) point at the caller's storage and may be NULL. */
typedef struct ProcessInfoRec {
    UInt32 processInfoLength; /* set by the caller to sizeof(ProcessInfoRec) */
    StringPtr processName;    /* a Str31: the name, cut to 31 bytes */
    ProcessSerialNumber processNumber;
    UInt32 processType;       /* 'APPL' */
    OSType processSignature;  /* CFBundleSignature, else '????' */
    UInt32 processMode;       /* modeOnlyBackground for a process without a bundle */
    Ptr processLocation;      /* NULL */
    UInt32 processSize;       /* resident bytes */
    UInt32 processFreeMem;    /* 0 */
    ProcessSerialNumber processLauncher; /* the parent process */
    UInt32 processLaunchDate; /* ticks (1/60 s) since the system started */
    UInt32 processActiveTime; /* CPU time in ticks */
#if __LP64__
    FSRef *processAppRef;     /* the bundle location */
#else
    FSSpecPtr processAppSpec;
#endif
} ProcessInfoRec;
typedef ProcessInfoRec *ProcessInfoRecPtr;

enum {
    modeOnlyBackground = 0x00000400,
    modeGetFrontClicks = 0x00000200,
    modeCanBackground = 0x00001000
};

/* Fills info for the process; procNotFound when it is gone, paramErr for
 * NULL or a processInfoLength smaller than the record. */
OSErr GetProcessInformation(const ProcessSerialNumber *PSN, ProcessInfoRec *info);

enum { kProcessDictionaryIncludeAllInformationMask = (int)0xFFFFFFFF };

/* A dictionary the caller releases: "PSN" (number), "pid", "ParentPSN",
 * "CFBundleName", "CFBundleExecutable" (the executable's path),
 * "BundlePath", "CFBundleIdentifier" (when the bundle has one),
 * "FileType" and "FileCreator" (strings), "LSBackgroundOnly" and "IsHiddenAttr"
 * (booleans).  NULL when the process is gone or for NULL. */
CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber *PSN, UInt32 infoToReturn);

#ifdef __cplusplus
}
#endif

#endif
