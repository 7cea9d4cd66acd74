// The plain globbing entry points, called as a C client calls them.
#include "ZORSimTestSupport.h"

#include "ZORBasException.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFileGlob.h"
#include "ZORSimUttOS.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "GlobTestDir.h"

using namespace zorsim_test;
using ::testing::UnorderedElementsAre;

namespace {

constexpr unsigned int kCapacity = 256;

// An error buffer whose untouched bytes show.
struct ErrorBuffer {
    ErrorBuffer() { std::memset(bytes, 'X', sizeof bytes); }
    // The text up to and including its terminator, or "X..." when untouched.
    std::string Text() const {
        const char* end = std::find(bytes, bytes + sizeof bytes, 'X');
        const char* stop = std::find(bytes, end, '\0');
        return stop != end ? std::string(bytes, stop + 1) : std::string(bytes, end) + "X";
    }
    char bytes[kCapacity + 8];
};

// Lists a pattern the way a binding does; the texts are copied at once.
std::vector<std::string> ListAll(const std::string& pattern) {
    std::vector<std::string> names;
    char error[kCapacity];
    void* handle = nullptr;
    EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, error), 1) << error;
    for (;;) {
        unsigned char empty = 2;
        EXPECT_EQ(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error), 1) << error;
        if (empty != 0)
            break;
        const char* front = nullptr;
        EXPECT_EQ(ZORSimUttFileUtils_GlobFront(handle, &front, kCapacity, error), 1) << error;
        names.emplace_back(front);
        EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 1) << error;
    }
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error); // its result means nothing
    return names;
}

class ZORSimUttGlobExport : public ::testing::Test {
protected:
    void SetUp() override { ZORSimUttAssertDisableExcReport(); }
    void TearDown() override { ZORSimUttOSFault::DisarmAll(); }
    GlobTestDir dir;
};

TEST_F(ZORSimUttGlobExport, ListsLikeTheRange) {
    dir.File("a.txt");
    dir.File("b.TXT");
    dir.File("c.dat");
    const std::string d = dir.Path();
    EXPECT_THAT(ListAll(d + "\\*.txt"), UnorderedElementsAre(d + "/a.txt", d + "/b.TXT"));
    ScopedWorkingDirectory cwd(d);
    EXPECT_THAT(ListAll("*.dat"), UnorderedElementsAre("c.dat"));
}

TEST_F(ZORSimUttGlobExport, TheFrontTextLastsUntilTheNextCallOnTheHandle) {
    dir.File("only");
    char error[kCapacity];
    void* handle = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((dir.Path() + "/o*").c_str(), &handle, kCapacity, error), 1);
    const char* front = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobFront(handle, &front, kCapacity, error), 1);
    // The joined text is made afresh for the call; it must not die with it
    // (the sanitizer build sees a read of freed memory otherwise).
    EXPECT_STREQ(front, (dir.Path() + "/only").c_str());
    ASSERT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 1);
    unsigned char empty = 0;
    ASSERT_EQ(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error), 1);
    EXPECT_EQ(empty, 1);
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error);
}

TEST_F(ZORSimUttGlobExport, NoMatchIsSuccessAndEmpty) {
    ErrorBuffer error;
    void* handle = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((dir.Path() + "/*.none").c_str(), &handle, kCapacity, error.bytes),
              1);
    unsigned char empty = 0;
    EXPECT_EQ(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error.bytes), 1);
    EXPECT_EQ(empty, 1);
    EXPECT_EQ(error.Text(), "X");
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error.bytes);
}

TEST_F(ZORSimUttGlobExport, FailuresBecomeTextCutToTheCapacity) {
    const std::string pattern = dir.Path() + "/missing\\*.x";
    const std::string message =
        std::string("System Error FindFirstFile: ") + ZORBasSystemError(ENOENT).AsString();
    StderrCapture quiet;
    {
        ErrorBuffer error;
        void* handle = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, error.bytes), 0);
        EXPECT_EQ(handle, reinterpret_cast<void*>(0x1)) << "no handle on failure";
        EXPECT_EQ(error.Text(), message + '\0');
    }
    {
        ErrorBuffer error;
        void* handle = nullptr;
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, 8, error.bytes), 0);
        EXPECT_EQ(error.Text(), message.substr(0, 7) + '\0');
    }
    {
        ErrorBuffer error;
        void* handle = nullptr;
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, 1, error.bytes), 0);
        EXPECT_EQ(error.Text(), std::string(1, '\0'));
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, 0, error.bytes), 0);
        EXPECT_EQ(error.bytes[1], 'X');
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, nullptr), 0);
    }
    {
        ErrorBuffer error;
        void* handle = nullptr;
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit("bad\xFF/*", &handle, kCapacity, error.bytes), 0);
        EXPECT_EQ(error.Text(), "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun." +
                                    std::string(1, '\0'));
    }
    quiet.Finish();
}

TEST_F(ZORSimUttGlobExport, NextReportsAFindNextFileFailure) {
    dir.File("a");
    dir.File("b");
    char error[kCapacity];
    void* handle = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((dir.Path() + "/*").c_str(), &handle, kCapacity, error), 1);
    ZORSimUttOSFault::Arm("FindNextFile", EIO);
    EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 0);
    EXPECT_EQ(std::string(error),
              std::string("System Error FindNextFile: ") + ZORBasSystemError(EIO).AsString());
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error);
}

TEST_F(ZORSimUttGlobExport, GlobFreeAlwaysAnswersGlobError) {
    dir.File("a");
    ErrorBuffer error;
    void* handle = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((dir.Path() + "/*").c_str(), &handle, kCapacity, error.bytes), 1);
    EXPECT_EQ(ZORSimUttFileUtils_GlobFree(handle, kCapacity, error.bytes), 0);
    EXPECT_EQ(error.Text(), std::string("Glob Error: unknown error") + '\0');
    // The handle is freed all the same: the sanitizer build's leak checker
    // would report it otherwise.
}

// No fixture: the children end through exit and would leave its directory.
TEST(ZORSimUttGlobExportNullHandle, EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    char error[kCapacity];
    unsigned char empty = 0;
    const char* front = nullptr;
    const char* expected = "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! nullptr != glob\n";
    EXPECT_EXIT(ZORSimUttFileUtils_GlobEmpty(nullptr, &empty, kCapacity, error), ::testing::ExitedWithCode(1),
                expected);
    EXPECT_EXIT(ZORSimUttFileUtils_GlobFront(nullptr, &front, kCapacity, error), ::testing::ExitedWithCode(1),
                expected);
    EXPECT_EXIT(ZORSimUttFileUtils_GlobNext(nullptr, kCapacity, error), ::testing::ExitedWithCode(1),
                expected);
    EXPECT_EXIT(ZORSimUttFileUtils_GlobFree(nullptr, kCapacity, error), ::testing::ExitedWithCode(1),
                expected);
}

} // namespace
