// Start and stop hooks of the base libraries and the hook journal.
#include "ZORBasModules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(BaseModules, HooksCountTheirOwnUsesAndAdjustTheTallyOnFirstStartAndLastStop) {
    ZORBasHookJournal::Clear();
    int tally = 0;
    std::vector<int> seen;
    for (auto hook : {ZORBasShared_initialize, ZORBasShared_initialize, ZORBasShared_finalize,
                      ZORBasShared_finalize, // matched
                      ZORBasGenericsLib_finalize, ZORBasGenericsLib_initialize, ZORBasGenericsLib_initialize,
                      ZORBasGenericsLib_finalize}) { // an unmatched stop goes below zero first
        hook(tally);
        seen.push_back(tally);
    }
    EXPECT_EQ(seen, (std::vector<int>{1, 1, 1, 0, 0, 0, 1, 0}));
    ASSERT_EQ(ZORBasHookJournal::Size(), 8);
    EXPECT_STREQ(ZORBasHookJournal::At(0), "ZORBasShared_initialize");
    EXPECT_STREQ(ZORBasHookJournal::At(3), "ZORBasShared_finalize");
    EXPECT_STREQ(ZORBasHookJournal::At(4), "ZORBasGenericsLib_finalize");
    EXPECT_STREQ(ZORBasHookJournal::At(5), "ZORBasGenericsLib_initialize");
}

TEST(BaseHookJournal, KeepsTheLatest256) {
    ZORBasHookJournal::Clear();
    EXPECT_EQ(ZORBasHookJournal::Size(), 0);
    EXPECT_EQ(ZORBasHookJournal::At(0), nullptr);
    static std::vector<std::string> names; // the journal keeps the pointers
    names.clear();
    for (int i = 0; i < 300; ++i)
        names.push_back("hook" + std::to_string(i));
    for (const auto& name : names)
        ZORBasHookJournal::Record(name.c_str());
    ASSERT_EQ(ZORBasHookJournal::Size(), 256);
    EXPECT_STREQ(ZORBasHookJournal::At(0), "hook44");
    EXPECT_STREQ(ZORBasHookJournal::At(255), "hook299");
    EXPECT_EQ(ZORBasHookJournal::At(256), nullptr);
    EXPECT_EQ(ZORBasHookJournal::At(-1), nullptr);
    ZORBasHookJournal::Clear();
    EXPECT_EQ(ZORBasHookJournal::Size(), 0);
}

} // namespace
