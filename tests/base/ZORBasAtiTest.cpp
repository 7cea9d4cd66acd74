// Locks, the mutex factory, the singleton registry and the fatal error.
#include "ZORBasAti.h"
#include "ZORBasUtlIOStats.h"
#include "bcu_ResourceMonitor.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

TEST(BaseThreadingModel, MutexSerialisesContendingThreads) {
    ZORBasAtiMutex* mutex = ZORBasAtiThreadingModel::newMutex();
    ASSERT_NE(mutex, nullptr);
    long counter = 0; // deliberately unsynchronised except through the mutex
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                mutex->Lock();
                const long seen = counter;
                std::this_thread::yield();
                counter = seen + 1;
                mutex->Unlock();
                if (i % 1000 == 0)
                    std::this_thread::yield();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter, static_cast<long>(kThreads) * kRounds);
    ZORBasAtiThreadingModel::deleteMutex(mutex);
    ZORBasAtiThreadingModel::deleteMutex(nullptr); // null is accepted
}

TEST(BaseThreadingModel, InjectedFailureGivesNullThenRecovers) {
    ZORBasAtiThreadingModel::FailNextForTesting(2);
    EXPECT_EQ(ZORBasAtiThreadingModel::newMutex(), nullptr);
    EXPECT_EQ(ZORBasAtiThreadingModel::newMutex(), nullptr);
    ZORBasAtiMutex* mutex = ZORBasAtiThreadingModel::newMutex();
    EXPECT_NE(mutex, nullptr);
    ZORBasAtiThreadingModel::deleteMutex(mutex);
}

TEST(BaseGlobalLock, IsRecursiveAndExcludesOtherThreads) {
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds / 4; ++i) {
                ZORBasAtiGlobalLock::Guard outer;
                ZORBasAtiGlobalLock::Guard inner; // the same thread again
                const long seen = counter;
                std::this_thread::yield();
                counter = seen + 1;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter, static_cast<long>(kThreads) * (kRounds / 4));
}

int g_destroyed = 0;

TEST(BaseSingletonRegistry, AddContainsRemoveCount) {
    omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
    ASSERT_NE(registry, nullptr);
    EXPECT_EQ(omi_SingletonRegistry::Instance(), registry);
    const int before = registry->Count();
    int objectA = 0;
    int objectB = 0;
    auto destroy = [](void*) { ++g_destroyed; };
    registry->Add("zorbas-test-A", &objectA, destroy);
    registry->Add("zorbas-test-B", &objectB, destroy);
    registry->Add("zorbas-test-null", nullptr, destroy); // nothing to keep
    EXPECT_EQ(registry->Count(), before + 2);
    EXPECT_TRUE(registry->Contains("zorbas-test-A"));
    EXPECT_FALSE(registry->Contains("zorbas-test-null"));
    EXPECT_FALSE(registry->Contains(nullptr));

    EXPECT_TRUE(registry->Remove(&objectA));
    EXPECT_FALSE(registry->Remove(&objectA));
    EXPECT_FALSE(registry->Contains("zorbas-test-A"));
    EXPECT_TRUE(registry->Remove(&objectB));
    EXPECT_EQ(registry->Count(), before);
    EXPECT_EQ(g_destroyed, 0); // Remove forgets, it does not destroy
}

TEST(BaseSingletonRegistry, SingletonsAreSharedAndRegistered) {
    std::set<bcu_ResourceMonitor*> seen;
    std::mutex seenLock;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            bcu_ResourceMonitor* monitor = &omi_Singleton<bcu_ResourceMonitor>::Instance();
            std::lock_guard<std::mutex> guard(seenLock);
            seen.insert(monitor);
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(seen.size(), 1u);
    EXPECT_EQ(*seen.begin(), &omi_Singleton<bcu_ResourceMonitor>::Instance());
    EXPECT_EQ(&omi_Singleton<ZORBasUtlIOStats>::Instance(), &omi_Singleton<ZORBasUtlIOStats>::Instance());

    omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
    ASSERT_NE(registry, nullptr);
    EXPECT_TRUE(registry->Contains(typeid(bcu_ResourceMonitor).name()));
    EXPECT_TRUE(registry->Contains(typeid(ZORBasUtlIOStats).name()));
}

// Destroyer used at process end: says what it destroys and whether the
// registry is still reachable from inside it.
void ReportDestroyed(void* object) {
    std::fprintf(stderr, "destroyed %s, registry %s\n", static_cast<const char*>(object),
                 omi_SingletonRegistry::Instance() == nullptr ? "gone" : "alive");
}

TEST(BaseSingletonRegistryDeathTest, DestroysNewestFirstAtProcessEnd) {
    static char older[] = "older";
    static char newer[] = "newer";
    EXPECT_EXIT(
        {
            omi_SingletonRegistry::Instance()->Add("older", older, ReportDestroyed);
            omi_SingletonRegistry::Instance()->Add("newer", newer, ReportDestroyed);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "destroyed newer, registry gone\ndestroyed older, registry gone\n");
}

TEST(BaseEnv, GetEnvReadsTheEnvironment) {
    setenv("ZORBAS_TEST_GETENV", "value", 1);
    ASSERT_NE(ZORBasGetEnv("ZORBAS_TEST_GETENV"), nullptr);
    EXPECT_STREQ(ZORBasGetEnv("ZORBAS_TEST_GETENV"), "value");
    unsetenv("ZORBAS_TEST_GETENV");
    EXPECT_EQ(ZORBasGetEnv("ZORBAS_TEST_GETENV"), nullptr);
    EXPECT_EQ(ZORBasGetEnv(nullptr), nullptr);
}

TEST(BasePLXFatalErrorDeathTest, PrintsTextSourceAndLineThenAborts) {
    EXPECT_EXIT(PLXFatalError("AssertionFailed:m_lock != 0", "ZORBasAtiGlobalSingleton", 70),
                ::testing::KilledBySignal(SIGABRT),
                "PLXFatalError: AssertionFailed:m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)");
    EXPECT_DEATH(PLXFatalError(nullptr, nullptr, 0), "PLXFatalError: \\(null\\) \\(\\(null\\):0\\)");
}

} // namespace
