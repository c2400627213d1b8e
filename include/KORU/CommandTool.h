/* CommandTool: runs one command-line program as a child process, optionally
 * feeds it bytes on its standard input, collects what it writes on standard
 * output and standard error, and tells its owner when it has finished.
 *
 * A synchronous run (run:NO) happens on the caller's thread and returns when
 * the child has exited.  An asynchronous run (run:YES) happens on a detached
 * worker thread; a 0.2-second timer on the caller's run loop notices its end
 * and posts CommandToolDidRunNotification there, with the tool as object and
 * no user information.  Input is written while both captured streams are
 * read, so neither side blocks however much the child reads or writes.
 *
 * The tool retains its path, arguments, input and capture buffers; its
 * delegate is not retained.  Delegate callbacks run on the thread that runs
 * the child (the worker thread of an asynchronous run), standard output
 * before standard error within each round of reading.  During an asynchronous
 * run the owner must not change the tool's settings or read its buffers until
 * the notification has arrived; only kill may be sent meanwhile.
 *
 * "succeeded" means that the program was launched and ran to its end; its
 * exit status is not examined.  A path that does not name an executable
 * regular file fails the run (and, with debug output on, logs
 * "-[CommandTool runCore:]" with the reason). */
#ifndef KORU_COMMANDTOOL_H
#define KORU_COMMANDTOOL_H

#import <Foundation/Foundation.h>

/* "CommandToolDidRunNotification": posted when an asynchronous run has ended. */
extern NSString *const CommandToolDidRunNotification;

@interface CommandTool : NSObject
{
    NSTask *mTask;
    id mDelegate;
    NSMutableData *mOutData;
    NSMutableData *mErrData;
    NSData *mInData;
    NSString *mToolPath;
    NSArray *mArgs;
    BOOL mSucceeded;
    BOOL mRunning;
    NSTimer *mRunCheckTimer;
}

/* A new autoreleased tool for the executable path; nil for a nil path. */
+ (id)commandToolWithPath:(NSString *)path;

/* Retains path; nil (the half-made object released) for a nil path. */
- (id)initWithPath:(NSString *)path;

/* A tool whose path is "", to be given one with setExecutePath:. */
- (id)init;

- (NSString *)executePath;
/* Retains the new path; nil clears it (a run then fails). */
- (void)setExecutePath:(NSString *)path;

/* The arguments, without the program itself.  nil is ignored, so arguments
 * once set cannot be cleared. */
- (void)setArguments:(NSArray *)arguments;

/* The bytes written to the child's standard input.  nil is ignored. */
- (void)setInputData:(NSData *)data;

/* YES captures the stream into a buffer (made empty when there was none);
 * NO releases the buffer and the stream goes to this process's own. */
- (void)setReadStandardOutput:(BOOL)flag;
- (void)setReadStandardError:(BOOL)flag;

/* The capture buffers of the last run; nil while capture is off. */
- (NSData *)standardOutputData;
- (NSData *)standardErrorData;

- (id)delegate;
/* Not retained. */
- (void)setDelegate:(id)delegate;

/* Starts a run.  NO at once while a run is in progress.  Synchronous: the
 * answer is succeeded.  Asynchronous: YES, and the notification follows. */
- (BOOL)run:(BOOL)asynchronous;

/* The body of a run (the worker thread's entry point); the argument is
 * ignored.  Call run: instead. */
- (void)runCore:(id)ignored;

/* The completion poll of an asynchronous run. */
- (void)commandToolDidRunCheckTimer:(NSTimer *)timer;

/* YES once the last run has ended after launching its program. */
- (BOOL)succeeded;

/* Sends terminate to the child of a run in progress; nothing otherwise. */
- (void)kill;

@end

/* The delegate's optional callbacks, each given the chunk just read (already
 * appended to the buffer).  Answering NO stops all reading for this run; the
 * tool still waits for the child's exit. */
@interface NSObject (CommandToolDelegate)
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)data;
- (BOOL)commandTool:(CommandTool *)tool readStandardErrorData:(NSData *)data;
@end

#endif
