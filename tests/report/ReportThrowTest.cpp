// What the hooks and the string check throw: class, code, message and the
// raising source and line recorded by Throw.
#include "ReportTestSupport.h"

#include "ZORSimBadZORString.h"
#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

#include <cstring>
#include <memory>

namespace {

// Reports are checked in fresh processes elsewhere; here they would only
// fill the log.
class ReportThrow : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ZORSimUttAssertDisableExcReport(); }
};

} // namespace

TEST_F(ReportThrow, AssertionFailureRaisesAssertExceptionWithItsText) {
    zorsim_report_test::StderrCapture quiet;
    try {
        ZORSimUttAssert::ReportAssertionFailure("heap is inconsistent");
        FAIL() << "no exception";
    } catch (const ZORBasAssertException& error) {
        EXPECT_STREQ("heap is inconsistent", error.Text());
        EXPECT_EQ(ZORBasAssertException::Code, error.GetCode());
        EXPECT_STREQ("ZORSimUttAssert", error.ThrowFile());
        EXPECT_EQ(213, error.ThrowLine());
    }
}

TEST_F(ReportThrow, ValidationFailureRaisesCode1032WithoutTheCallersText) {
    zorsim_report_test::StderrCapture quiet;
    try {
        ZORSimUttAssert::ReportValidationFailure("index past the end");
        FAIL() << "no exception";
    } catch (const ZORBasException& error) {
        EXPECT_NE(nullptr, dynamic_cast<const ZORSimExcValidationFailure*>(&error));
        EXPECT_EQ(1032, error.GetCode());
        EXPECT_STREQ("Validation failure - inconsistent state has been reached.",
                     error.AsString(ZORBasStringMode(false)).c_str());
        EXPECT_STREQ("ZORSimUttAssert", error.ThrowFile());
        EXPECT_EQ(220, error.ThrowLine());
    }
}

TEST_F(ReportThrow, BadStringIsRejectedAndGoodStringsPass) {
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("result.sim")));
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("")));
    for (const ZORString& bad : {ZORString::BAD(), ZORString("\xff\xfe not UTF-8")}) {
        ASSERT_TRUE(bad.IsBAD());
        try {
            ZORSimBadZORString::Check(bad);
            FAIL() << "no exception";
        } catch (const ZORSimExcBadStringArgument& error) {
            EXPECT_EQ(1109, error.GetCode());
            EXPECT_STREQ("String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.",
                         error.AsString(ZORBasStringMode(false)).c_str());
            EXPECT_STREQ("ZORSimBadZORString", error.ThrowFile());
            EXPECT_EQ(16, error.ThrowLine());
        }
    }
}

TEST_F(ReportThrow, PropagatedCopyCaughtAsBaseKeepsDerivedCodeAndMessage) {
    try {
        ZORSimExcIOBounds(10, 20, 15).Propagate();
        FAIL() << "no exception";
    } catch (const ZORBasException& error) {
        EXPECT_EQ(1010, error.GetCode());
        EXPECT_STREQ("I/O out of bounds - start: 10, end: 20, limit: 15",
                     error.AsString(ZORBasStringMode(false)).c_str());
        std::unique_ptr<ZORBasException> copy(error.Clone());
        ASSERT_NE(nullptr, copy);
        EXPECT_EQ(1010, copy->GetCode());
    }
}
