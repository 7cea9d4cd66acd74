// Checks of what the library raised, by class, OS service and OS error
// meaning, for the tests of the file classes.
#pragma once

#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"
#include "ZORSimUttOS.h"

#include <functional>
#include <optional>

namespace zorsim_test {

namespace OS = ZORSimUttOS;
using OS::Error;
using OS::Service;

// What `action` raised, if it was an E; a test failure otherwise.
template <class E> std::optional<E> Raised(const std::function<void()>& action) {
    try {
        action();
        ADD_FAILURE() << "nothing raised";
    } catch (const E& e) {
        return e;
    } catch (const ZORBasException& e) {
        ADD_FAILURE() << "raised " << e.AsString(ZORBasStringMode(false)).c_str();
    }
    return std::nullopt;
}

// For the classes that carry the OS error.
template <class E> std::optional<E> ExpectRaised(const std::function<void()>& action, Error error) {
    const auto e = Raised<E>(action);
    if (e) {
        EXPECT_EQ(e->GetSystemErrorCode().Code(), OS::ErrorCode(error));
    }
    return e;
}

inline void ExpectSystemError(const std::function<void()>& action, Service service, Error error) {
    if (const auto e = ExpectRaised<ZORSimExcSystemError>(action, error)) {
        EXPECT_STREQ(e->GetServiceName().AsString(), OS::ServiceName(service));
    }
}

// A fresh directory for each test, and no fault left armed after it.
class FileTest : public ::testing::Test {
protected:
    void TearDown() override { ZORSimUttOSFault::DisarmAll(); }
    TempDir m_dir;
};

} // namespace zorsim_test
