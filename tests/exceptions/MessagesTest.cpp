// Messages checked by hand, a few of each shape the tables take (every value
// kind, cuts, slips, labels that name another field than the one filling the
// placeholder, hidden fields); text pointers kept uncopied; the check that
// turns BAD strings away; getters whose names or types are easy to get wrong.
#include "ZORSimBadZORString.h"
#include "ZORSimExceptions.h"
#include "ZORSimUttOS.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

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
    const ZORBasSystemError missing(ZORSimUttOS::ErrorCode(ZORSimUttOS::Error::FileNotFound));
    const std::pair<std::string, std::string> cases[] = {
        // Every value kind: bool through "%b" as 0/1, long long through
        // "%ld", floats fixed to six decimals.
        {Text(ZORSimExcPrivateForCorrectnessTesting(true, -5, 1099511627776LL, 1.5F, -2.25, "str")),
         "To be used only for exception correctness testing. Boolean Member: 1. Integer Membe: -5. Integer "
         "64-bit Member: 1099511627776. Single Precision Floating Point Member: 1.500000. Double Precision "
         "Floating Point Member:-2.250000. String Membe: str."},
        {Text(ZORSimExcSystemError("CreateFile", missing)),
         std::string("System Error CreateFile: ") + missing.AsString()},
        // Cut to the field's size; a slip.
        {Text(ZORSimExcNoSuchForm("ABCDEFGHIJKLMNOP")), "No such form: ABCDEFGHI"},
        {Text(ZORSimExcCantCreateFile("a.b")), "Can't creat file: a.b. Already present in document."},
        // Three values, two placeholders: the bulk ID stands where the first
        // GUID is named and the second GUID is not shown.
        {Text(ZORSimExcInconsistentGUID(17, "{guid-one}", "{guid-two}")),
         "SIM Document is inconsistent. Bulk GUID mismatch: 17 != {guid-one}"},
        // The category fills the "%s" labelled form name, the form name the "%d".
        {Text(ZORSimExcSymbolNotAssigned(7, "idForm", "idType")),
         "Thrown if a symbol was requested for a value that did not have any symbol assigned. Form name of "
         "the type of the value ID: 7. Category of the value ID: idForm. Name of the type of the value ID: "
         "idType."},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);
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
