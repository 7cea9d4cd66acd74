// A message checked by hand; text pointers kept uncopied; the check that
// turns BAD strings away; getters whose names or types are easy to get wrong.
#include "ZORSimBadZORString.h"
#include "ZORSimExceptions.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

// Same getter name, different types; text pointers stay pointers.
static_assert(std::is_same_v<decltype(ZORSimExcAssociationSelectionNoSuchStringKey("k").GetKey()),
                             ZORSimUttExceptionString<64>>);
static_assert(std::is_same_v<decltype(ZORSimExcAssociationSelectionNoSuchIntKey(1).GetKey()), int>);
static_assert(
    std::is_same_v<decltype(ZORSimExcUpgradePreconditionError(nullptr).GetErrorReport()), const char*>);

TEST(Messages, TextsAsTheTablesHaveThem) {
    // Every value kind, by hand (the catalogue's properties check the rest
    // against the formatter rule): bool through "%b" as 0/1, long long
    // through "%ld", floats fixed to six decimals.
    EXPECT_EQ(
        Text(ZORSimExcPrivateForCorrectnessTesting(true, -5, 1099511627776LL, 1.5F, -2.25, "str")),
        "To be used only for exception correctness testing. Boolean Member: 1. Integer Membe: -5. Integer "
        "64-bit Member: 1099511627776. Single Precision Floating Point Member: 1.500000. Double Precision "
        "Floating Point Member:-2.250000. String Membe: str.");
    // Getters reached only through their exact, misspelt names, and fields
    // that no placeholder shows.
    EXPECT_STREQ(
        ZORSimExcTypeCollectionTargetInvalidType("CF", "CT", "why", 3, "TF", "TT").GetReaseon().AsString(),
        "why");
    EXPECT_EQ(ZORSimExcDynamicIDInvalidCategory(99).GetCategorySecified(), 99);
    EXPECT_STREQ(ZORSimExcTypeDataRecordEmptyMemberName("RF", "RT").GetDataRecordTypeName().AsString(), "RT");
}

// The report text is not copied: the message follows the caller's buffer,
// and clones and thrown copies share the pointer.
TEST(Messages, TextPointerFollowsTheCallersBuffer) {
    char report[] = "form A missing";
    const ZORSimExcUpgradePreconditionError error(report);
    report[5] = 'B';
    EXPECT_EQ(Text(error), "Upgrade/Downgrade error: form B missing");
    const std::unique_ptr<ZORBasException> clone(error.Clone());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(dynamic_cast<const ZORSimExcUpgradePreconditionError&>(*clone).GetErrorReport(), report);
    try {
        error.Propagate();
        ADD_FAILURE() << "Propagate returned";
    } catch (const ZORSimExcUpgradePreconditionError& thrown) {
        EXPECT_EQ(thrown.GetErrorReport(), report);
    }
}

TEST(Messages, BadStringsAreTurnedAwayWithTheCheckAsSource) {
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("result.sim")));
    try {
        ZORSimBadZORString::Check(ZORString::BAD());
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcBadStringArgument& error) {
        EXPECT_STREQ("ZORSimBadZORString", error.ThrowFile());
        EXPECT_EQ(16, error.ThrowLine());
        EXPECT_EQ(Text(error), "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.");
    }
}

TEST(Messages, ThrowRecordsTheSourceAndRaisesTheDerivedClass) {
    try {
        ZORSimExcNoSuchFile("/data/run.1.tmp").Throw("Here.cpp", 42);
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcNoSuchFile& e) {
        EXPECT_EQ(e.DeveloperReport(ZORBasStringMode(false)).str(),
                  "[1013] No such file: /data/run.1.tmp (raised in Here.cpp:42)");
    }
}

} // namespace
