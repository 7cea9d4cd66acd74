// Exception base of the base library and its own few exception classes.
#pragma once

#include "VEXZORBasExport.h"
#include "ZORBasStringMode.h"
#include "atr_String.h"

#include <cstddef>
#include <string>

// Class-level allocation used by every exception; Clone allocates through it.
class ZORBAS_API mem_AllocationOperators {
public:
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* p) noexcept;
    static void operator delete(void*, void*) noexcept {}
    static void* operator new[](std::size_t size);
    static void operator delete[](void* p) noexcept;
};

// The allocation function behind the class operators: throws std::bad_alloc.
ZORBAS_API void* mem_OperatorNewThrow(std::size_t size);
ZORBAS_API void mem_OperatorDelete(void* p) noexcept;
// Fault injection for tests: the next `count` calls of mem_OperatorNewThrow
// return null, so that callers' checks of a null result can be exercised.
// Only callers that check may run while it is armed.
ZORBAS_API void mem_FailNextAllocationsForTesting(int count);

// Base of every exception. The order of the virtual functions is part of the
// binary contract: destructor, DeveloperReport, UserReport, AsString,
// Propagate, Clone, GetCode.
class ZORBAS_API ZORBasException : public mem_AllocationOperators {
public:
    virtual ~ZORBasException();
    // Message with code and, once raised through Throw, the raising source.
    virtual atr_String DeveloperReport(ZORBasStringMode mode) const;
    // The message alone.
    virtual atr_String UserReport(ZORBasStringMode mode) const;
    virtual atr_String AsString(ZORBasStringMode mode) const = 0;
    // Reports (where the class does) and throws a copy of the object by value.
    virtual void Propagate() const = 0;
    // A heap copy owned by the caller; the base itself has nothing to copy.
    virtual ZORBasException* Clone() const;
    virtual int GetCode() const = 0;

    // Records the raising source and raises the object through Propagate, so
    // the most derived type is thrown.
    [[noreturn]] void Throw(const char* file, int line) const;

    // Where Throw raised the object; null and 0 when raised otherwise.
    const char* ThrowFile() const { return m_file; }
    int ThrowLine() const { return m_line; }

protected:
    ZORBasException() = default;
    ZORBasException(const ZORBasException&) = default;
    ZORBasException& operator=(const ZORBasException&) = default;

private:
    mutable const char* m_file = nullptr;
    mutable int m_line = 0;
};

// Operating-system error: a code and its text. On POSIX systems the code is
// an errno value and the text its strerror; on Windows a GetLastError value
// and its system message.
class ZORBAS_API ZORBasSystemError {
public:
    explicit ZORBasSystemError(int code);
    int Code() const { return m_code; }
    const char* AsString() const { return m_text.c_str(); }

private:
    int m_code;
    std::string m_text;
};

// Exceptions of the base library itself. They keep a copy of their text and
// throw without a report (reporting belongs to the libraries above).
class ZORBAS_API ZORBasTextException : public ZORBasException {
public:
    atr_String AsString(ZORBasStringMode mode) const override;
    const char* Text() const { return m_text.c_str(); }

protected:
    explicit ZORBasTextException(std::string text) : m_text(std::move(text)) {}

private:
    std::string m_text;
};

// A broken invariant.
class ZORBAS_API ZORBasAssertException : public ZORBasTextException {
public:
    static constexpr int Code = 1;
    explicit ZORBasAssertException(const char* text);
    void Propagate() const override;
    ZORBasException* Clone() const override;
    int GetCode() const override { return Code; }
};

// Text that could not be converted to UTF-8.
class ZORBAS_API ZORBasToUTF8Exception : public ZORBasTextException {
public:
    static constexpr int Code = 2;
    explicit ZORBasToUTF8Exception(const char* text);
    void Propagate() const override;
    ZORBasException* Clone() const override;
    int GetCode() const override { return Code; }
};

// A string that has no form in the operating system's encoding.
class ZORBAS_API ZORBasOsStringConversion : public ZORBasTextException {
public:
    static constexpr int Code = 3;
    explicit ZORBasOsStringConversion(const char* text);
    void Propagate() const override;
    ZORBasException* Clone() const override;
    int GetCode() const override { return Code; }
};
