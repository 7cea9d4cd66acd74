// Header comparison: its assertions, counts and the dump of a mismatch.
#include "ZORSimFileHeaderDiff.h"

#include "ZORSimTestSupport.h"

using namespace zorsim_test;

// The comparison is protected: tests reach it as a derived test case does.
struct HeaderCheck : ZORSimFileHeaderDiff {
    using ZORSimFileHeaderDiff::ZORSimFileHeaderDiff;
    void Validate(const std::string& file, const std::vector<unsigned char>& expected) {
        ValidateHeader(file.c_str(), "case label", expected.data(), static_cast<int>(expected.size()));
    }
};

TEST(FileHeaderDiff, AssertionsCountsReportsAndDump) {
    using namespace std::string_literals;
    const std::string failed = "*** UNIT ASSERTION FAILED: ZORSimFileHeaderDiff",
                      length = failed + "(39): passedLength && \"Header validation failed length.\"\n",
                      match = failed + "(45): passed && \"Header validation failed match.\"\n",
                      noFile = "(27): fp != 0\n";
    // File contents (none: no file), expected bytes, verbosity, assertions and
    // failures counted, the dump after "Actual length: ", the reports.
    const std::tuple<std::optional<std::string>, std::vector<unsigned char>, int, int, int, const char*,
                     std::string>
        cases[] = {
            {"\x01\xff\x00\x7f"s, {1, 255, 0, 127}, 0, 4, 0, nullptr, ""},
            // A length failure skips the comparison; the dump lists every byte.
            {"\x01\x02\xff"s, {1, 2}, 0, 3, 1, "3\n1,2,255\n", length},
            {"\x00\x80\x10"s, {0, 128, 17}, 0, 4, 1, "3\n0,128,16\n", match},
            {std::nullopt, {1}, 0, 1, 1, nullptr, failed + noFile},
            {"", {}, 2, 4, 0, nullptr, "--- unit assertion passed: ZORSimFileHeaderDiff" + noFile},
        };
    for (const auto& [contents, expected, verbose, asserts, failures, dump, reports] : cases) {
        TempDir dir;
        if (contents)
            dir.File("header.bin", *contents);
        std::FILE* const file = std::tmpfile();
        uts_UnitTestMonitor monitor(file);
        HeaderCheck check(monitor);
        check.setVerbose(verbose);
        StderrCapture capture;
        check.Validate(dir / "header.bin", expected);
        EXPECT_EQ(dump ? "case label\nActual length: "s + dump : "", capture.Finish());
        EXPECT_EQ(asserts, monitor.getUnitAssertCount());
        EXPECT_EQ(failures, monitor.getUnitAssertFailureCount());
        EXPECT_EQ(verbose ? asserts : 0, monitor.getPassThroughCount());
        std::rewind(file);
        std::string text(4096, '\0');
        text.resize(std::fread(text.data(), 1, text.size(), file));
        EXPECT_EQ(reports, verbose ? text.substr(0, reports.size()) : text); // verbose: the first of four
        std::fclose(file);
    }
}
