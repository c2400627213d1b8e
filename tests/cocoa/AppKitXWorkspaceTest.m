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

/* ---- The private desktop (plain C: it is made before GNUstep starts). */

static void WriteText(const char root[1024], const char *name, const char *text, mode_t mode)
{
    char path[2048];
    snprintf(path, sizeof path, "%s/%s", root, name);
    FILE *file = fopen(path, "w");
    if (file != NULL) {
        fputs(text, file);
        fclose(file);
    }
    chmod(path, mode);
}

static void MakeFolders(const char root[1024], const char *const *names)
{
    char path[2048];
    for (; *names != NULL; names++) {
        snprintf(path, sizeof path, "%s/%s", root, *names);
        mkdir(path, 0700);
    }
}

/* The test's GNUstep configuration with the user's library and every
 * domain's applications in the private folder. */
static void WriteGNUstepConfig(const char root[1024])
{
    char path[2048], line[4096];
    snprintf(path, sizeof path, "%s/GNUstep.conf", root);
    FILE *out = fopen(path, "w");
    const char *given = getenv("GNUSTEP_CONFIG_FILE");
    FILE *in = given != NULL ? fopen(given, "r") : NULL;
    while (in != NULL && out != NULL && fgets(line, sizeof line, in) != NULL)
        if (strstr(line, "_DIR_APPS=") == NULL && strstr(line, "_DIR_ADMIN_APPS=") == NULL
            && strncmp(line, "GNUSTEP_USER_DIR_LIBRARY=", 25) != 0)
            fputs(line, out);
    if (in != NULL)
        fclose(in);
    if (out != NULL) {
        /* Only the test's applications, none installed on the machine. */
        static const char *const domains[] = {"USER", "LOCAL", "NETWORK", "SYSTEM"};
        for (int i = 0; i < 4; i++) {
            fprintf(out, "\nGNUSTEP_%s_DIR_APPS=%s/home/GNUstep/Applications\n", domains[i], root);
            fprintf(out, "GNUSTEP_%s_DIR_ADMIN_APPS=%s/home/GNUstep/Applications\n", domains[i], root);
        }
        fprintf(out, "GNUSTEP_USER_DIR_LIBRARY=%s/home/GNUstep/Library\n", root);
        fclose(out);
    }
    setenv("GNUSTEP_CONFIG_FILE", path, 1);
}

static void MakeDesktop(const char root[1024])
{
    static const char *const folders[] = {
        "home", "home/GNUstep", "home/GNUstep/Library", "home/GNUstep/Applications",
        "home/GNUstep/Applications/KoruRecorder.app", "home/GNUstep/Applications/KoruRecorder.app/Resources",
        "data", "data/applications", "config", "none", NULL};
    MakeFolders(root, folders);
    char text[8192];
    snprintf(text, sizeof text, "#!/bin/sh\necho \"$*\" >> '%s/recorded.txt'\n", root);
    WriteText(root, "record.sh", text, 0700);
    snprintf(text, sizeof text,
             "[Desktop Entry]\nType=Application\nName=KORU Recorder\nExec=%s/record.sh desktop %%u\n"
             "MimeType=text/plain;inode/directory;x-scheme-handler/koru;\n", root);
    WriteText(root, "data/applications/koru-recorder.desktop", text, 0600);
    WriteText(root, "config/mimeapps.list",
              "[Default Applications]\ntext/plain=koru-recorder.desktop\n"
              "inode/directory=koru-recorder.desktop\nx-scheme-handler/koru=koru-recorder.desktop\n", 0600);
    snprintf(text, sizeof text, "#!/bin/sh\nexec '%s/record.sh' bundle\n", root);
    WriteText(root, "home/GNUstep/Applications/KoruRecorder.app/KoruRecorder", text, 0700);
    WriteText(root, "home/GNUstep/Applications/KoruRecorder.app/Resources/Info-gnustep.plist",
              "{\n  NSExecutable = KoruRecorder;\n  CFBundleExecutable = KoruRecorder;\n"
              "  CFBundleIdentifier = org.koru.recorder;\n  CFBundleSignature = KoRu;\n"
              "  CFBundleName = KoruRecorder;\n}\n", 0600);
    char path[2048];
    snprintf(path, sizeof path, "%s/home", root);
    setenv("HOME", path, 1);
    snprintf(path, sizeof path, "%s/data", root);
    setenv("XDG_DATA_HOME", path, 1);
    snprintf(path, sizeof path, "%s/none", root);
    setenv("XDG_DATA_DIRS", path, 1);
    snprintf(path, sizeof path, "%s/config", root);
    setenv("XDG_CONFIG_HOME", path, 1);
    setenv("XDG_CONFIG_DIRS", path, 1);
    /* xdg-open's generic way, not a desktop's own opener, and no browser:
     * what it cannot open goes to a command that fails. */
    setenv("BROWSER", "false", 1);
    static const char *const desktopNames[] = {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION",
                                               "GNOME_DESKTOP_SESSION_ID", "MATE_DESKTOP_SESSION_ID",
                                               "XDG_SESSION_DESKTOP", "WAYLAND_DISPLAY", NULL};
    for (const char *const *name = desktopNames; *name != NULL; name++)
        unsetenv(*name);
    WriteGNUstepConfig(root);
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
    MakeDesktop(root);
    setenv("KORU_WORKSPACE_ROOT", root, 1);
    int status = 1;
    pid_t child = fork();
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
