/* FileIconView: an image view that shows the icon of one or more files and
 * lets the user drag those files out.
 *
 * The icon is the shared workspace's (iconForFile: for one file,
 * iconForFiles: for several).  Pressing the mouse in the view starts a drag
 * whose drag pasteboard holds the paths as a file-name list
 * (NSFilenamesPboardType), with the icon centred under the pointer.  The
 * view keeps its paths (mFiles, retained).  Made with init, it also
 * registers for drags of file-name lists; made from a nib, awakeFromNib sets
 * it up.  Failures are logged with debug output on ("-[FileIconView init]",
 * "-[FileIconView makeMembers]", "-[FileIconView mouseDown:]"). */
#ifndef KORU_FILEICONVIEW_H
#define KORU_FILEICONVIEW_H

#import <AppKit/AppKit.h>

@interface FileIconView : NSImageView
{
    NSMutableArray *mFiles;
}

/* The superclass's init, then makeMembers; nil when either fails. */
- (id)init;
- (void)awakeFromNib;
/* Makes the empty path list when there is none yet; NO when it cannot. */
- (BOOL)makeMembers;
/* The single path (nil changes nothing) and its icon. */
- (void)setFile:(NSString *)path;
/* The paths (nil changes nothing) and their icon; no paths, no icon. */
- (void)setFiles:(NSArray *)paths;
/* Drags the files out. */
- (void)mouseDown:(NSEvent *)event;

@end

#endif
