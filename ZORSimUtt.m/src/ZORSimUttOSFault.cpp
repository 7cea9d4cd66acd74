// Fault injection into the OS seam. Production code pays one relaxed load
// per seam call: the count of armed calls is zero unless a test armed one.
#include "ZORSimUttOS.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace ZORSimUttOSFault {
namespace {

struct Arming {
    int error = 0;
    int times = 0;
    int after = 0;
};

std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
}
std::map<std::string, Arming, std::less<>>& Armings() {
    static std::map<std::string, Arming, std::less<>> armings;
    return armings;
}
// Number of calls with failures still to come; the fast path reads only this.
std::atomic<int> g_armed{0};

} // namespace

void Arm(const char* call, int error, int times, int after) {
    if (call == nullptr)
        return;
    const std::lock_guard<std::mutex> lock(Mutex());
    auto& armings = Armings();
    if (armings.erase(call) != 0)
        g_armed.fetch_sub(1, std::memory_order_relaxed);
    if (times <= 0)
        return;
    armings.emplace(call, Arming{error, times, after < 0 ? 0 : after});
    g_armed.fetch_add(1, std::memory_order_release);
}

void DisarmAll() {
    const std::lock_guard<std::mutex> lock(Mutex());
    Armings().clear();
    g_armed.store(0, std::memory_order_release);
}

bool Take(const char* call, int& error) {
    if (g_armed.load(std::memory_order_acquire) == 0)
        return false;
    const std::lock_guard<std::mutex> lock(Mutex());
    auto& armings = Armings();
    const auto found = armings.find(std::string_view(call));
    if (found == armings.end())
        return false;
    Arming& arming = found->second;
    if (arming.after > 0) {
        --arming.after;
        return false;
    }
    error = arming.error;
    if (--arming.times == 0) {
        armings.erase(found);
        g_armed.fetch_sub(1, std::memory_order_relaxed);
    }
    return true;
}

} // namespace ZORSimUttOSFault
