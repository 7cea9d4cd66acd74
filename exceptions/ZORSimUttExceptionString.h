// Fixed-capacity text field of the exception classes: N chars holding at
// most N - 1 characters, always terminated; longer text is cut silently.
#pragma once

#include "ZORSimUttUtils.h"
#include "ZORString.h"

template <int N> class ZORSimUttExceptionString {
    static_assert(N > 0, "an exception string needs room for its terminator");

public:
    ZORSimUttExceptionString(const char* text) { ZORSimUttUtils::Copy(m_text, text, N); }
    ZORSimUttExceptionString(const ZORString& text) {
        ZORSimUttUtils::Copy(m_text, text.IsEmpty() ? "" : text.c_str(), N);
    }
    const char* AsString() const { return m_text; }
    static constexpr int Capacity() { return N; }

private:
    char m_text[N];
};
