/* Prints the language and locale defaults this process finds, for
 * CFLocaleDefaultsTest to run with an environment of its choosing.  With the
 * argument "reset" the standard defaults are reset first and read anew; with
 * "threads" several threads ask for the defaults at once before anyone else
 * has, and the probe counts those that found no locale. */
#import <Foundation/Foundation.h>

#include <pthread.h>
#include <stdio.h>
#include <string.h>

enum { kThreads = 8 };

static pthread_barrier_t gStart;
static int gMissed;
static pthread_mutex_t gMissedLock = PTHREAD_MUTEX_INITIALIZER;

static void *AskForLocale(void *unused)
{
    (void)unused;
    pthread_barrier_wait(&gStart);
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    if ([[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLocale"] == nil) {
        pthread_mutex_lock(&gMissedLock);
        gMissed++;
        pthread_mutex_unlock(&gMissedLock);
    }
    [pool drain];
    return NULL;
}

static int AskFromThreads(void)
{
    pthread_t threads[kThreads];
    pthread_barrier_init(&gStart, NULL, kThreads);
    for (int i = 0; i < kThreads; i++)
        pthread_create(&threads[i], NULL, AskForLocale, NULL);
    for (int i = 0; i < kThreads; i++)
        pthread_join(threads[i], NULL);
    pthread_barrier_destroy(&gStart);
    printf("missed=%d\n", gMissed);
    return 0;
}

static const char *Describe(id value)
{
    if ([value isKindOfClass:[NSArray class]])
        value = [value componentsJoinedByString:@","];
    return value != nil ? [[value description] UTF8String] : "<none>";
}

int main(int argc, char **argv)
{
    if (argc > 1 && strcmp(argv[1], "threads") == 0)
        return AskFromThreads();
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    if (argc > 1 && strcmp(argv[1], "reset") == 0) {
        [defaults registerDefaults:[NSDictionary dictionaryWithObject:@"xx_YY" forKey:@"AppleLocale"]];
        [NSUserDefaults resetStandardUserDefaults];
        defaults = [NSUserDefaults standardUserDefaults];
    }
    printf("languages=%s\nlocale=%s\n", Describe([defaults objectForKey:@"AppleLanguages"]),
           Describe([defaults objectForKey:@"AppleLocale"]));
    NSDictionary *registered = [defaults volatileDomainForName:NSRegistrationDomain];
    printf("registered=%s\n", [registered objectForKey:@"AppleLocale"] != nil ? "yes" : "no");
    [pool drain];
    return 0;
}
