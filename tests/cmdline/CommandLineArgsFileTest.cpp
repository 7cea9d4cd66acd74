// Arguments read from the file named after "-clargsfile": one per line, with
// the reader's limits and its exact warning lines.
#include "CmdLineTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORBasException.h"

#include <clocale>

using namespace zorsim_cmdline_test;
using Strings = std::vector<std::string>;

namespace {

const std::string kTooLong = "ERROR: Command line argument in command line file is too long - maximum = 1023";

// Fills the store from `args` and returns what the reader wrote to standard error.
Strings Load(Strings args) {
    Argv argv(std::move(args));
    zorsim_test::StderrCapture capture;
    ZORSimCommandLine set(argv.argc(), argv.argv());
    return zorsim_test::Lines(capture.Finish());
}

} // namespace

TEST(CmdLineArgsFile, LinesBecomeArgumentsAfterTheProgramName) {
    TempDir dir;
    ASSERT_FALSE(dir.path.empty());
    const std::string x2000(2000, 'x'), y1022(1022, 'y'), y1023(1023, 'y');
    // Lines beyond the 1023rd are dropped with two warnings each.
    std::string lines1100;
    Strings first1023{"prog"}, tooMany;
    for (int i = 1; i <= 1100; ++i) {
        lines1100 += "line" + std::to_string(i) + "\n";
        if (i < 1024)
            first1023.push_back("line" + std::to_string(i));
        else
            tooMany.insert(tooMany.end(),
                           {"ERROR: There are more than 1024 command line arguments. All arguments beyond",
                            "argument 1024 will be ignored."});
    }
    const struct {
        std::string contents;
        Strings warnings;
        Strings stored;
    } rows[] = {
        {"", {}, {"prog"}},
        {"-n\n5\n", {}, {"prog", "-n", "5"}},
        // Lines are taken whole, without trimming; empty lines count.
        {"  spaced  \n\n-k\n\n\"quoted\" # no comment\n",
         {},
         {"prog", "  spaced  ", "", "-k", "", "\"quoted\" # no comment"}},
        // A long line arrives in pieces, each but the last reported.
        {x2000 + "\n", {kTooLong}, {"prog", x2000.substr(0, 1023), x2000.substr(1023)}},
        // 1022 characters and the line feed fill the buffer exactly; one
        // more and the line feed comes alone, as an empty argument.
        {y1022 + "\nz\n", {}, {"prog", y1022, "z"}},
        {y1023 + "\nz\n", {kTooLong}, {"prog", y1023, "", "z"}},
        // A last line without a line feed is reported but kept.
        {"-a\nlast", {kTooLong}, {"prog", "-a", "last"}},
        {lines1100, tooMany, first1023},
        {"-n\r\n5\r\n", {}, {"prog", "-n\r", "5\r"}}, // carriage returns stay
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.contents.substr(0, 20));
        // Arguments after the file's name are dropped.
        EXPECT_EQ(Load({"prog", "-clargsfile", dir.Write("args.txt", row.contents), "-dropped", "x"}),
                  row.warnings);
        EXPECT_EQ(StoredArgs(), row.stored);
    }
    // The pairs come from the file's lines.
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 1);
    EXPECT_EQ(ZORSimCommandLine::GetInt("n\r", 0), 5);
    // The option counts only as the first argument.
    EXPECT_TRUE(Load({"prog", "-x", "-clargsfile", dir.Write("f.txt", "-n\n")}).empty());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 4);
    EXPECT_TRUE(ZORSimCommandLine::IsMember("clargsfile"));
}

// A missing file, or none named, leaves only the program name.
TEST(CmdLineArgsFile, UnopenableFileLeavesOnlyTheProgramName) {
    TempDir dir;
    const std::string missing = dir.path + "/missing.txt";
    const std::string kUnable = "ERROR: Unable to open command line arguments file ";
    EXPECT_EQ(Load({"prog", "-clargsfile", missing, "-k", "v"}), Strings{kUnable + missing});
    EXPECT_EQ(StoredArgs(), Strings{"prog"});
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 0);
    EXPECT_EQ(Load({"prog", "-clargsfile"}), Strings{kUnable + "(null)"});
    EXPECT_EQ(StoredArgs(), Strings{"prog"});
}

TEST(CmdLineArgsFile, UndecodableLineEndsTheFillWithTheConversionError) {
    TempDir dir;
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    try {
        Load({"prog", "-clargsfile", dir.Write("args.txt", "-k\nbad\xff\n")});
        ADD_FAILURE() << "undecodable line accepted";
    } catch (const ZORBasToUTF8Exception& e) {
        EXPECT_STREQ(e.Text(), "bad\xff");
        EXPECT_EQ(e.ThrowLine(), 258);
    }
}
