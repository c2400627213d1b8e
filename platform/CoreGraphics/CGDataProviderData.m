/* A provider's bytes as a CFData (an NSData), shared rather than copied:
 * the bytes of a provider never change, and the data keeps the provider. */
#import <Foundation/Foundation.h>

#include "CGInternal.h"

@interface KORUDataProviderData : NSData {
    CGDataProviderRef mProvider;
}
- (id)initWithProvider:(CGDataProviderRef)provider;
@end

@implementation KORUDataProviderData

/* NSData's own initialisers all expect storage of their own; there is none
 * to set up beyond the provider. */
- (id)initWithProvider:(CGDataProviderRef)provider
{
    mProvider = CGDataProviderRetain(provider);
    return self;
}

- (const void *)bytes
{
    return mProvider->bytes;
}

- (NSUInteger)length
{
    return (NSUInteger)mProvider->length;
}

- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    return [self retain];
}

- (void)dealloc
{
    CGDataProviderRelease(mProvider);
    [super dealloc];
}

@end

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider)
{
    if (provider == NULL)
        return NULL;
    CFDataRef data = NULL;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        data = (CFDataRef)[[KORUDataProviderData alloc] initWithProvider:provider];
    } @catch (NSException *exception) {
        (void)exception;
        data = NULL;
    }
    [pool drain];
    return data;
}
