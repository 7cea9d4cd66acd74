// Fault injection into the OS seam. Production code pays one relaxed load
// per seam call: the count of pending failures is zero unless a test armed
// something.
#include "ZORSimUttOS.h"

#include <atomic>
#include <cstddef>

namespace ZORSimUttOSFault {
namespace {

constexpr std::size_t kCalls = static_cast<std::size_t>(Call::Count);

struct Arming {
    std::atomic<int> times{0};
    std::atomic<int> error{0};
};

Arming g_arms[kCalls];
// Sum of the remaining failures over all calls; the fast path reads only this.
std::atomic<int> g_pending{0};

} // namespace

void Arm(Call call, int error, int times) {
    const auto index = static_cast<std::size_t>(call);
    if (index >= kCalls)
        return;
    if (times < 0)
        times = 0;
    g_arms[index].error.store(error, std::memory_order_relaxed);
    const int previous = g_arms[index].times.exchange(times, std::memory_order_acq_rel);
    g_pending.fetch_add(times - previous, std::memory_order_acq_rel);
}

void DisarmAll() {
    for (Arming& arming : g_arms) {
        const int previous = arming.times.exchange(0, std::memory_order_acq_rel);
        g_pending.fetch_sub(previous, std::memory_order_acq_rel);
    }
}

bool Take(Call call, int& error) {
    if (g_pending.load(std::memory_order_relaxed) == 0)
        return false;
    const auto index = static_cast<std::size_t>(call);
    if (index >= kCalls)
        return false;
    Arming& arming = g_arms[index];
    int remaining = arming.times.load(std::memory_order_acquire);
    while (remaining > 0) {
        if (arming.times.compare_exchange_weak(remaining, remaining - 1, std::memory_order_acq_rel)) {
            g_pending.fetch_sub(1, std::memory_order_acq_rel);
            error = arming.error.load(std::memory_order_relaxed);
            return true;
        }
    }
    return false;
}

} // namespace ZORSimUttOSFault
