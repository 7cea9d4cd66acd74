// Start and stop hooks of the base libraries and the hook journal.
#include "ZORBasModules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> Journal() {
    std::vector<std::string> entries;
    for (int i = 0; i < ZORBasHookJournal::Size(); ++i)
        entries.emplace_back(ZORBasHookJournal::At(i));
    return entries;
}

TEST(BaseModules, HooksCountTheirOwnUsesAndAdjustTheTally) {
    ZORBasHookJournal::Clear();
    int tally = 0;
    ZORBasShared_initialize(tally);
    EXPECT_EQ(tally, 1); // first start
    ZORBasShared_initialize(tally);
    EXPECT_EQ(tally, 1); // already running
    ZORBasShared_finalize(tally);
    EXPECT_EQ(tally, 1); // one use left
    ZORBasShared_finalize(tally);
    EXPECT_EQ(tally, 0); // last stop
    EXPECT_EQ(Journal(), (std::vector<std::string>{"ZORBasShared_initialize", "ZORBasShared_initialize",
                                                   "ZORBasShared_finalize", "ZORBasShared_finalize"}));
}

TEST(BaseModules, AllFiveRecordTheirNamesInCallOrder) {
    ZORBasHookJournal::Clear();
    int tally = 0;
    ZORBasXmlParser_initialize(tally);
    ZORBasShared_initialize(tally);
    ZORBasCoreUtils_initialize(tally);
    ZORBasGenericsLib_initialize(tally);
    ZORBasAlloc_initialize(tally);
    EXPECT_EQ(tally, 5);
    ZORBasAlloc_finalize(tally);
    ZORBasGenericsLib_finalize(tally);
    ZORBasCoreUtils_finalize(tally);
    ZORBasShared_finalize(tally);
    ZORBasXmlParser_finalize(tally);
    EXPECT_EQ(tally, 0);
    EXPECT_EQ(Journal(),
              (std::vector<std::string>{"ZORBasXmlParser_initialize", "ZORBasShared_initialize",
                                        "ZORBasCoreUtils_initialize", "ZORBasGenericsLib_initialize",
                                        "ZORBasAlloc_initialize", "ZORBasAlloc_finalize",
                                        "ZORBasGenericsLib_finalize", "ZORBasCoreUtils_finalize",
                                        "ZORBasShared_finalize", "ZORBasXmlParser_finalize"}));
}

TEST(BaseModules, UnmatchedStopGoesBelowZeroWithoutTouchingTheTally) {
    int tally = 0;
    ZORBasGenericsLib_finalize(tally); // count -1
    EXPECT_EQ(tally, 0);
    ZORBasGenericsLib_initialize(tally); // back to 0: not a first start
    EXPECT_EQ(tally, 0);
    ZORBasGenericsLib_initialize(tally); // now a first start again
    EXPECT_EQ(tally, 1);
    ZORBasGenericsLib_finalize(tally);
    EXPECT_EQ(tally, 0);
}

TEST(BaseHookJournal, KeepsTheLatest256) {
    ZORBasHookJournal::Clear();
    EXPECT_EQ(ZORBasHookJournal::Size(), 0);
    EXPECT_EQ(ZORBasHookJournal::At(0), nullptr);
    static std::vector<std::string> names;
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
