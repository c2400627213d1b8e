/* Prints the language and locale defaults this process finds, for
 * CFLocaleDefaultsTest to run with an environment of its choosing.  With the
 * argument "reset" the standard defaults are reset first and read anew. */
#import <Foundation/Foundation.h>

#include <stdio.h>
#include <string.h>

static NSString *Describe(id value)
{
    if ([value isKindOfClass:[NSArray class]])
        return [value componentsJoinedByString:@","];
    return value != nil ? [value description] : @"<none>";
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    if (argc > 1 && strcmp(argv[1], "reset") == 0) {
        [defaults registerDefaults:[NSDictionary dictionaryWithObject:@"xx_YY" forKey:@"AppleLocale"]];
        [NSUserDefaults resetStandardUserDefaults];
        defaults = [NSUserDefaults standardUserDefaults];
    }
    printf("languages=%s\n", [Describe([defaults objectForKey:@"AppleLanguages"]) UTF8String]);
    printf("locale=%s\n", [Describe([defaults objectForKey:@"AppleLocale"]) UTF8String]);
    NSDictionary *registered = [defaults volatileDomainForName:NSRegistrationDomain];
    printf("registered=%s\n", [registered objectForKey:@"AppleLocale"] != nil ? "yes" : "no");
    [pool drain];
    return 0;
}
