// Run loops and timers, driven from C++ as a Mac host drives them.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <pthread.h>

namespace {

struct Ticks {
    int count = 0;
    int stopAt = 0;
    int retains = 0;
    int releases = 0;
};

void Tick(CFRunLoopTimerRef timer, void *info)
{
    auto *ticks = static_cast<Ticks *>(info);
    ticks->count++;
    EXPECT_EQ(CFGetTypeID(timer), CFRunLoopTimerGetTypeID());
    if (ticks->count == ticks->stopAt)
        CFRunLoopStop(CFRunLoopGetCurrent());
}

const void *RetainTicks(const void *info)
{
    return ++static_cast<Ticks *>(const_cast<void *>(info))->retains, info;
}

void ReleaseTicks(const void *info) { static_cast<Ticks *>(const_cast<void *>(info))->releases++; }

TEST(CFRunLoop, ARepeatingTimerFiresUntilTheLoopIsStopped)
{
    CFRunLoopRef loop = CFRunLoopGetCurrent();
    ASSERT_NE(loop, nullptr);
    EXPECT_EQ(CFRunLoopGetMain(), loop);  // the tests run on the main thread

    Ticks ticks;
    ticks.stopAt = 3;
    CFRunLoopTimerContext context = {0, &ticks, RetainTicks, ReleaseTicks, nullptr};
    CFRunLoopTimerRef timer =
        CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + 0.01, 0.01, 0, 0, Tick, &context);
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(ticks.retains == 1 && CFRunLoopTimerDoesRepeat(timer));
    CFRunLoopAddTimer(loop, timer, kCFRunLoopDefaultMode);
    CFRunLoopRun();
    EXPECT_EQ(ticks.count, 3);

    // Running again with a limit: the timer keeps firing; the limit ends the run.
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, false), kCFRunLoopRunTimedOut);
    EXPECT_GT(ticks.count, 3);
    CFRunLoopTimerInvalidate(timer);
    CFRelease(timer);
    EXPECT_EQ(ticks.releases, 1);

    // With nothing left to run, the loop says so.
    EXPECT_EQ(CFRunLoopRunInMode(CFSTR("KORUTestEmptyMode"), 0.5, false), kCFRunLoopRunFinished);
    EXPECT_EQ(CFRunLoopRunInMode(nullptr, 0.1, false), kCFRunLoopRunFinished);
}

TEST(CFRunLoop, AOneShotTimerFiresOnce)
{
    Ticks ticks;
    CFRunLoopTimerContext context = {0, &ticks, nullptr, nullptr, nullptr};
    CFRunLoopTimerRef timer = CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent(), 0, 0, 0, Tick, &context);
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopCommonModes);
    // A timer is not a source: the run does not end for having fired it.
    EXPECT_NE(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.3, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(ticks.count, 1);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, false);
    EXPECT_TRUE(ticks.count == 1 && !CFRunLoopTimerIsValid(timer));
    CFRelease(timer);

    EXPECT_EQ(CFRunLoopTimerCreate(nullptr, 0, 0, 0, 0, nullptr, nullptr), nullptr);
    CFRunLoopAddTimer(nullptr, nullptr, kCFRunLoopDefaultMode);
    CFRunLoopStop(nullptr);
    CFRunLoopWakeUp(nullptr);
    EXPECT_FALSE(CFRunLoopTimerIsValid(nullptr));
}

struct Waiter {
    CFRunLoopRef loop = nullptr;
    SInt32 result = 0;
    volatile bool ready = false;
};

void *RunUntilStopped(void *argument)
{
    auto *waiter = static_cast<Waiter *>(argument);
    waiter->loop = CFRunLoopGetCurrent();
    // A far timer keeps the loop waiting.
    CFRunLoopTimerRef far = CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + 3600, 0, 0, 0,
                                                 [](CFRunLoopTimerRef, void *) {}, nullptr);
    CFRunLoopAddTimer(waiter->loop, far, kCFRunLoopDefaultMode);
    waiter->ready = true;
    waiter->result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, 60, false);
    CFRunLoopTimerInvalidate(far);
    CFRelease(far);
    return nullptr;
}

TEST(CFRunLoop, AnotherThreadStopsAWaitingLoop)
{
    Waiter waiter;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, RunUntilStopped, &waiter), 0);
    while (!waiter.ready)
        sched_yield();
    CFRunLoopStop(waiter.loop);
    pthread_join(thread, nullptr);
    EXPECT_EQ(waiter.result, kCFRunLoopRunStopped);
    EXPECT_NE(waiter.loop, CFRunLoopGetMain());
}

}  // namespace
