/* The checked state of buttons, cells and menu items, menu look-up by tag
 * paths, and splicing the responder chain, on real AppKit objects. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

KT_CASE(CheckedIsTheState)
{
    KGUISharedApplication();
    NSButton *button = [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 80, 20)] autorelease];
    [button setButtonType:NSSwitchButton];
    [button setChecked:YES];
    [button setChecked:NO];
    KT_EXPECT([button state] == 0 && ![button checked]);
    [button setAllowsMixedState:YES];
    [button setState:-1];
    KT_EXPECT([button checked]); /* mixed counts as checked */
    NSButtonCell *cell = [[[NSButtonCell alloc] initTextCell:@"x"] autorelease];
    [cell setChecked:YES];
    KT_EXPECT([cell state] == 1 && [cell checked]);
    NSMenuItem *item = [[[NSMenuItem alloc] initWithTitle:@"x" action:NULL keyEquivalent:@""] autorelease];
    [item toggleChecked];
    KT_EXPECT([item state] == 1 && [item checked]);
    [item toggleChecked];
    KT_EXPECT([item state] == 0 && ![item checked]);
}

static NSMenuItem *AddItem(NSMenu *menu, NSString *title, int tag)
{
    NSMenuItem *item = [menu addItemWithTitle:title action:NULL keyEquivalent:@""];
    [item setTag:tag];
    return item;
}

static NSMenuItem *LookUp(NSMenu *menu, int first, ...)
{
    va_list list;
    va_start(list, first);
    NSMenuItem *item = [menu itemWithTags:first arguments:list];
    va_end(list);
    return item;
}

KT_CASE(ItemWithTagsFollowsSubmenus)
{
    KGUISharedApplication();
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Main"] autorelease];
    NSMenuItem *three = AddItem(menu, @"Three", 3);
    NSMenuItem *bare = AddItem(menu, @"Bare", 4);
    NSMenu *sub = [[[NSMenu alloc] initWithTitle:@"Sub"] autorelease];
    NSMenuItem *seven = AddItem(sub, @"Seven", 7);
    NSMenu *subsub = [[[NSMenu alloc] initWithTitle:@"SubSub"] autorelease];
    NSMenuItem *nine = AddItem(subsub, @"Nine", 9);
    [seven setSubmenu:subsub];
    [menu setSubmenu:sub forItem:three];
    KT_EXPECT(([menu itemWithTags:3, 0]) == three && ([menu itemWithTags:3, 7, 9, 0]) == nine);
    KT_EXPECT(([menu itemWithTags:3, 8, 0]) == nil && ([menu itemWithTags:5, 0]) == nil);
    KT_EXPECT(([menu itemWithTags:4, 7, 0]) == nil); /* item 4 has no submenu */
    KT_EXPECT((([menu itemWithTags:0, 3, 0]) == nil) && (LookUp(menu, 4, 0) == bare));
    KT_EXPECT(([menu itemWithTags:3 arguments:NULL]) == nil);
}

KT_CASE(InsertNextResponderSplicesTheChain)
{
    KGUISharedApplication();
    NSResponder *a = [[[NSResponder alloc] init] autorelease];
    NSResponder *b = [[[NSResponder alloc] init] autorelease];
    NSResponder *c = [[[NSResponder alloc] init] autorelease];
    [a insertNextResponder:nil];
    KT_EXPECT([a nextResponder] == nil);
    [a insertNextResponder:c];
    [a insertNextResponder:b];
    [a insertNextResponder:b]; /* already next: unchanged */
    KT_EXPECT([a nextResponder] == b && [b nextResponder] == c && [c nextResponder] == nil);
    [a logResponderChain];
}

KT_MAIN()
