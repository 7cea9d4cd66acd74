// Locks, the mutex factory, the singleton registry and the fatal error.
#include "ZORSimTestSupport.h"

#include "ZORBasAti.h"
#include "ZORBasUtlIOStats.h"
#include "bcu_ResourceMonitor.h"

#include <csignal>
#include <thread>
#include <typeinfo>

using namespace zorsim_test;

namespace {

// Four threads each bump a shared counter `rounds` times by read, yield,
// write, every time inside lockAround(critical). The total comes out right
// only when lockAround keeps the other threads out.
template <class Lock> long Contend(int rounds, Lock&& lockAround) {
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < rounds; ++i)
                lockAround([&] {
                    const long seen = counter;
                    std::this_thread::yield();
                    counter = seen + 1;
                });
        });
    for (auto& thread : threads)
        thread.join();
    return counter;
}

TEST(BaseThreadingModel, MutexSerialisesContendingThreadsAndInjectedFailuresGiveNull) {
    ZORBasAtiMutex* mutex = ZORBasAtiThreadingModel::newMutex();
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(Contend(20000,
                      [&](auto&& critical) {
                          mutex->Lock();
                          critical();
                          mutex->Unlock();
                      }),
              4 * 20000);
    ZORBasAtiThreadingModel::deleteMutex(mutex);
    ZORBasAtiThreadingModel::deleteMutex(nullptr); // null is accepted

    ZORBasAtiThreadingModel::FailNextForTesting(2);
    EXPECT_EQ(ZORBasAtiThreadingModel::newMutex(), nullptr);
    EXPECT_EQ(ZORBasAtiThreadingModel::newMutex(), nullptr);
    mutex = ZORBasAtiThreadingModel::newMutex();
    EXPECT_NE(mutex, nullptr);
    ZORBasAtiThreadingModel::deleteMutex(mutex);
}

TEST(BaseGlobalLock, IsRecursiveAndExcludesOtherThreads) {
    EXPECT_EQ(Contend(5000,
                      [](auto&& critical) {
                          ZORBasAtiGlobalLock::Guard outer;
                          ZORBasAtiGlobalLock::Guard inner; // the same thread again
                          critical();
                      }),
              4 * 5000);
}

TEST(BaseSingletonRegistry, AddContainsRemoveCount) {
    omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
    ASSERT_NE(registry, nullptr);
    const int before = registry->Count();
    static int destroyed = 0;
    const auto destroy = [](void*) { ++destroyed; };
    int objectA = 0;
    int objectB = 0;
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
    EXPECT_EQ(destroyed, 0); // Remove forgets, it does not destroy
}

TEST(BaseSingletonRegistry, SingletonsAreSharedAndRegistered) {
    EXPECT_EQ(&omi_Singleton<bcu_ResourceMonitor>::Instance(),
              &omi_Singleton<bcu_ResourceMonitor>::Instance());
    EXPECT_EQ(&omi_Singleton<ZORBasUtlIOStats>::Instance(), &omi_Singleton<ZORBasUtlIOStats>::Instance());
    EXPECT_TRUE(omi_SingletonRegistry::Instance()->Contains(typeid(bcu_ResourceMonitor).name()));
    EXPECT_TRUE(omi_SingletonRegistry::Instance()->Contains(typeid(ZORBasUtlIOStats).name()));
}

// At process end the registry destroys what it holds, newest first, and is
// no longer reachable from inside the destroyers.
TEST(BaseSingletonRegistry, DestroysNewestFirstAtProcessEnd) {
    ExpectInFreshProcess(
        [] {
            static char older[] = "older";
            static char newer[] = "newer";
            const auto report = [](void* object) {
                std::fprintf(stderr, "destroyed %s, registry %s\n", static_cast<const char*>(object),
                             omi_SingletonRegistry::Instance() == nullptr ? "gone" : "alive");
            };
            omi_SingletonRegistry::Instance()->Add("older", older, report);
            omi_SingletonRegistry::Instance()->Add("newer", newer, report);
        },
        "destroyed newer, registry gone\ndestroyed older, registry gone\n");
}

TEST(BaseEnv, GetEnvReadsTheEnvironmentAndTakesNoNull) {
    ScopedEnv set("ZORBAS_TEST_GETENV", "value");
    EXPECT_STREQ(ZORBasGetEnv("ZORBAS_TEST_GETENV"), "value");
    EXPECT_EQ(ZORBasGetEnv(nullptr), nullptr);
}

TEST(BasePLXFatalErrorDeathTest, PrintsTextSourceAndLineThenAborts) {
    EXPECT_EXIT(PLXFatalError("AssertionFailed:m_lock != 0", "ZORBasAtiGlobalSingleton", 70),
                ::testing::KilledBySignal(SIGABRT),
                "PLXFatalError: AssertionFailed:m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)");
    EXPECT_DEATH(PLXFatalError(nullptr, nullptr, 0), "PLXFatalError: \\(null\\) \\(\\(null\\):0\\)");
}

} // namespace
