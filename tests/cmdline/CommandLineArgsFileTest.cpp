// Arguments read from the file named after "-clargsfile": one per line, with
// the reader's limits and its exact warning lines.
#include "CmdLineTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORSimCommandLine.h"

#include "ZORBasException.h"

#include <clocale>

using namespace zorsim_cmdline_test;
using zorsim_test::Lines;
using zorsim_test::StderrCapture;

namespace {

const std::string kTooLong = "ERROR: Command line argument in command line file is too long - maximum = 1023";
const std::string kTooMany1 = "ERROR: There are more than 1024 command line arguments. All arguments beyond";
const std::string kTooMany2 = "argument 1024 will be ignored.";

class CmdLineArgsFile : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.Ok()); }

    // Fills the store from prog -clargsfile <file holding `contents`> plus
    // `extra` arguments, and returns what the reader wrote to standard error.
    std::vector<std::string> Load(const std::string& contents, std::vector<std::string> extra = {}) {
        std::vector<std::string> args{"prog", "-clargsfile", m_dir.Write("args.txt", contents)};
        args.insert(args.end(), extra.begin(), extra.end());
        return LoadArgv(std::move(args));
    }
    std::vector<std::string> LoadArgv(std::vector<std::string> args) {
        Argv argv(std::move(args));
        StderrCapture capture;
        ZORSimCommandLine set(argv.argc(), argv.argv());
        return Lines(capture.Finish());
    }
    static std::vector<std::string> Stored() {
        std::vector<std::string> args;
        for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i)
            args.emplace_back(ZORSimCommandLine::GetPosition(i).c_str());
        return args;
    }

    TempDir m_dir;
};

} // namespace

TEST_F(CmdLineArgsFile, LinesBecomeArgumentsAfterTheProgramName) {
    EXPECT_TRUE(Load("-n\n5\n", {"-dropped", "x"}).empty());
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog", "-n", "5"}));
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 1);
    EXPECT_EQ(ZORSimCommandLine::GetInt("n", 0), 5);
    EXPECT_FALSE(ZORSimCommandLine::IsMember("dropped"));
}

TEST_F(CmdLineArgsFile, LinesAreTakenWholeWithoutTrimmingAndEmptyLinesCount) {
    EXPECT_TRUE(Load("  spaced  \n\n-k\n\n\"quoted\" # no comment\n").empty());
    EXPECT_EQ(Stored(),
              (std::vector<std::string>{"prog", "  spaced  ", "", "-k", "", "\"quoted\" # no comment"}));
    EXPECT_TRUE(ZORSimCommandLine::IsMember("k"));
    EXPECT_EQ(ZORSimCommandLine::GetString("k", "d"), ZORString("d")); // its value is the empty line
}

TEST_F(CmdLineArgsFile, CarriageReturnsStayInTheArguments) {
    EXPECT_TRUE(Load("-n\r\n5\r\n").empty());
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog", "-n\r", "5\r"}));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("n"));
    EXPECT_EQ(ZORSimCommandLine::GetInt("n\r", 0), 5);
}

TEST_F(CmdLineArgsFile, LongLinesArriveInPiecesEachButTheLastReported) {
    const std::string line(2000, 'x');
    EXPECT_EQ(Load(line + "\n"), (std::vector<std::string>{kTooLong}));
    ASSERT_EQ(ZORSimCommandLine::NumArgs(), 3);
    EXPECT_EQ(ZORSimCommandLine::GetPosition(1).c_str(), line.substr(0, 1023));
    EXPECT_EQ(ZORSimCommandLine::GetPosition(2).c_str(), line.substr(1023));

    // 1022 characters and the line feed fill the buffer exactly.
    const std::string fits(1022, 'y');
    EXPECT_TRUE(Load(fits + "\nz\n").empty());
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog", fits, "z"}));

    // One more and the line feed comes alone, as an empty argument.
    const std::string over(1023, 'y');
    EXPECT_EQ(Load(over + "\nz\n"), (std::vector<std::string>{kTooLong}));
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog", over, "", "z"}));
}

TEST_F(CmdLineArgsFile, LastLineWithoutLineFeedIsReportedButKept) {
    EXPECT_EQ(Load("-a\nlast"), (std::vector<std::string>{kTooLong}));
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog", "-a", "last"}));
    EXPECT_EQ(ZORSimCommandLine::GetString("a", ""), ZORString("last"));

    EXPECT_TRUE(Load("").empty()); // an empty file: the program name alone
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog"}));
}

TEST_F(CmdLineArgsFile, LinesBeyondTheLimitAreDroppedWithTwoWarningsEach) {
    std::string contents;
    for (int i = 1; i <= 1100; ++i)
        contents += "line" + std::to_string(i) + "\n";
    std::vector<std::string> expected;
    for (int i = 0; i < 77; ++i) {
        expected.push_back(kTooMany1);
        expected.push_back(kTooMany2);
    }
    EXPECT_EQ(Load(contents), expected);
    ASSERT_EQ(ZORSimCommandLine::NumArgs(), 1024);
    EXPECT_STREQ(ZORSimCommandLine::GetPosition(1).c_str(), "line1");
    EXPECT_STREQ(ZORSimCommandLine::GetPosition(1023).c_str(), "line1023");
}

TEST_F(CmdLineArgsFile, MissingFileLeavesOnlyTheProgramName) {
    const std::string missing = m_dir.Path() + "/missing.txt";
    EXPECT_EQ(LoadArgv({"prog", "-clargsfile", missing, "-k", "v"}),
              (std::vector<std::string>{"ERROR: Unable to open command line arguments file " + missing}));
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog"}));
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 0);
}

TEST_F(CmdLineArgsFile, NoFileNameAfterTheOptionIsAFileThatCannotBeOpened) {
    EXPECT_EQ(LoadArgv({"prog", "-clargsfile"}),
              (std::vector<std::string>{"ERROR: Unable to open command line arguments file (null)"}));
    EXPECT_EQ(Stored(), (std::vector<std::string>{"prog"}));
}

TEST_F(CmdLineArgsFile, OptionOnlyCountsAsTheFirstArgument) {
    EXPECT_TRUE(LoadArgv({"prog", "-x", "-clargsfile", m_dir.Write("f.txt", "-n\n")}).empty());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 4);
    EXPECT_TRUE(ZORSimCommandLine::IsMember("clargsfile"));
}

TEST_F(CmdLineArgsFile, UndecodableLineEndsTheFillWithTheConversionError) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    try {
        Load("-k\nbad\xff\n");
        ADD_FAILURE() << "undecodable line accepted";
    } catch (const ZORBasToUTF8Exception& e) {
        EXPECT_STREQ(e.Text(), "bad\xff");
        EXPECT_EQ(e.ThrowLine(), 258);
    }
}
