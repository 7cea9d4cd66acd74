// simexc: its matcher driven directly (formats read as the formatter reads
// them; the catalogue test finds every catalogue message again), and the tool
// run as a process, as a support engineer runs it.
#include "SimExcMatch.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"
#include "atr_String.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace zorsim_test;
using simexc::CleanReportText;
using simexc::MessagePattern;
using Names = std::vector<std::string>;

namespace {

ProcessResult Simexc(const Names& args, const std::string& input = "") {
    Names argv{SIMEXC_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    return Process(SIMEXC_PATH, argv, input).Wait();
}

// The classes explained (lines that start a block), in order.
Names Explained(const std::string& out) {
    Names names;
    for (const std::string& line : Lines(out))
        if (StartsWith(line, "ZORSimExc"))
            names.push_back(line);
    return names;
}

TEST(SimexcMatcher, PlaceholdersAreReadAsTheFormatterReadsThem) {
    // What the formatter fills must be exactly what the pattern leaves open.
    const ZORBasStringMode mode(false);
    for (const char* format :
         {"a %d b %u c %lld d %llu", "%5.2f|%-+ #012.3hhd|%I64d|%I32u|%Iu|%zu|%jd|%qd|%Lf",
          "100%% done, %s%%", "%%%s%%%%", "%l. and %h-%s", "% %%d %5%% %s", "trailing %", "%s%s%s",
          "x%.d%.5s%0d%#x%+i"}) {
        const int count = static_cast<int>(simexc::FindPlaceholders(format).size());
        EXPECT_EQ(count, atr_translate(format, mode).PlaceholderCount()) << format;
        for (const int values : {count, count - 1}) { // one left unfilled shows as written
            atr_translate translation(format, mode);
            for (int k = 1; k <= values; ++k)
                atr_SubstituteFormat(translation, k, ("<" + std::to_string(k) + ">").c_str(), mode);
            const std::string message = translation.Result(mode).str();
            const MessagePattern pattern(format, values);
            EXPECT_EQ(pattern.Match(CleanReportText(message)), pattern.LiteralSize()) << message;
        }
    }
}

TEST(SimexcMatcher, WholeLinesOnlyRankedByFixedTextCovered) {
    EXPECT_EQ(
        CleanReportText("!!! - SIM Exception throw reports are disabled.\n!!! EXCEPTION:\r\n!!!   first\r\n"
                        " second  \t line\n\n!!! TRACEBACK:\n!!!   Frame in f.cpp:3\n"),
        "first\nsecond line");
    // Banner-only reports follow each other directly: the first one is taken.
    EXPECT_EQ(CleanReportText("!!! EXCEPTION:\n!!!   one\n!!! EXCEPTION:\n!!!   two\n"), "one");
    const MessagePattern multi("Head %d.\n At %s in the XML stream.\n tail\n", 2);
    // Lines must be whole and consecutive, letter case must agree, and a value holds no line break.
    // clang-format off
    const std::pair<const char*, std::optional<int>> rows[] = {
        {"Head 3.\nAt line 1 in the XML stream.\ntail", 26}, {"At x in the XML stream.\ntail", 21}, {"tail", 4},
        {"Head 3.\ntail", std::nullopt}, {"in the XML stream.", std::nullopt}, {"head 3.", std::nullopt},
        {"At a\nb in the XML stream.", std::nullopt}};
    // clang-format on
    for (const auto& [text, covered] : rows)
        EXPECT_EQ(multi.Match(text), covered) << text;
    // Gaps can also take the fixed text; the best reading counts it as fixed.
    EXPECT_EQ(MessagePattern("%s: %s: end", 2).Match("a: b: c: end"), 5);
    EXPECT_EQ(MessagePattern("No such file: %s", 1).Match("No such file:"), 11) << "an empty value";
    // Long text against many gaps stays linear: no backtracking blow-up.
    const std::string text(60000, 'a');
    EXPECT_FALSE(MessagePattern("%s a %s a %s a %s a %s a %s b", 6).Match(text));
    EXPECT_EQ(MessagePattern("%s%s%s%s%s%s%sa", 7).Match(text), 1);
}

TEST(SimexcTool, LooksUpCodesAndNamesInAnySpelling) {
    // In the order given; a code that two classes share gives both.
    const ProcessResult run = Simexc({"1013", "TypeGridDimensionException", "1037"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(Explained(run.out), (Names{"ZORSimExcNoSuchFile", "ZORSimExcNoSuchForm",
                                         "ZORSimExcTypeGridDimensionException", "ZORSimExcNeedUpgrade"}));
    for (const char* part :
         {"  code:         1013 (also the code of ZORSimExcNoSuchForm)",
          "  message:      \"No such file: %s\"",
          "GetFile_name()  ZORSimUttExceptionString<1024>  string of at most 1023 characters; "
          "fills the 1st placeholder, %s",
          "  derives from: ZORSimExcTypeGridException -> ZORBasException\n",
          "hands values 1 (GetGridFormName), 2 (GetGridTypeName) to ZORSimExcTypeGridException",
          "\\n databaseVersion: %u\\n file: %s\\n\"\n"}) // a multi-line format escaped, on one line
        EXPECT_THAT(run.out, ::testing::HasSubstr(part));
    const std::string exact = Simexc({"ZORSimExcNoSuchFile"}).out;
    for (const char* spelling : {"NoSuchFile", "nosuchfile", "ZORSIMEXCNOSUCHFILE", "zorsimexcNoSuchFILE"})
        EXPECT_EQ(Simexc({spelling}).out, exact) << spelling;
}

// A report as a support engineer copies it: whole, trace included, or its
// message as unquoted words that make one text.
TEST(SimexcTool, MatchesReportsCopiedWholeOrAsWords) {
    StderrCapture report;
    EXPECT_THROW(ZORSimExcNoSuchFile("/data/run.1.tmp").Propagate(), ZORSimExcNoSuchFile);
    const ProcessResult run = Simexc({"--match", "-"}, report.Finish());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, ::testing::HasSubstr("best first:\n  1013  ZORSimExcNoSuchFile "));
    EXPECT_EQ(Explained(run.out), Names{"ZORSimExcNoSuchFile"}) << "the best one explained";
    EXPECT_EQ(Simexc({"--match", "No", "such", "file:", "/data/run.1.tmp"}).out, run.out);
}

// The export names every class in registry order with its code, base and
// the number of its fields; --list gives a line each.
TEST(SimexcTool, ExportsTheWholeRegistryAsJsonAndAsAList) {
    const ProcessResult run = Simexc({"--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const int count = ZORSimExcRegistry::Count();
    EXPECT_THAT(run.out, ::testing::StartsWith("{\n  \"count\": " + std::to_string(count) + ",\n"));
    std::size_t at = 0;
    for (int i = 0; i < count; ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        const std::string entry =
            "{\"name\": \"" + std::string(info.name) + "\", \"code\": " + std::to_string(info.code) + ", ";
        at = run.out.find(entry, at);
        ASSERT_NE(at, std::string::npos) << entry;
        const std::string record = run.out.substr(at, run.out.find("\n    {", at) - at);
        EXPECT_THAT(record, ::testing::HasSubstr("\"base\": \"" + std::string(info.base) + "\""));
        EXPECT_EQ(std::count(record.begin(), record.end(), '{') - 1, info.fieldCount) << info.name;
    }
    const Names list = Lines(Simexc({"--list"}).out);
    ASSERT_EQ(static_cast<int>(list.size()), count);
    EXPECT_TRUE(StartsWith(list[0], std::to_string(ZORSimExcRegistry::At(0).code) + "  " +
                                        ZORSimExcRegistry::At(0).name));
}

TEST(SimexcTool, NotFoundIsOneAndBadUsageIsTwo) {
    // clang-format off
    const std::vector<Names> rows[] = {
        {{"999"}, {"1002"}, {"99999999999999"}, {"NoSuchThing"}, {"1013", "Nope"}, {"--match", "such file: /x"}},
        {{}, {"--bogus"}, {"-5"}, {""}, {"--list", "x"}, {"--json", "1013"}, {"--match"}, {"--match", "!!! EXCEPTION:"},
         {"--help", "me"}}};
    // clang-format on
    for (int status : {1, 2})
        for (const Names& args : rows[status - 1]) {
            const ProcessResult run = Simexc(args);
            EXPECT_EQ(run.exitCode, status) << ::testing::PrintToString(args);
            EXPECT_THAT(run.err, ::testing::HasSubstr(status == 1 ? "simexc: " : "usage: simexc"));
            EXPECT_TRUE(status == 1 || run.out.empty()) << run.out;
        }
    EXPECT_THAT(Simexc({"GridDimension"}).err, ::testing::HasSubstr("ZORSimExcTypeGridDimensionException"))
        << "a miss suggests names holding the word";
    const ProcessResult help = Simexc({"--help"});
    EXPECT_TRUE(help.exitCode == 0 && help.err.empty());
    EXPECT_THAT(help.out, ::testing::HasSubstr("--match"));
}

} // namespace
