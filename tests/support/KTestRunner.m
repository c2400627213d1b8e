/* The runner behind KTest.h: cases run in registration order, each in its
 * own autorelease pool; an Objective-C exception escaping a case counts as
 * a failure of that case.  A case name on the command line runs only it;
 * arguments after it (or first arguments starting with '-') are user
 * defaults for GNUstep. */
#import "KTest.h"

int KTFailures;

typedef struct {
    const char *name;
    KTCaseFunction function;
} KTCase;

static KTCase KTCases[512];
static int KTCaseCount;

void KTRegister(const char *name, KTCaseFunction function)
{
    if (KTCaseCount < (int)(sizeof(KTCases) / sizeof(KTCases[0])))
        KTCases[KTCaseCount++] = (KTCase){name, function};
}

void KTReportFailure(const char *file, int line, const char *expression, NSString *detail)
{
    KTFailures++;
    fprintf(stderr, "%s:%d: expected %s%s%s\n", file, line, expression, detail ? ": " : "",
            detail ? [detail UTF8String] : "");
}

int KTRunAll(int argc, char **argv)
{
    int passed = 0, failed = 0;
    for (int i = 0; i < KTCaseCount; i++) {
        if (argc > 1 && argv[1][0] != '-' && strcmp(argv[1], KTCases[i].name) != 0)
            continue;
        int before = KTFailures;
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        @try {
            KTCases[i].function();
        } @catch (NSException *exception) {
            KTFailures++;
            fprintf(stderr, "%s: exception %s: %s\n", KTCases[i].name, [[exception name] UTF8String],
                    [[exception reason] UTF8String]);
        }
        [pool drain];
        if (KTFailures == before) {
            passed++;
            printf("[ OK ] %s\n", KTCases[i].name);
        } else {
            failed++;
            printf("[FAIL] %s\n", KTCases[i].name);
        }
    }
    printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? 0 : 1;
}
