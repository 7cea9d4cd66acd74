// simexc: its matcher driven directly (formats read as the formatter reads
// them, every catalogue message found again), and the tool run as a process,
// as a support engineer runs it.
#include "SimExcMatch.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"
#include "ZORSimUttOS.h"
#include "atr_String.h"

#include <expat.h>
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

// The classes a look-up explained (lines that start a block), or that
// --match listed ("  <code>  <name>" lines), in order.
Names Explained(const std::string& out) {
    Names names;
    for (const std::string& line : Lines(out))
        if (StartsWith(line, "ZORSimExc"))
            names.push_back(line);
    return names;
}
Names Listed(const std::string& out) {
    Names names;
    char name[256];
    int code = 0;
    for (const std::string& line : Lines(out))
        if (StartsWith(line, "  ") && std::sscanf(line.c_str(), "  %d  %255s", &code, name) == 2)
            names.push_back(name);
    return names;
}

// The report an exception writes on standard error.
std::string ReportOf(const ZORBasException& exception) {
    StderrCapture capture;
    try {
        exception.Propagate();
    } catch (const ZORBasException&) {
    }
    return capture.Finish();
}

TEST(SimexcMatcher, PlaceholdersAreReadAsTheFormatterReadsThem) {
    // What the formatter fills must be exactly what the pattern leaves open.
    for (const char* format :
         {"a %d b %u c %lld d %llu", "%5.2f|%-+ #012.3hhd|%I64d|%I32u|%Iu|%zu|%jd|%qd|%Lf",
          "100%% done, %s%%", "%%%s%%%%", "%l. and %h-%s", "% %%d %5%% %s", "trailing %", "%s%s%s",
          "x%.d%.5s%0d%#x%+i"}) {
        const int count = static_cast<int>(simexc::FindPlaceholders(format).size());
        EXPECT_EQ(count, atr_translate(format, ZORBasStringMode(false)).PlaceholderCount()) << format;
        for (const int values : {count, count - 1}) { // one left unfilled shows as written
            atr_translate translation(format, ZORBasStringMode(false));
            for (int k = 1; k <= values; ++k)
                atr_SubstituteFormat(translation, k, ("<" + std::to_string(k) + ">").c_str(),
                                     ZORBasStringMode(false));
            const std::string message = translation.Result(ZORBasStringMode(false)).str();
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
    EXPECT_EQ(multi.LiteralSize(), 26);
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

// What makes --match useful: a report of any catalogue class leads back to
// that class, ranked first, and so does each line of a message that spans
// lines.
TEST(SimexcMatcher, EveryCatalogueMessageLeadsToItsClass) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    ASSERT_EQ(XML_Parse(parser, "<a>\n<b></a>", 11, 1), XML_STATUS_ERROR);
    std::vector<MessagePattern> patterns;
    for (int c = 0; c < ZORSimExcRegistry::Count(); ++c)
        patterns.emplace_back(ZORSimExcRegistry::At(c).format, ZORSimExcRegistry::At(c).fieldCount);
    int multiLine = 0;
    for (int c = 0; c < ZORSimExcRegistry::Count(); ++c) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(c);
        // Values of each kind; blanks, '%' and "%d" must all pass through a gap.
        std::vector<ZORSimExcValue> values(static_cast<std::size_t>(info.fieldCount));
        for (int f = 0; f < info.fieldCount; ++f) {
            ZORSimExcValue& v = values[static_cast<std::size_t>(f)];
            const ZORSimExcFieldKind kind = info.fields[f].kind;
            v = {40 + f, 4000000000U + static_cast<unsigned>(f), 2.5 + f,
                 "v" + std::to_string(f) + "  %d 100%", parser};
            if (kind == ZORSimExcFieldKind::String)
                v.text.resize(static_cast<std::size_t>(info.fields[f].capacity) + 3, 'x');
            if (kind == ZORSimExcFieldKind::SystemError || kind == ZORSimExcFieldKind::SerSystemError)
                v.integer = ZORSimUttOS::ErrorCode(ZORSimUttOS::Error::FileNotFound);
        }
        const std::unique_ptr<ZORBasException> instance(info.create(values.data()));
        const std::string message = instance->AsString(ZORBasStringMode(false)).str();
        const std::string text =
            CleanReportText("!!! EXCEPTION:\n!!!   " + message + "\n!!! TRACEBACK:\n!!!   main\n");
        const MessagePattern& own = patterns[static_cast<std::size_t>(c)];
        ASSERT_EQ(own.Match(text), own.LiteralSize()) << message;
        for (const MessagePattern& other : patterns)
            EXPECT_LE(other.Match(text).value_or(0), own.LiteralSize()) << message;
        const Names lines = Lines(CleanReportText(message));
        multiLine += lines.size() > 1 ? 1 : 0;
        for (const std::string& line : lines.size() > 1 ? lines : Names{})
            EXPECT_TRUE(own.Match(line)) << line;
    }
    EXPECT_GT(multiLine, 5);
    XML_ParserFree(parser);
}

TEST(SimexcTool, LooksUpCodesAndNamesInAnySpelling) {
    const ProcessResult code = Simexc({"1013"});
    EXPECT_EQ(code.exitCode, 0) << code.err;
    EXPECT_EQ(Explained(code.out), (Names{"ZORSimExcNoSuchFile", "ZORSimExcNoSuchForm"}));
    for (const char* part :
         {"  code:         1013 (also the code of ZORSimExcNoSuchForm)",
          "  message:      \"No such file: %s\"",
          "GetFile_name()  ZORSimUttExceptionString<1024>  string of at most 1023 characters; "
          "fills the 1st placeholder, %s"})
        EXPECT_THAT(code.out, ::testing::HasSubstr(part));
    const std::string grid = Simexc({"TypeGridDimensionException"}).out;
    EXPECT_THAT(grid,
                ::testing::HasSubstr("  derives from: ZORSimExcTypeGridException -> ZORBasException\n"));
    EXPECT_THAT(grid, ::testing::HasSubstr("hands values 1 (GetGridFormName), 2 (GetGridTypeName) to "
                                           "ZORSimExcTypeGridException"));
    // A multi-line format is shown escaped, on one line.
    EXPECT_THAT(Simexc({"1037"}).out, ::testing::HasSubstr("\\n databaseVersion: %u\\n file: %s\\n\"\n"));
    const std::string exact = Simexc({"ZORSimExcNoSuchFile"}).out;
    for (const char* spelling : {"NoSuchFile", "nosuchfile", "ZORSIMEXCNOSUCHFILE", "zorsimexcNoSuchFILE"})
        EXPECT_EQ(Simexc({spelling}).out, exact) << spelling;
    EXPECT_EQ(Explained(Simexc({"NoSuchForm", "1010"}).out),
              (Names{"ZORSimExcNoSuchForm", "ZORSimExcIOBounds"}));
}

TEST(SimexcTool, MatchesLinesCopiedFromRealReports) {
    const std::string report = ReportOf(ZORSimExcNoSuchFile("/data/run.1.tmp"));
    const std::string line = "!!!   No such file: /data/run.1.tmp";
    ASSERT_THAT(Lines(report), ::testing::Contains(line)) << report;
    const ProcessResult run = Simexc({"--match", line});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    ASSERT_FALSE(Listed(run.out).empty()) << run.out;
    EXPECT_EQ(Listed(run.out).front(), "ZORSimExcNoSuchFile");
    EXPECT_EQ(Explained(run.out), Names{"ZORSimExcNoSuchFile"}) << "the best one explained";
    // The whole report, trace included, from standard input; unquoted words make one text.
    EXPECT_EQ(Listed(Simexc({"--match", "-"}, report).out), Listed(run.out));
    EXPECT_EQ(Listed(Simexc({"--match", "No", "such", "file:", "/data/run.1.tmp"}).out), Listed(run.out));
    EXPECT_EQ(
        Listed(Simexc({"--match", Lines(ReportOf(ZORSimExcIOBounds(4096, 1048576, 65536))).at(1)}).out).at(0),
        "ZORSimExcIOBounds");
    // A message of several lines: whole, one line of it, or two without their indent.
    const std::string upgrade =
        ReportOf(ZORSimExcNeedUpgrade(3, 7, ZORSimUttExceptionString<1024>("/d/p.sim")));
    EXPECT_THAT(upgrade,
                ::testing::HasSubstr("!!!   Binary format incompatible. Upgrade or downgrade required.\n"
                                     " applicationVersion: 3\n databaseVersion: 7\n file: /d/p.sim\n"));
    EXPECT_EQ(Listed(Simexc({"--match", "-"}, upgrade).out).at(0), "ZORSimExcNeedUpgrade");
    for (const char* text : {" databaseVersion: 7", "databaseVersion: 7\nfile: /d/p.sim"})
        EXPECT_THAT(Listed(Simexc({"--match", text}).out), ::testing::Contains("ZORSimExcNeedUpgrade"))
            << text;
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
        const std::size_t end = run.out.find("\n    {", at);
        const std::string record = run.out.substr(at, end - at);
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
