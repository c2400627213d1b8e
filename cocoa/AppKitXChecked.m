/* checked / setChecked: on buttons, cells and menu items: the state, 1 on
 * and 0 off. */
#import <KORU/AppKitX.h>

@implementation NSButton (AppKitX)

- (BOOL)checked
{
    return [self state] != 0;
}

- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}

@end

@implementation NSCell (AppKitX)

- (BOOL)checked
{
    return [self state] != 0;
}

- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}

@end

@implementation NSMenuItem (AppKitX)

- (BOOL)checked
{
    return [self state] != 0;
}

- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}

- (void)toggleChecked
{
    [self setChecked:![self checked]];
}

@end
