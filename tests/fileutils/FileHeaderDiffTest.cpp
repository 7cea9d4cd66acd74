// Header comparison: its assertions, counts and the dump of a mismatch.
#include "ZORSimFileHeaderDiff.h"

#include "ZORSimTestSupport.h"

#include <cstdio>
#include <vector>

namespace {

using namespace zorsim_test;

// The comparison is protected: tests reach it as a derived test case does.
struct HeaderCheck : ZORSimFileHeaderDiff {
    using ZORSimFileHeaderDiff::ZORSimFileHeaderDiff;
    void Validate(const std::string& file, const std::vector<unsigned char>& expected) {
        ValidateHeader(file.c_str(), "case label", expected.data(), static_cast<int>(expected.size()));
    }
};

const std::string kFailed = "*** UNIT ASSERTION FAILED: ZORSimFileHeaderDiff",
                  kPassed = "--- unit assertion passed: ZORSimFileHeaderDiff", kOpen = "(27): fp != 0\n",
                  kRead = "(35): size_read == file_length && \"Header read failed.\"\n",
                  kLength = "(39): passedLength && \"Header validation failed length.\"\n",
                  kMatch = "(45): passed && \"Header validation failed match.\"\n",
                  kEveryPass = kPassed + kOpen + kPassed + kRead + kPassed + kLength + kPassed + kMatch;

TEST(FileHeaderDiff, AssertionsCountsReportsAndDump) {
    using namespace std::string_literals;
    const struct {
        std::optional<std::string> contents; // none: no file
        std::vector<unsigned char> expected;
        int verbose, asserts, failures;
        const char* dump; // after "Actual length: "
        std::string reports;
    } cases[] = {
        {"\x01\x02\xff\x00\x7f"s, {1, 2, 255, 0, 127}, 0, 4, 0, nullptr, ""},
        {"", {}, 0, 4, 0, nullptr, ""},
        // A length failure skips the comparison; the dump lists every byte.
        {"", {9}, 0, 3, 1, "0\n\n", kFailed + kLength},
        {"\x01\x02\xff"s, {1, 2}, 0, 3, 1, "3\n1,2,255\n", kFailed + kLength},
        {"\x00\x80\x10"s, {0, 128, 17}, 0, 4, 1, "3\n0,128,16\n", kFailed + kMatch},
        {std::nullopt, {1}, 0, 1, 1, nullptr, kFailed + kOpen},
        {"ab", {'a', 'b'}, 2, 4, 0, nullptr, kEveryPass},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        TempDir dir;
        if (c.contents)
            dir.File("header.bin", *c.contents);
        std::FILE* const reports = std::tmpfile();
        uts_UnitTestMonitor monitor(reports);
        HeaderCheck check(monitor);
        check.setVerbose(c.verbose);
        StderrCapture capture;
        check.Validate(dir / "header.bin", c.expected);
        EXPECT_EQ(c.dump ? "case label\nActual length: "s + c.dump : "", capture.Finish());
        EXPECT_EQ(c.asserts, monitor.getUnitAssertCount());
        EXPECT_EQ(c.failures, monitor.getUnitAssertFailureCount());
        EXPECT_EQ(c.verbose ? c.asserts : 0, monitor.getPassThroughCount());
        std::fflush(reports);
        std::rewind(reports);
        std::string text(4096, '\0');
        text.resize(std::fread(text.data(), 1, text.size(), reports));
        EXPECT_EQ(c.reports, text);
        std::fclose(reports);
    }
}

} // namespace
