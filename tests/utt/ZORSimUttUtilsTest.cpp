// Bounded copy, case-insensitive comparison and the XML attribute lookup.

#include "ZORSimUttUtils.h"
#include "ZORSimUttXMLUtils.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// A buffer pre-filled with a marker, so that untouched bytes can be told
// from written ones.
struct Buffer {
    char bytes[16];
    Buffer() { std::memset(bytes, 'X', sizeof bytes); }
    std::string Raw(int n) const { return std::string(bytes, n); }
};

} // namespace

TEST(ZORSimUttUtilsCopy, CutsAtCapacityMinusOneAndTerminates) {
    Buffer b;
    ZORSimUttUtils::Copy(b.bytes, "abcdef", 4);
    EXPECT_EQ(b.Raw(5), std::string("abc\0X", 5));
}

TEST(ZORSimUttUtilsCopy, ZeroFillsTheWholeCapacityAndNothingBeyond) {
    Buffer b;
    ZORSimUttUtils::Copy(b.bytes, "ab", 8);
    EXPECT_EQ(b.Raw(9), std::string("ab\0\0\0\0\0\0X", 9));

    // An exact fit and an empty source still clear every byte.
    Buffer exact;
    ZORSimUttUtils::Copy(exact.bytes, "abc", 4);
    EXPECT_EQ(exact.Raw(5), std::string("abc\0X", 5));
    Buffer empty;
    ZORSimUttUtils::Copy(empty.bytes, "", 3);
    EXPECT_EQ(empty.Raw(4), std::string("\0\0\0X", 4));
    Buffer null;
    ZORSimUttUtils::Copy(null.bytes, nullptr, 3);
    EXPECT_EQ(null.Raw(4), std::string("\0\0\0X", 4));
}

TEST(ZORSimUttUtilsCopy, CapacityOneLeavesOnlyTheTerminator) {
    Buffer b;
    ZORSimUttUtils::Copy(b.bytes, "abc", 1);
    EXPECT_EQ(b.Raw(2), std::string("\0X", 2));
}

TEST(ZORSimUttUtilsCopy, CapacityZeroCopiesEverythingWithTheTerminatorOnly) {
    Buffer b;
    ZORSimUttUtils::Copy(b.bytes, "abcdefghij", 0);
    EXPECT_EQ(b.Raw(12), std::string("abcdefghij\0X", 12));
}

TEST(ZORSimUttUtilsCopyNoZB, CopiesExactlyCountBytes) {
    Buffer b;
    ZORSimUttUtils::CopyNoZB(b.bytes, "abcdef", 3);
    EXPECT_EQ(b.Raw(4), "abcX");

    // Terminators and what follows them are bytes like any other.
    const char source[] = {'a', '\0', 'b', 'c'};
    Buffer raw;
    ZORSimUttUtils::CopyNoZB(raw.bytes, source, 4);
    EXPECT_EQ(raw.Raw(5), std::string("a\0bcX", 5));

    Buffer none;
    ZORSimUttUtils::CopyNoZB(none.bytes, "abc", 0);
    EXPECT_EQ(none.Raw(1), "X");
}

TEST(ZORSimUttUtilsSameStr, WholeStringsIgnoringASCIICase) {
    EXPECT_TRUE(ZORSimUttUtils::SameStr("Name", "NAME", 0));
    EXPECT_TRUE(ZORSimUttUtils::SameStr("", "", 0));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("abc", "abcd", 0));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("abcd", "abc", 0));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("abc", "abd", 0));
}

TEST(ZORSimUttUtilsSameStr, CountLimitsTheComparison) {
    EXPECT_TRUE(ZORSimUttUtils::SameStr("abcX", "abcY", 3));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("abcX", "abcY", 4));
    EXPECT_TRUE(ZORSimUttUtils::SameStr("abc", "ABCD", 3));
    // A count beyond both ends stops at the terminators.
    EXPECT_TRUE(ZORSimUttUtils::SameStr("abc", "ABC", 100));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("abc", "ABCD", 100));
}

TEST(ZORSimUttUtilsSameStr, FoldsOnlyTheASCIILetters) {
    // Pairs that differ by 0x20 but are not letters.
    EXPECT_FALSE(ZORSimUttUtils::SameStr("@", "`", 0));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("[", "{", 0));
    EXPECT_FALSE(ZORSimUttUtils::SameStr("\xC3\x84", "\xC3\xA4", 0)); // A and a with diaeresis
    EXPECT_TRUE(ZORSimUttUtils::SameStr("Z_9", "z_9", 0));
}

TEST(ZORSimUttXMLUtils, GetAttrFindsTheFirstNameIgnoringCase) {
    const char* attributes[] = {"id", "7", "Type", "t", "type", "second", nullptr};
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "type"), attributes[3]);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "ID"), attributes[1]);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "7"), nullptr); // values are not names
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "typ"), nullptr);

    const char* none[] = {nullptr};
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(none, "id"), nullptr);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(nullptr, "id"), nullptr);
}
