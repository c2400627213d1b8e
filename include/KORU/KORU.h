/* KORU: the toolkit's umbrella header.
 *
 * C and C++ hosts get the exported C functions over CoreFoundation and
 * Carbon types always, and the class layer when compiled as C++.
 * Objective-C hosts also get the Foundation and AppKit extensions.  The
 * platform headers (CoreFoundation, CoreServices, ApplicationServices) come
 * along under their Mac names. */
#ifndef KORU_KORU_H
#define KORU_KORU_H

/* Objective-C: first of all, before anything imports the Objective-C
 * runtime header (the Carbon headers bring in AppKit): the class Method is
 * then declared by its name (see KORU/Method.h). */
#ifdef __OBJC__
#import <KORU/Method.h>
#endif

#include <CoreFoundation/CoreFoundation.h>
#include <Carbon/Carbon.h>

/* Exported C functions. */
#include <KORU/Debug.h>
#include <KORU/LogSupport.h>
#include <KORU/CFStringUtilities.h>
#include <KORU/CFURLUtilities.h>
#include <KORU/FSUtilities.h>
#include <KORU/AppleEventUtilities.h>
#include <KORU/CarbonUIUtilities.h>
#include <KORU/SystemInfo.h>
#include <KORU/BitFlags.h>
#include <KORU/MemoryCipher.h>
#include <KORU/ExitPool.h>
#include <KORU/BundleImages.h>
#include <KORU/URLLaunching.h>

/* The class layer. */
#ifdef __cplusplus
#include <KORU/WString.h>
#include <KORU/CStr.h>
#include <KORU/Lockable.h>
#include <KORU/Utils.h>
#include <KORU/FileLocation.h>
#include <KORU/FileUtils.h>
#include <KORU/CommunicationLibrary.h>
#endif

/* The Foundation and AppKit extensions. */
#ifdef __OBJC__
#import <KORU/TreeRound.h>
#import <KORU/CommandTool.h>
#import <KORU/DiskImage.h>
#import <KORU/TableController.h>
/* +[NSThread sleepForTimeInterval:] is Foundation's own here and is not
 * redefined. */
#import <KORU/NSObject+FoundationX.h>
#import <KORU/NSArray+FoundationX.h>
#import <KORU/NSDictionary+FoundationX.h>
#import <KORU/NSData+FoundationX.h>
#import <KORU/NSNumber+FoundationX.h>
#import <KORU/NSUserDefaults+FoundationX.h>
#import <KORU/NSBundle+FoundationX.h>
#import <KORU/NSFileManager+FoundationX.h>
#import <KORU/NSString+FoundationX.h>
#import <KORU/NSString+FoundationXText.h>
#import <KORU/AppKitX.h>
#import <KORU/FileIconView.h>
#import <KORU/MenuButton.h>
#import <KORU/NSBitmapImageRep+CGImage.h>
#endif

#endif
