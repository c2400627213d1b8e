/* NSMenu(AppKitX): items reached through submenus by a list of tags. */
#import <KORU/AppKitX.h>

@implementation NSMenu (AppKitX)

- (NSMenuItem *)itemWithTags:(int)firstTag, ...
{
    va_list arguments;
    va_start(arguments, firstTag);
    NSMenuItem *item = [self itemWithTags:firstTag arguments:arguments];
    va_end(arguments);
    return item;
}

/* On this platform a va_list parameter is a pointer, so an absent list is a
 * NULL one. */
- (NSMenuItem *)itemWithTags:(int)firstTag arguments:(va_list)arguments
{
    if (firstTag == 0 || arguments == NULL)
        return nil;
    NSMenuItem *item = [self itemWithTag:firstTag];
    int tag;
    while (item != nil && (tag = va_arg(arguments, int)) != 0)
        item = [[item submenu] itemWithTag:tag];
    return item;
}

@end
