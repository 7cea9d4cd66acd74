#include "ZORBasException.h"

#include "ZORBasPlatform.h"

#include <atomic>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace {

std::atomic<int> g_failNextAllocations{0};

} // namespace

void* mem_OperatorNewThrow(std::size_t size) {
    int pending = g_failNextAllocations.load(std::memory_order_relaxed);
    while (pending > 0) {
        if (g_failNextAllocations.compare_exchange_weak(pending, pending - 1))
            return nullptr;
    }
    return ::operator new(size);
}

void mem_FailNextAllocationsForTesting(int count) {
    g_failNextAllocations.store(count > 0 ? count : 0);
}
void mem_OperatorDelete(void* p) noexcept {
    ::operator delete(p);
}

void* mem_AllocationOperators::operator new(std::size_t size) {
    return mem_OperatorNewThrow(size);
}
void mem_AllocationOperators::operator delete(void* p) noexcept {
    mem_OperatorDelete(p);
}
void* mem_AllocationOperators::operator new[](std::size_t size) {
    return mem_OperatorNewThrow(size);
}
void mem_AllocationOperators::operator delete[](void* p) noexcept {
    mem_OperatorDelete(p);
}

ZORBasException::~ZORBasException() = default;

atr_String ZORBasException::DeveloperReport(ZORBasStringMode mode) const {
    std::string text = "[" + std::to_string(GetCode()) + "] " + AsString(mode).str();
    if (m_file != nullptr)
        text += " (raised in " + std::string(m_file) + ":" + std::to_string(m_line) + ")";
    return atr_String(std::move(text));
}

atr_String ZORBasException::UserReport(ZORBasStringMode mode) const {
    return AsString(mode);
}

ZORBasException* ZORBasException::Clone() const {
    return nullptr;
}

void ZORBasException::Throw(const char* file, int line) const {
    m_file = file;
    m_line = line;
    Propagate();
    // Propagate must throw; a class that does not has broken the contract.
    throw std::logic_error("ZORBasException::Throw: Propagate returned without throwing");
}

ZORBasSystemError::ZORBasSystemError(int code) : m_code(code), m_text(zorbas_os::SystemErrorText(code)) {}

atr_String ZORBasTextException::AsString(ZORBasStringMode) const {
    return atr_String(m_text);
}

#define ZORBAS_TEXT_EXCEPTION(Name)                                                                          \
    Name::Name(const char* text) : ZORBasTextException(text ? text : "") {}                                  \
    void Name::Propagate() const {                                                                           \
        throw Name(*this);                                                                                   \
    }                                                                                                        \
    ZORBasException* Name::Clone() const {                                                                   \
        return new Name(*this);                                                                              \
    }
ZORBAS_TEXT_EXCEPTION(ZORBasAssertException)
ZORBAS_TEXT_EXCEPTION(ZORBasToUTF8Exception)
ZORBAS_TEXT_EXCEPTION(ZORBasOsStringConversion)
#undef ZORBAS_TEXT_EXCEPTION
