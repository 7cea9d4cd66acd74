// Header comparison: its assertions, counts and the dump of a mismatch.
#include "ZORSimFileHeaderDiff.h"

#include "FileUtilsTestSupport.h"
#include "ZORSimTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using zorsim_test::StderrCapture;
using zorsim_test::TempDir;
using zorsim_test::WriteBytes;

// The comparison is protected: tests reach it as a derived test case does.
class HeaderCheck : public ZORSimFileHeaderDiff {
public:
    using ZORSimFileHeaderDiff::ZORSimFileHeaderDiff;
    void Validate(const std::string& file, const std::vector<unsigned char>& expected) {
        ValidateHeader(file.c_str(), "case label", expected.data(), static_cast<int>(expected.size()));
    }
};

std::string ReadAll(std::FILE* file) {
    std::fflush(file);
    std::rewind(file);
    std::string text;
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    return text;
}

class FileHeaderDiff : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.Ok());
        ASSERT_NE(reports, nullptr);
    }
    void TearDown() override { std::fclose(reports); }

    // Runs one validation; returns what it wrote to standard error.
    std::string Run(const std::vector<unsigned char>& expected, int verbose = 0) {
        HeaderCheck check(monitor);
        check.setVerbose(verbose);
        StderrCapture capture;
        check.Validate(file, expected);
        return capture.Finish();
    }

    TempDir dir;
    std::string file = dir / "header.bin";
    std::FILE* reports = std::tmpfile();
    uts_UnitTestMonitor monitor{reports};
};

TEST_F(FileHeaderDiff, IdenticalContentsPassFourAssertionsSilently) {
    WriteBytes(file, std::string("\x01\x02\xff\x00\x7f", 5));
    EXPECT_EQ(Run({1, 2, 255, 0, 127}), "");
    EXPECT_EQ(monitor.getUnitAssertCount(), 4);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 0);
    EXPECT_EQ(ReadAll(reports), "");
}

TEST_F(FileHeaderDiff, EmptyFile) {
    WriteBytes(file, "");
    EXPECT_EQ(Run({}), "");
    EXPECT_EQ(monitor.getUnitAssertCount(), 4);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 0);
    // Against a non-empty image: a length failure and a dump without bytes.
    EXPECT_EQ(Run({9}), "case label\nActual length: 0\n\n");
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 1);
}

TEST_F(FileHeaderDiff, LongerFileFailsOnLengthWithoutComparingAndDumpsEveryByte) {
    WriteBytes(file, std::string("\x01\x02\xff", 3));
    EXPECT_EQ(Run({1, 2}), "case label\nActual length: 3\n1,2,255\n");
    EXPECT_EQ(monitor.getUnitAssertCount(), 3) << "no content comparison after a length mismatch";
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 1);
    EXPECT_EQ(ReadAll(reports),
              "*** UNIT ASSERTION FAILED: ZORSimFileHeaderDiff(39): passedLength && \"Header "
              "validation failed length.\"\n");
}

TEST_F(FileHeaderDiff, ContentMismatchFailsTheMatchAssertionAndDumps) {
    WriteBytes(file, std::string("\x00\x80\x10", 3));
    EXPECT_EQ(Run({0, 128, 17}), "case label\nActual length: 3\n0,128,16\n");
    EXPECT_EQ(monitor.getUnitAssertCount(), 4);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 1);
    EXPECT_EQ(ReadAll(reports), "*** UNIT ASSERTION FAILED: ZORSimFileHeaderDiff(45): passed && \"Header "
                                "validation failed match.\"\n");
}

TEST_F(FileHeaderDiff, MissingFileRecordsTheOpenFailureAndStops) {
    EXPECT_EQ(Run({1}), "");
    EXPECT_EQ(monitor.getUnitAssertCount(), 1);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 1);
    EXPECT_EQ(ReadAll(reports), "*** UNIT ASSERTION FAILED: ZORSimFileHeaderDiff(27): fp != 0\n");
}

TEST_F(FileHeaderDiff, VerboseRunReportsEveryAssertionWithItsLine) {
    WriteBytes(file, "ab");
    Run({'a', 'b'}, 2);
    EXPECT_EQ(monitor.getPassThroughCount(), 4);
    EXPECT_EQ(
        ReadAll(reports),
        "--- unit assertion passed: ZORSimFileHeaderDiff(27): fp != 0\n"
        "--- unit assertion passed: ZORSimFileHeaderDiff(35): size_read == file_length && \"Header read "
        "failed.\"\n"
        "--- unit assertion passed: ZORSimFileHeaderDiff(39): passedLength && \"Header validation failed "
        "length.\"\n"
        "--- unit assertion passed: ZORSimFileHeaderDiff(45): passed && \"Header validation failed "
        "match.\"\n");
}

} // namespace
