// Bounded copy, case-insensitive comparison and the XML attribute lookup.
#include "ZORSimUttUtils.h"
#include "ZORSimUttXMLUtils.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace {

// The first `shown` bytes of a buffer pre-filled with 'X' after the call,
// so that untouched bytes can be told from written ones.
template <class F> std::string Written(F&& call, std::size_t shown) {
    char bytes[16];
    std::memset(bytes, 'X', sizeof bytes);
    call(bytes);
    return std::string(bytes, shown);
}

TEST(ZORSimUttUtils, CopyCutsZeroFillsTheCapacityAndTerminates) {
    // Capacity 0 means no bound: all of the source and the terminator.
    using Case = std::tuple<const char*, int, std::string>;
    const Case cases[] = {{"abcdef", 4, std::string("abc\0X", 5)},
                          {"ab", 8, std::string("ab\0\0\0\0\0\0X", 9)},
                          {"", 3, std::string("\0\0\0X", 4)},
                          {nullptr, 3, std::string("\0\0\0X", 4)},
                          {"abcdefghij", 0, std::string("abcdefghij\0X", 12)}};
    for (const auto& [source, capacity, expected] : cases)
        EXPECT_EQ(Written([&](char* to) { ZORSimUttUtils::Copy(to, source, capacity); }, expected.size()),
                  expected)
            << capacity;
    // CopyNoZB copies exactly count bytes, terminators included.
    const char source[] = {'a', '\0', 'b', 'c'};
    EXPECT_EQ(Written([&](char* to) { ZORSimUttUtils::CopyNoZB(to, source, 4); }, 5),
              std::string("a\0bcX", 5));
    EXPECT_EQ(Written([](char* to) { ZORSimUttUtils::CopyNoZB(to, "abcdef", 3); }, 4), "abcX");
    EXPECT_EQ(Written([](char* to) { ZORSimUttUtils::CopyNoZB(to, "abc", 0); }, 1), "X");
}

TEST(ZORSimUttUtils, SameStrFoldsOnlyASCIILettersUpToCount) {
    // Count 0 compares the whole strings; a count beyond both ends stops at
    // the terminators. The last three pairs differ by 0x20 but are no letters.
    using Case = std::tuple<const char*, const char*, int, bool>;
    const Case cases[] = {{"Name", "NAME", 0, true},  {"", "", 0, true},
                          {"abc", "abcd", 0, false},  {"abcd", "abc", 0, false},
                          {"abc", "abd", 0, false},   {"abcX", "abcY", 3, true},
                          {"abcX", "abcY", 4, false}, {"abc", "ABCD", 3, true},
                          {"abc", "ABC", 100, true},  {"abc", "ABCD", 100, false},
                          {"Z_9", "z_9", 0, true},    {"@", "`", 0, false},
                          {"[", "{", 0, false},       {"\xC3\x84", "\xC3\xA4", 0, false}};
    for (const auto& [a, b, count, same] : cases)
        EXPECT_EQ(ZORSimUttUtils::SameStr(a, b, count), same) << a << " / " << b << " / " << count;
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

} // namespace
