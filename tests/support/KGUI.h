/* What every Objective-C test of windows and views needs, on the private
 * display and servers of tests/support/run-with-display: the shared
 * application, windows with a content view, spinning the run loop, timers
 * that end modal panels and sheets (target/selector timers: gcc has no
 * blocks), and screenshots kept in the build folder.  Include once, in the
 * test's only source file, after KTest.h. */
#ifndef KORU_TESTS_KGUI_H
#define KORU_TESTS_KGUI_H

#import <AppKit/AppKit.h>

/* The shared application.  It is not sent finishLaunching: that waits on
 * the X server for the application icon and can hang a test process. */
static inline NSApplication *KGUISharedApplication(void)
{
    return [NSApplication sharedApplication];
}

/* A titled, closable, resizable window with a plain content view, shown on
 * screen at contentRect (screen coordinates).  The caller owns it and ends
 * it with KGUICloseWindow. */
static inline NSWindow *KGUIMakeWindow(NSRect contentRect, NSString *title)
{
    KGUISharedApplication();
    NSWindow *window = [[NSWindow alloc]
        initWithContentRect:contentRect
                  styleMask:NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask
                    backing:NSBackingStoreBuffered
                      defer:NO];
    [window setReleasedWhenClosed:NO];
    NSView *content = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, NSWidth(contentRect),
                                                               NSHeight(contentRect))];
    [window setContentView:content];
    [content release];
    if (title != nil)
        [window setTitle:title];
    [window orderFront:nil];
    return window;
}

static inline void KGUICloseWindow(NSWindow *window)
{
    [window orderOut:nil];
    [window close];
    [window release];
}

/* Runs the main run loop (default mode) for seconds, handling events. */
static inline void KGUISpin(NSTimeInterval seconds)
{
    NSDate *until = [NSDate dateWithTimeIntervalSinceNow:seconds];
    while ([until timeIntervalSinceNow] > 0) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event != nil)
            [NSApp sendEvent:event];
        [pool drain];
    }
}

/* Spins until condition(context) answers YES (YES) or limit seconds pass
 * (NO).  The limit only keeps a broken test from hanging. */
static inline BOOL KGUISpinUntil(BOOL (*condition)(void *), void *context, NSTimeInterval limit)
{
    NSDate *until = [NSDate dateWithTimeIntervalSinceNow:limit];
    while (!condition(context)) {
        if ([until timeIntervalSinceNow] <= 0)
            return NO;
        KGUISpin(0.02);
    }
    return YES;
}

/* The target of the dismissing timers. */
@interface KGUITimerTarget : NSObject
@end

@implementation KGUITimerTarget

- (void)stopModal:(NSTimer *)timer
{
    [NSApp stopModalWithCode:[[timer userInfo] intValue]];
}

- (void)endSheet:(NSTimer *)timer
{
    NSArray *info = [timer userInfo];
    NSWindow *sheet = [info objectAtIndex:0];
    [NSApp endSheet:sheet returnCode:[[info objectAtIndex:1] intValue]];
    [sheet orderOut:nil];
}

/* The frontmost sheet of the window, whatever made it (an alert, a panel). */
- (void)endAttachedSheet:(NSTimer *)timer
{
    NSArray *info = [timer userInfo];
    NSWindow *sheet = [[info objectAtIndex:0] attachedSheet];
    if (sheet == nil)
        return;
    [NSApp endSheet:sheet returnCode:[[info objectAtIndex:1] intValue]];
    [sheet orderOut:nil];
}

@end

static inline void KGUIScheduleTimer(NSTimeInterval delay, SEL selector, id userInfo)
{
    KGUITimerTarget *target = [[[KGUITimerTarget alloc] init] autorelease];
    NSTimer *timer = [NSTimer timerWithTimeInterval:delay target:target selector:selector
                                           userInfo:userInfo repeats:NO];
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    [loop addTimer:timer forMode:NSDefaultRunLoopMode];
    [loop addTimer:timer forMode:NSModalPanelRunLoopMode];
    [loop addTimer:timer forMode:NSEventTrackingRunLoopMode];
}

/* After delay seconds, ends the running modal session (runModalForWindow:,
 * NSRunAlertPanel, an NSAlert's runModal) with code as its answer. */
static inline void KGUIStopModalAfter(NSTimeInterval delay, int code)
{
    KGUIScheduleTimer(delay, @selector(stopModal:), [NSNumber numberWithInt:code]);
}

/* After delay seconds, ends sheet with returnCode and orders it out. */
static inline void KGUIEndSheetAfter(NSTimeInterval delay, NSWindow *sheet, int returnCode)
{
    KGUIScheduleTimer(delay, @selector(endSheet:),
                      [NSArray arrayWithObjects:sheet, [NSNumber numberWithInt:returnCode], nil]);
}

/* After delay seconds, ends whatever sheet window then has attached. */
static inline void KGUIEndAttachedSheetAfter(NSTimeInterval delay, NSWindow *window, int returnCode)
{
    KGUIScheduleTimer(delay, @selector(endAttachedSheet:),
                      [NSArray arrayWithObjects:window, [NSNumber numberWithInt:returnCode], nil]);
}

/* Writes a PNG of the window (its frame, decorations included) or, for nil,
 * of the whole screen to <build>/test-artifacts/<name>, with ImageMagick's
 * import from the X server.  Answers the file's path, nil on failure. */
static inline NSString *KGUIScreenshot(NSWindow *window, NSString *name)
{
    NSString *folder = [[NSString stringWithUTF8String:KORU_BUILD_DIR]
                           stringByAppendingPathComponent:@"test-artifacts"];
    [[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES
                                               attributes:nil error:NULL];
    NSString *path = [folder stringByAppendingPathComponent:name];
    [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
    /* Let pending drawing reach the server first. */
    [window display];
    [NSApp updateWindows];
    KGUISpin(0.2);
    NSMutableArray *arguments = [NSMutableArray arrayWithObjects:@"-window", @"root", nil];
    if (window != nil) {
        NSRect frame = [window frame];
        CGFloat screenHeight = NSHeight([[[NSScreen screens] objectAtIndex:0] frame]);
        [arguments addObject:@"-crop"];
        [arguments addObject:[NSString stringWithFormat:@"%dx%d+%d+%d", (int)NSWidth(frame),
                                  (int)NSHeight(frame), (int)NSMinX(frame),
                                  (int)(screenHeight - NSMaxY(frame))]];
        [arguments addObject:@"+repage"];
    }
    [arguments addObject:path];
    NSTask *task = [[[NSTask alloc] init] autorelease];
    [task setLaunchPath:@"/usr/bin/import"];
    [task setArguments:arguments];
    @try {
        [task launch];
        [task waitUntilExit];
    } @catch (NSException *exception) {
        return nil;
    }
    if ([task terminationStatus] != 0 || ![[NSFileManager defaultManager] fileExistsAtPath:path])
        return nil;
    return path;
}

#endif
