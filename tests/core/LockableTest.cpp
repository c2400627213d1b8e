#include <KORU/Lockable.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace {

// Threads that each lock twice (the holder may lock again) exclude each other.
TEST(LockableImpl, ExcludesOtherThreadsAndLetsTheHolderLockAgain)
{
    std::unique_ptr<ILockable> lock(new LockableImpl); // held through the interface, as hosts hold it
    long counter = 0;
    const int threads = 4;
    const int rounds = 20000;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&] {
            for (int i = 0; i < rounds; ++i) {
                lock->Lock();
                lock->Lock();
                // A read, a yield and a write: lost updates without the lock.
                long seen = counter;
                if (i % 1000 == 0)
                    std::this_thread::yield();
                counter = seen + 1;
                lock->Unlock();
                lock->Unlock();
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();
    EXPECT_EQ(counter, long(threads) * rounds);
}

} // namespace
