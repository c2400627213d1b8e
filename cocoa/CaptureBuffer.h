/* CaptureBuffer: the mutable data CommandTool collects a child's output in.
 *
 * It is an ordinary NSMutableData to everyone who reads it; only its storage
 * differs.  Output of unknown length is appended in large chunks, and
 * GNUstep's own mutable data grows by allocating a new block and copying the
 * old one into it, so a gigabyte of output would be copied about twice over
 * and every fresh 4 KiB page faulted in separately.  This buffer keeps its
 * bytes in one anonymous mapping that grows in place or moves without
 * copying (mremap), backed by huge pages where the system offers them.
 * Not thread-safe, like any mutable data. */
#ifndef KORU_COCOA_CAPTUREBUFFER_H
#define KORU_COCOA_CAPTUREBUFFER_H

#import <Foundation/Foundation.h>

@interface CaptureBuffer : NSMutableData
{
    unsigned char *mBytes; /* the mapping, or NULL while capacity is 0 */
    NSUInteger mLength;
    NSUInteger mCapacity;
}

/* Reads at most maximum bytes from fd straight onto the end of the buffer:
 * read(2)'s answer, or -1 with errno ENOMEM when the buffer cannot grow. */
- (ssize_t)appendFromDescriptor:(int)fd maximum:(NSUInteger)maximum;

@end

#endif
