/* A small harness for Objective-C unit tests.
 *
 * A test file defines cases with KT_CASE(name) { ... } and ends with KT_MAIN().
 * KT_EXPECT records a failure without stopping the case; KT_ASSERT returns from
 * it.  Each case runs inside its own autorelease pool.  The program exits with
 * status 1 when any expectation failed, so CTest reports the test as failed. */
#ifndef KORU_TESTS_KTEST_H
#define KORU_TESTS_KTEST_H

#import <Foundation/Foundation.h>
#include <stdio.h>
#include <string.h>

typedef void (*KTCaseFunction)(void);

extern int KTFailures;
void KTRegister(const char *name, KTCaseFunction function);
int KTRunAll(int argc, char **argv);
void KTReportFailure(const char *file, int line, const char *expression, NSString *detail);

#define KT_CASE(name)                                                       \
    static void KTCase_##name(void);                                        \
    static void __attribute__((constructor)) KTRegister_##name(void)        \
    {                                                                       \
        KTRegister(#name, KTCase_##name);                                   \
    }                                                                       \
    static void KTCase_##name(void)

#define KT_EXPECT(condition)                                                        \
    do {                                                                            \
        if (!(condition))                                                           \
            KTReportFailure(__FILE__, __LINE__, #condition, nil);                   \
    } while (0)

#define KT_EXPECT_MSG(condition, ...)                                               \
    do {                                                                            \
        if (!(condition))                                                           \
            KTReportFailure(__FILE__, __LINE__, #condition,                         \
                            [NSString stringWithFormat:__VA_ARGS__]);               \
    } while (0)

#define KT_ASSERT(condition)                                                        \
    do {                                                                            \
        if (!(condition)) {                                                         \
            KTReportFailure(__FILE__, __LINE__, #condition, nil);                   \
            return;                                                                 \
        }                                                                           \
    } while (0)

#define KT_EXPECT_EQUAL_OBJECTS(a, b)                                               \
    do {                                                                            \
        id ktA_ = (a), ktB_ = (b);                                                  \
        if (!((ktA_ == nil && ktB_ == nil) || [ktA_ isEqual:ktB_]))                 \
            KTReportFailure(__FILE__, __LINE__, #a " == " #b,                       \
                            [NSString stringWithFormat:@"%@ != %@", ktA_, ktB_]);   \
    } while (0)

#define KT_MAIN()                                                           \
    int main(int argc, char **argv) { return KTRunAll(argc, argv); }

#endif
