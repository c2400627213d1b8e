/* NSString(AppKitX) opening and NSWorkspace(AppKitX) on a private desktop:
 * the program runs itself again with HOME, the XDG folders and GNUstep's
 * application and library folders in a folder of its own, holding a
 * .desktop application and an application bundle whose commands record
 * that they ran.  xdg-open, Launch Services and GNUstep's workspace find
 * only those, so nothing of the real user is opened. */
#define _GNU_SOURCE /* nftw */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

static NSString *Root(void)
{
    return [NSString stringWithUTF8String:getenv("KORU_WORKSPACE_ROOT")];
}

static NSString *Recorded(void)
{
    NSString *text = [NSString stringWithContentsOfFile:[Root() stringByAppendingPathComponent:@"recorded.txt"]
                                               encoding:NSUTF8StringEncoding error:NULL];
    return text != nil ? text : @"";
}

static BOOL RecordedLine(void *line)
{
    return [[Recorded() componentsSeparatedByString:@"\n"] containsObject:(NSString *)line];
}

/* The recorder runs as a child of xdg-open or on its own: wait for its line. */
static BOOL Ran(NSString *line)
{
    return KGUISpinUntil(RecordedLine, line, 20);
}

KT_CASE(OpenShowAndOpenAsURL)
{
    KGUISharedApplication();
    NSString *note = [Root() stringByAppendingPathComponent:@"home/note.txt"];
    KT_ASSERT([@"note" writeToFile:note atomically:NO encoding:NSUTF8StringEncoding error:NULL]);
    KT_EXPECT([note open] && Ran([@"desktop " stringByAppendingString:note]));
    if ([[@"~/note.txt" stringByExpandingTildeInPath] isEqual:note]) {
        KT_EXPECT([@"~/note.txt" open] && Ran([@"desktop " stringByAppendingString:note]));
    }
    KT_EXPECT([@"koru://hello/world" openAsURL]);
    KT_EXPECT(Ran(@"desktop koru://hello/world"));
    KT_EXPECT([[@"file://" stringByAppendingString:note] openAsURL]);
    /* The file viewer shows the folder holding the item. */
    KT_EXPECT([note show] && Ran([@"desktop " stringByAppendingString:[note stringByDeletingLastPathComponent]]));
    NSString *missing = [Root() stringByAppendingPathComponent:@"home/missing.txt"];
    KT_EXPECT(![missing open] && ![missing show] && ![@"" open] && ![@"" show]);
    KT_EXPECT(![@"not a url" openAsURL] && ![@"" openAsURL]);
    KT_EXPECT(![@"koru-nothing://handles/this" openAsURL]);
    KT_EXPECT([Recorded() rangeOfString:@"missing"].location == NSNotFound);
}

KT_CASE(ApplicationsFoundAndLaunched)
{
    NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
    NSString *bundle = [Root() stringByAppendingPathComponent:@"home/GNUstep/Applications/KoruRecorder.app"];
    NSString *desktop = [Root() stringByAppendingPathComponent:@"data/applications/koru-recorder.desktop"];
    KT_EXPECT_EQUAL_OBJECTS([workspace applicationForName:@"KoruRecorder" creator:nil identifier:nil], bundle);
    KT_EXPECT_EQUAL_OBJECTS([workspace applicationForName:nil creator:@"KoRu" identifier:nil], bundle);
    KT_EXPECT_EQUAL_OBJECTS([workspace applicationForName:@"KoruRecorder.app" creator:@"KoRu"
                                               identifier:@"org.koru.Recorder"], bundle);
    KT_EXPECT_EQUAL_OBJECTS([workspace applicationForName:@"KORU Recorder" creator:nil identifier:nil], desktop);
    KT_EXPECT([workspace applicationForName:nil creator:nil identifier:nil] == nil);
    KT_EXPECT([workspace applicationForName:nil creator:@"None" identifier:nil] == nil);
    KT_EXPECT([workspace applicationForName:@"KoruRecorder" creator:@"KoRu" identifier:@"org.other"] == nil);
    KT_EXPECT([workspace applicationForName:nil creator:@"too long" identifier:nil] == nil);
    [workspace findApplications];
    KT_EXPECT([workspace launchApplication:@"KoruRecorder" withLaunchFlags:kLSLaunchDefaults] && Ran(@"bundle"));
    KT_EXPECT(![workspace launchApplication:@"" withLaunchFlags:kLSLaunchDefaults]);
    KT_EXPECT(![workspace launchApplication:nil withLaunchFlags:kLSLaunchDefaults]);
    KT_EXPECT(![workspace launchApplication:@"NoSuchKoruApplication" withLaunchFlags:kLSLaunchDefaults]);
}

/* No window manager runs, so no window is active: the front process is
 * this one, a program outside any bundle. */
KT_CASE(FrontProcess)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(50, 50, 200, 100), @"Front");
    char own[4096];
    ssize_t length = readlink("/proc/self/exe", own, sizeof own - 1);
    KT_ASSERT(length > 0);
    own[length] = '\0';
    NSString *path = [[NSWorkspace sharedWorkspace] frontProcessPath];
    KT_EXPECT_EQUAL_OBJECTS([path stringByResolvingSymlinksInPath],
                            [[NSString stringWithUTF8String:own] stringByResolvingSymlinksInPath]);
    KT_EXPECT([[NSWorkspace sharedWorkspace] frontProcessIdentifier] == nil);
    KGUICloseWindow(window);
}

/* ---- The private desktop, made by the shell before GNUstep starts.  The
 * test's GNUstep configuration puts the user's library and every domain's
 * applications in the private folder, so no installed application counts. */
static const char kMakeDesktop[] =
    "set -e; r=$KORU_WORKSPACE_ROOT; cd \"$r\"; a=home/GNUstep/Applications/KoruRecorder.app\n"
    "mkdir -p home/GNUstep/Library $a/Resources data/applications config none\n"
    "printf '#!/bin/sh\\necho \"$*\" >> \"%s/recorded.txt\"\\n' \"$r\" > record.sh\n"
    "printf '#!/bin/sh\\nexec \"%s/record.sh\" bundle\\n' \"$r\" > $a/KoruRecorder\n"
    "chmod 700 record.sh $a/KoruRecorder\n"
    "printf '[Desktop Entry]\\nType=Application\\nName=KORU Recorder\\nExec=%s/record.sh desktop %%u\\n"
    "MimeType=text/plain;inode/directory;x-scheme-handler/koru;\\n' \"$r\" > data/applications/koru-recorder.desktop\n"
    "printf '[Default Applications]\\ntext/plain=koru-recorder.desktop\\ninode/directory=koru-recorder.desktop\\n"
    "x-scheme-handler/koru=koru-recorder.desktop\\n' > config/mimeapps.list\n"
    "printf '{ NSExecutable = KoruRecorder; CFBundleExecutable = KoruRecorder; CFBundleIdentifier = org.koru.recorder;"
    " CFBundleSignature = KoRu; CFBundleName = KoruRecorder; }\\n' > $a/Resources/Info-gnustep.plist\n"
    "grep -v -e _DIR_APPS= -e _DIR_ADMIN_APPS= -e ^GNUSTEP_USER_DIR_LIBRARY= \"${GNUSTEP_CONFIG_FILE:-/dev/null}\""
    " > GNUstep.conf || true\n"
    "for d in USER LOCAL NETWORK SYSTEM; do\n"
    "  printf '\\nGNUSTEP_%s_DIR_APPS=%s\\nGNUSTEP_%s_DIR_ADMIN_APPS=%s\\n' $d \"$r/${a%/*}\" $d \"$r/${a%/*}\"\n"
    "done >> GNUstep.conf\n"
    "echo \"GNUSTEP_USER_DIR_LIBRARY=$r/home/GNUstep/Library\" >> GNUstep.conf\n";

static void SetUnder(const char *root, const char *name, const char *folder)
{
    char path[2048];
    snprintf(path, sizeof path, "%s/%s", root, folder);
    setenv(name, path, 1);
}

static int RemoveEntry(const char *path, const struct stat *info, int flag, struct FTW *walk)
{
    (void)info, (void)flag, (void)walk;
    return remove(path);
}

int main(int argc, char **argv)
{
    if (getenv("KORU_WORKSPACE_ROOT") != NULL)
        return KTRunAll(argc, argv);
    const char *tmp = getenv("TMPDIR");
    char root[1024];
    snprintf(root, sizeof root, "%s/koru-workspace.XXXXXX", tmp != NULL && *tmp ? tmp : "/tmp");
    if (mkdtemp(root) == NULL)
        return 1;
    setenv("KORU_WORKSPACE_ROOT", root, 1);
    int status = system(kMakeDesktop);
    const char *const folders[][2] = {{"HOME", "home"}, {"XDG_DATA_HOME", "data"}, {"XDG_DATA_DIRS", "none"},
                                      {"XDG_CONFIG_HOME", "config"}, {"XDG_CONFIG_DIRS", "config"},
                                      {"GNUSTEP_CONFIG_FILE", "GNUstep.conf"}};
    for (size_t i = 0; i < sizeof folders / sizeof folders[0]; i++)
        SetUnder(root, folders[i][0], folders[i][1]);
    /* xdg-open's generic way, not a desktop's own opener, and no browser:
     * what it cannot open goes to a command that fails. */
    setenv("BROWSER", "false", 1);
    static const char *const desktopNames[] = {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION",
                                               "GNOME_DESKTOP_SESSION_ID", "MATE_DESKTOP_SESSION_ID",
                                               "XDG_SESSION_DESKTOP", "WAYLAND_DISPLAY", NULL};
    for (const char *const *name = desktopNames; *name != NULL; name++)
        unsetenv(*name);
    pid_t child = status == 0 ? fork() : -1;
    if (child == 0) {
        execv("/proc/self/exe", argv);
        _exit(127);
    }
    if (child > 0)
        while (waitpid(child, &status, 0) < 0) {
        }
    nftw(root, RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
    return child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
