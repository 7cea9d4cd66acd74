// simexc run as a process, as a support engineer runs it: look-ups by code
// and name, matching a report that a real exception wrote, the JSON export,
// and the exit statuses.
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using zorsim_test::Lines;
using zorsim_test::StartsWith;
using Names = std::vector<std::string>;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

std::string Drain(std::FILE* file) {
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

// Runs simexc with `args` and `input` on its standard input.
Outcome Simexc(const std::vector<std::string>& args, const std::string& input = "") {
    std::FILE* files[3] = {std::tmpfile(), std::tmpfile(), std::tmpfile()};
    std::fputs(input.c_str(), files[0]);
    std::fflush(files[0]);
    std::rewind(files[0]);
    std::vector<char*> argv{const_cast<char*>(SIMEXC_PATH)};
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        for (int fd = 0; fd < 3; ++fd)
            dup2(fileno(files[fd]), fd);
        execv(SIMEXC_PATH, argv.data());
        _exit(127);
    }
    Outcome run;
    int status = 0;
    if (pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    std::fclose(files[0]);
    run.out = Drain(files[1]);
    run.err = Drain(files[2]);
    return run;
}

testing::AssertionResult Has(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

// The class names a look-up explained, in order: the lines that start a block.
Names Explained(const std::string& out) {
    Names names;
    for (const std::string& line : Lines(out))
        if (StartsWith(line, "ZORSimExc"))
            names.push_back(line);
    return names;
}

// The classes --match listed, best first.
Names Listed(const std::string& out) {
    Names names;
    for (const std::string& line : Lines(out)) {
        char name[256];
        int code = 0;
        if (StartsWith(line, "  ") && std::sscanf(line.c_str(), "  %d  %255s", &code, name) == 2)
            names.push_back(name);
    }
    return names;
}

// The banner's message lines, as a report on standard error shows them.
std::string ReportOf(const ZORBasException& exception) {
    zorsim_test::StderrCapture capture;
    try {
        exception.Propagate();
    } catch (const ZORBasException&) {
    }
    return capture.Finish();
}

TEST(SimexcLookup, CodeShowsEveryClassWithItsChainFieldsAndFormat) {
    const Outcome run = Simexc({"1013"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Explained(run.out), (Names{"ZORSimExcNoSuchFile", "ZORSimExcNoSuchForm"}));
    EXPECT_TRUE(Has(run.out, "  code:         1013 (also the code of ZORSimExcNoSuchForm)"));
    EXPECT_TRUE(Has(run.out, "  message:      \"No such file: %s\""));
    EXPECT_TRUE(Has(run.out,
                    "GetFile_name()  ZORSimUttExceptionString<1024>  string of at most 1023 characters; "
                    "fills the 1st placeholder, %s"));
    EXPECT_TRUE(Has(run.out, "GetForm_name()  ZORSimUttExceptionString<10>"));
    EXPECT_EQ(Explained(Simexc({"1836"}).out),
              (Names{"ZORSimExcExtCSetNonEmpty", "ZORSimExcNeedManualFunctions"}));

    const std::string grid = Simexc({"TypeGridDimensionException"}).out;
    EXPECT_TRUE(Has(grid, "  derives from: ZORSimExcTypeGridException -> ZORBasException\n"));
    EXPECT_TRUE(Has(grid, "its constructor hands values 1 (GetGridFormName), 2 (GetGridTypeName) to "
                          "ZORSimExcTypeGridException"));
    // A multi-line format is shown escaped, on one line.
    EXPECT_TRUE(Has(Simexc({"1037"}).out,
                    "required.\\n applicationVersion: %u\\n databaseVersion: %u\\n file: %s\\n\"\n"));
}

TEST(SimexcLookup, NameInAnySpellingOfPrefixAndCase) {
    const Outcome exact = Simexc({"ZORSimExcNoSuchFile"});
    ASSERT_EQ(exact.status, 0);
    EXPECT_EQ(Explained(exact.out), Names{"ZORSimExcNoSuchFile"});
    for (const char* spelling : {"NoSuchFile", "nosuchfile", "ZORSIMEXCNOSUCHFILE", "zorsimexcNoSuchFILE"}) {
        const Outcome run = Simexc({spelling});
        EXPECT_EQ(run.status, 0) << spelling;
        EXPECT_EQ(run.out, exact.out) << spelling;
    }
    // Several at once, codes and names mixed.
    EXPECT_EQ(Explained(Simexc({"NoSuchForm", "1010"}).out),
              (Names{"ZORSimExcNoSuchForm", "ZORSimExcIOBounds"}));
}

TEST(SimexcMatch, LineCopiedFromARealReport) {
    const std::string report = ReportOf(ZORSimExcNoSuchFile("/data/run.1.tmp"));
    const Names lines = Lines(report);
    const auto banner = std::find(lines.begin(), lines.end(), "!!! EXCEPTION:");
    ASSERT_TRUE(banner != lines.end() && banner + 1 != lines.end()) << report;
    ASSERT_EQ(*(banner + 1), "!!!   No such file: /data/run.1.tmp");

    const Outcome run = Simexc({"--match", *(banner + 1)});
    EXPECT_EQ(run.status, 0) << run.err;
    ASSERT_FALSE(Listed(run.out).empty()) << run.out;
    EXPECT_EQ(Listed(run.out).front(), "ZORSimExcNoSuchFile");
    EXPECT_EQ(Explained(run.out), Names{"ZORSimExcNoSuchFile"}) << "the best one explained";
    // The whole report, trace included, read from standard input; unquoted
    // words make one text.
    const Outcome whole = Simexc({"--match", "-"}, report);
    EXPECT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(Listed(whole.out), Listed(run.out));
    EXPECT_EQ(Listed(Simexc({"--match", "No", "such", "file:", "/data/run.1.tmp"}).out), Listed(run.out));
}

TEST(SimexcMatch, SeveralValuesAndOneLineOfAMultiLineMessage) {
    const std::string bounds = Lines(ReportOf(ZORSimExcIOBounds(4096, 1048576, 65536))).at(1);
    EXPECT_EQ(Listed(Simexc({"--match", bounds}).out).at(0), "ZORSimExcIOBounds");

    const std::string report =
        ReportOf(ZORSimExcNeedUpgrade(3, 7, ZORSimUttExceptionString<1024>("/data/pool.sim")));
    EXPECT_TRUE(Has(report, "!!!   Binary format incompatible. Upgrade or downgrade required.\n"
                            " applicationVersion: 3\n databaseVersion: 7\n file: /data/pool.sim\n"));
    const Outcome whole = Simexc({"--match", "-"}, report);
    EXPECT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(Listed(whole.out).at(0), "ZORSimExcNeedUpgrade");
    // One line of it, and two consecutive lines copied without their indent.
    for (const char* text : {" databaseVersion: 7", "databaseVersion: 7\nfile: /data/pool.sim"}) {
        const Names listed = Listed(Simexc({"--match", text}).out);
        EXPECT_NE(std::find(listed.begin(), listed.end(), "ZORSimExcNeedUpgrade"), listed.end()) << text;
    }
}

// Just enough of a strict JSON reader to check the export: objects, arrays,
// strings with their escapes, integers (the export has no true, false or null).
struct Json {
    long long number = 0;
    std::string text;
    std::vector<Json> items;
    std::map<std::string, Json> members;
    const Json& operator[](const std::string& key) const { return members.at(key); }
};

class JsonReader {
public:
    explicit JsonReader(const std::string& text) : m_text(text) {}
    bool Document(Json& value) { return Value(value) && Next() == '\0'; }

private:
    // Skips blanks; the next character, or '\0' at the end.
    char Next() {
        while (m_at < m_text.size() &&
               std::string_view(" \t\r\n").find(m_text[m_at]) != std::string_view::npos)
            ++m_at;
        return m_at < m_text.size() ? m_text[m_at] : '\0';
    }
    bool Take(char c) { return Next() == c && ++m_at; }
    bool String(std::string& out) {
        if (!Take('"'))
            return false;
        const std::string_view simple = "\"\\/bfnrt", meaning = "\"\\/\b\f\n\r\t";
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"')
                return true;
            if (static_cast<unsigned char>(c) < 0x20 || (c == '\\' && m_at == m_text.size()))
                return false;
            const char e = c == '\\' ? m_text[m_at++] : '\0';
            const unsigned long code = e == 'u' && m_at + 4 <= m_text.size()
                                           ? std::strtoul(m_text.substr(m_at, 4).c_str(), nullptr, 16)
                                           : 0x80; // the export escapes only control characters
            if (c != '\\')
                out += c;
            else if (simple.find(e) != std::string_view::npos)
                out += meaning[simple.find(e)];
            else if (code < 0x80)
                out += static_cast<char>(code), m_at += 4;
            else
                return false;
        }
        return false;
    }
    // Items between `open` and `close`, separated by commas.
    template <class Item> bool List(char open, char close, Item item) {
        if (!Take(open))
            return false;
        if (Take(close))
            return true;
        do {
            if (!item())
                return false;
        } while (Take(','));
        return Take(close);
    }
    bool Value(Json& v) {
        const char c = Next();
        if (c == '"')
            return String(v.text);
        if (c == '[')
            return List('[', ']', [&] { return Value(v.items.emplace_back()); });
        if (c == '{')
            return List('{', '}', [&] {
                std::string key;
                return String(key) && Take(':') && !v.members.count(key) && Value(v.members[key]);
            });
        if (c != '-' && !std::isdigit(static_cast<unsigned char>(c)))
            return false;
        std::size_t used = 0;
        v.number = std::stoll(m_text.substr(m_at, 24), &used);
        m_at += used;
        return true;
    }

    const std::string& m_text;
    std::size_t m_at = 0;
};

TEST(SimexcExport, JsonHoldsTheWholeRegistry) {
    const Outcome run = Simexc({"--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    Json root;
    ASSERT_TRUE(JsonReader(run.out).Document(root)) << "not valid JSON";
    const int count = ZORSimExcRegistry::Count();
    EXPECT_EQ(root["count"].number, count);
    const std::vector<Json>& classes = root["classes"].items;
    ASSERT_EQ(static_cast<int>(classes.size()), count);
    for (int i = 0; i < count; ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        const Json& entry = classes[static_cast<std::size_t>(i)];
        SCOPED_TRACE(info.name);
        EXPECT_EQ(entry["name"].text, info.name);
        EXPECT_EQ(entry["code"].number, info.code);
        EXPECT_EQ(entry["base"].text, info.base);
        EXPECT_EQ(entry["bases"].items.front().text, info.base);
        EXPECT_EQ(entry["bases"].items.back().text, "ZORBasException");
        EXPECT_EQ(entry["format"].text, info.format) << "escapes must round-trip";
        ASSERT_EQ(static_cast<int>(entry["fields"].items.size()), info.fieldCount);
        ASSERT_EQ(static_cast<int>(entry["baseArgs"].items.size()), info.baseArgCount);
        for (int f = 0; f < info.fieldCount; ++f) {
            const Json& field = entry["fields"].items[static_cast<std::size_t>(f)];
            EXPECT_EQ(field["getter"].text, info.fields[f].getter);
            EXPECT_EQ(field["type"].text, info.fields[f].type);
            EXPECT_EQ(field["capacity"].number, info.fields[f].capacity);
        }
        if (std::string(info.name) == "ZORSimExcTypeGridDimensionException") {
            EXPECT_EQ(entry["bases"].items.size(), 2u);
        }
    }
}

TEST(SimexcExport, ListHasOneLinePerClass) {
    const Outcome run = Simexc({"--list"});
    ASSERT_EQ(run.status, 0);
    const Names lines = Lines(run.out);
    ASSERT_EQ(static_cast<int>(lines.size()), ZORSimExcRegistry::Count());
    EXPECT_TRUE(StartsWith(lines.front(), std::to_string(ZORSimExcRegistry::At(0).code) + "  " +
                                              ZORSimExcRegistry::At(0).name));
}

TEST(SimexcStatus, NotFoundIsOneAndBadUsageIsTwo) {
    for (const Names& args : std::vector<Names>{{"999"},
                                                {"1002"},
                                                {"99999999999999"},
                                                {"NoSuchThing"},
                                                {"1013", "Nope"},
                                                {"--match", "Nothing in the catalogue says this."},
                                                {"--match", "such file: /data/run.1.tmp"}}) {
        const Outcome run = Simexc(args);
        EXPECT_EQ(run.status, 1) << args.back();
        EXPECT_TRUE(StartsWith(run.err, "simexc: ")) << run.err;
    }
    EXPECT_TRUE(Has(Simexc({"GridDimension"}).err, "ZORSimExcTypeGridDimensionException"))
        << "a miss suggests names holding the word";

    for (const Names& args : std::vector<Names>{{},
                                                {"--bogus"},
                                                {"-5"},
                                                {""},
                                                {"--list", "x"},
                                                {"--json", "1013"},
                                                {"--match"},
                                                {"--match", "!!! EXCEPTION:"},
                                                {"--help", "me"}}) {
        const Outcome run = Simexc(args);
        EXPECT_EQ(run.status, 2) << (args.empty() ? "(none)" : args.front());
        EXPECT_TRUE(Has(run.err, "usage: simexc"));
        EXPECT_EQ(run.out, "");
    }
    const Outcome help = Simexc({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(Has(help.out, "--match"));
    EXPECT_EQ(help.err, "");
}

} // namespace
