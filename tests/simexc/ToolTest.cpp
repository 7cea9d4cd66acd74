// simexc run as a process, as a support engineer runs it: look-ups by code
// and name, matching a report that a real exception wrote, the JSON export,
// and the exit statuses.
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using zorsim_test::Lines;
using zorsim_test::StartsWith;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

std::string ReadAll(std::FILE* file) {
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

// Runs simexc with `args` and `input` on its standard input.
Outcome Simexc(const std::vector<std::string>& args, const std::string& input = "") {
    std::FILE* in = std::tmpfile();
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    std::fputs(input.c_str(), in);
    std::fflush(in);
    std::rewind(in);
    std::vector<char*> argv{const_cast<char*>(SIMEXC_PATH)};
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);

    const pid_t pid = fork();
    if (pid == 0) {
        dup2(fileno(in), 0);
        dup2(fileno(out), 1);
        dup2(fileno(err), 2);
        execv(SIMEXC_PATH, argv.data());
        _exit(127);
    }
    Outcome run;
    int status = 0;
    if (pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    std::fclose(in);
    run.out = ReadAll(out);
    run.err = ReadAll(err);
    return run;
}

// The class names a look-up explained, in order: the lines that start a block.
std::vector<std::string> Explained(const std::string& out) {
    std::vector<std::string> names;
    for (const std::string& line : Lines(out))
        if (StartsWith(line, "ZORSimExc"))
            names.push_back(line);
    return names;
}

// The classes --match listed, best first.
std::vector<std::string> Listed(const std::string& out) {
    std::vector<std::string> names;
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

TEST(SimexcLookup, CodeShowsEveryClassWithIt) {
    const Outcome run = Simexc({"1013"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Explained(run.out), (std::vector<std::string>{"ZORSimExcNoSuchFile", "ZORSimExcNoSuchForm"}));
    EXPECT_NE(run.out.find("  code:         1013 (also the code of ZORSimExcNoSuchForm)"), std::string::npos);
    EXPECT_NE(run.out.find("  message:      \"No such file: %s\""), std::string::npos);
    EXPECT_NE(
        run.out.find("GetFile_name()  ZORSimUttExceptionString<1024>  string of at most 1023 characters; "
                     "fills the 1st placeholder, %s"),
        std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("GetForm_name()  ZORSimUttExceptionString<10>"), std::string::npos);

    std::vector<std::string> expected;
    for (const ZORSimExcClassInfo* info : ZORSimExcRegistry::FindByCode(1836))
        expected.push_back(info->name);
    EXPECT_EQ(expected.size(), 2u);
    EXPECT_EQ(Explained(Simexc({"1836"}).out), expected);
}

TEST(SimexcLookup, ShowsBaseChainAndEveryField) {
    const Outcome run = Simexc({"TypeGridDimensionException"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("  derives from: ZORSimExcTypeGridException -> ZORBasException\n"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("its constructor hands values 1 (GetGridFormName), 2 (GetGridTypeName) to "
                           "ZORSimExcTypeGridException"),
              std::string::npos)
        << run.out;
    // A multi-line format is shown escaped, on one line.
    EXPECT_NE(Simexc({"1037"}).out.find("required.\\n applicationVersion: %u\\n databaseVersion: %u\\n file: "
                                        "%s\\n\"\n"),
              std::string::npos);
}

TEST(SimexcLookup, NameInAnySpellingOfPrefixAndCase) {
    const Outcome exact = Simexc({"ZORSimExcNoSuchFile"});
    ASSERT_EQ(exact.status, 0);
    EXPECT_EQ(Explained(exact.out), std::vector<std::string>{"ZORSimExcNoSuchFile"});
    for (const char* spelling : {"NoSuchFile", "nosuchfile", "ZORSIMEXCNOSUCHFILE", "zorsimexcNoSuchFILE"}) {
        const Outcome run = Simexc({spelling});
        EXPECT_EQ(run.status, 0) << spelling;
        EXPECT_EQ(run.out, exact.out) << spelling;
    }
    // Several at once, codes and names mixed.
    EXPECT_EQ(Explained(Simexc({"NoSuchForm", "1010"}).out),
              (std::vector<std::string>{"ZORSimExcNoSuchForm", "ZORSimExcIOBounds"}));
}

TEST(SimexcMatch, LineCopiedFromARealReport) {
    const std::string report = ReportOf(ZORSimExcNoSuchFile("/data/run.1.tmp"));
    const std::vector<std::string> lines = Lines(report);
    const auto banner = std::find(lines.begin(), lines.end(), "!!! EXCEPTION:");
    ASSERT_TRUE(banner != lines.end() && banner + 1 != lines.end()) << report;
    const std::string line = *(banner + 1);
    ASSERT_EQ(line, "!!!   No such file: /data/run.1.tmp");

    const Outcome run = Simexc({"--match", line});
    EXPECT_EQ(run.status, 0) << run.err;
    ASSERT_FALSE(Listed(run.out).empty()) << run.out;
    EXPECT_EQ(Listed(run.out).front(), "ZORSimExcNoSuchFile");
    EXPECT_EQ(Explained(run.out), std::vector<std::string>{"ZORSimExcNoSuchFile"})
        << "the best one explained";

    // The whole report, trace included, read from standard input.
    const Outcome whole = Simexc({"--match", "-"}, report);
    EXPECT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(Listed(whole.out), Listed(run.out));
    // Unquoted words make one text.
    EXPECT_EQ(Listed(Simexc({"--match", "No", "such", "file:", "/data/run.1.tmp"}).out), Listed(run.out));
}

TEST(SimexcMatch, SeveralValuesAndOneLineOfAMultiLineMessage) {
    const std::string bounds = Lines(ReportOf(ZORSimExcIOBounds(4096, 1048576, 65536))).at(1);
    EXPECT_EQ(Listed(Simexc({"--match", bounds}).out).at(0), "ZORSimExcIOBounds");

    const ZORSimExcNeedUpgrade upgrade(3, 7, ZORSimUttExceptionString<1024>("/data/pool.sim"));
    const std::string report = ReportOf(upgrade);
    EXPECT_NE(report.find("!!!   Binary format incompatible. Upgrade or downgrade required.\n"
                          " applicationVersion: 3\n databaseVersion: 7\n file: /data/pool.sim\n"),
              std::string::npos)
        << report;
    const Outcome whole = Simexc({"--match", "-"}, report);
    EXPECT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(Listed(whole.out).at(0), "ZORSimExcNeedUpgrade");
    // One line of it, and two consecutive lines copied without their indent.
    for (const char* text : {" databaseVersion: 7", "databaseVersion: 7\nfile: /data/pool.sim"}) {
        const std::vector<std::string> listed = Listed(Simexc({"--match", text}).out);
        EXPECT_NE(std::find(listed.begin(), listed.end(), "ZORSimExcNeedUpgrade"), listed.end()) << text;
    }
}

// ---- JSON ----------------------------------------------------------------------

// Just enough of a JSON reader to check the export: strict syntax, strings
// with their escapes, integers; the export has no true, false or null.
struct JsonValue {
    long long number = 0;
    std::string text;
    std::vector<JsonValue> items;
    std::map<std::string, JsonValue> members;
    const JsonValue& operator[](const std::string& key) const { return members.at(key); }
};

class JsonReader {
public:
    explicit JsonReader(const std::string& text) : m_text(text) {}

    bool ReadDocument(JsonValue& value) {
        if (!Read(value))
            return false;
        Blanks();
        return m_at == m_text.size();
    }

private:
    void Blanks() {
        while (m_at < m_text.size() && std::string(" \t\r\n").find(m_text[m_at]) != std::string::npos)
            ++m_at;
    }
    bool Take(char c) {
        Blanks();
        if (m_at < m_text.size() && m_text[m_at] == c) {
            ++m_at;
            return true;
        }
        return false;
    }
    bool String(std::string& out) {
        if (!Take('"'))
            return false;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"')
                return true;
            if (static_cast<unsigned char>(c) < 0x20)
                return false;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (m_at >= m_text.size())
                return false;
            const char e = m_text[m_at++];
            const std::string simple = "\"\\/bfnrt", meaning = "\"\\/\b\f\n\r\t";
            if (simple.find(e) != std::string::npos) {
                out += meaning[simple.find(e)];
            } else if (e == 'u' && m_at + 4 <= m_text.size()) {
                const unsigned long code = std::strtoul(m_text.substr(m_at, 4).c_str(), nullptr, 16);
                if (code >= 0x80)
                    return false; // the export writes only control characters so
                out += static_cast<char>(code);
                m_at += 4;
            } else {
                return false;
            }
        }
        return false;
    }
    bool Read(JsonValue& value) {
        Blanks();
        if (m_at >= m_text.size())
            return false;
        const char c = m_text[m_at];
        if (c == '"')
            return String(value.text);
        if (c == '[') {
            ++m_at;
            if (Take(']'))
                return true;
            do {
                value.items.emplace_back();
                if (!Read(value.items.back()))
                    return false;
            } while (Take(','));
            return Take(']');
        }
        if (c == '{') {
            ++m_at;
            if (Take('}'))
                return true;
            do {
                std::string key;
                if (!String(key) || !Take(':') || value.members.count(key) != 0 || !Read(value.members[key]))
                    return false;
            } while (Take(','));
            return Take('}');
        }
        if (c != '-' && (c < '0' || c > '9'))
            return false;
        std::size_t used = 0;
        value.number = std::stoll(m_text.substr(m_at, 24), &used);
        m_at += used;
        return true;
    }

    const std::string& m_text;
    std::size_t m_at = 0;
};

TEST(SimexcExport, JsonHoldsTheWholeRegistry) {
    const Outcome run = Simexc({"--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    JsonValue root;
    ASSERT_TRUE(JsonReader(run.out).ReadDocument(root)) << "not valid JSON";
    const int count = ZORSimExcRegistry::Count();
    EXPECT_EQ(root["count"].number, count);
    const std::vector<JsonValue>& classes = root["classes"].items;
    ASSERT_EQ(static_cast<int>(classes.size()), count);

    for (int i = 0; i < count; ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        const JsonValue& entry = classes[static_cast<std::size_t>(i)];
        SCOPED_TRACE(info.name);
        EXPECT_EQ(entry["name"].text, info.name);
        EXPECT_EQ(entry["code"].number, info.code);
        EXPECT_EQ(entry["base"].text, info.base);
        EXPECT_EQ(entry["bases"].items.back().text, "ZORBasException");
        EXPECT_EQ(entry["format"].text, info.format) << "escapes must round-trip";
        ASSERT_EQ(static_cast<int>(entry["fields"].items.size()), info.fieldCount);
        ASSERT_EQ(static_cast<int>(entry["baseArgs"].items.size()), info.baseArgCount);
        for (int f = 0; f < info.fieldCount; ++f) {
            const JsonValue& field = entry["fields"].items[static_cast<std::size_t>(f)];
            EXPECT_EQ(field["getter"].text, info.fields[f].getter);
            EXPECT_EQ(field["type"].text, info.fields[f].type);
            EXPECT_EQ(field["capacity"].number, info.fields[f].capacity);
        }
    }
    const auto grid = std::find_if(classes.begin(), classes.end(), [](const JsonValue& entry) {
        return entry["name"].text == "ZORSimExcTypeGridDimensionException";
    });
    ASSERT_NE(grid, classes.end());
    ASSERT_EQ((*grid)["bases"].items.size(), 2u);
    EXPECT_EQ((*grid)["bases"].items[0].text, "ZORSimExcTypeGridException");
}

TEST(SimexcExport, ListHasOneLinePerClass) {
    const Outcome run = Simexc({"--list"});
    ASSERT_EQ(run.status, 0);
    const std::vector<std::string> lines = Lines(run.out);
    ASSERT_EQ(static_cast<int>(lines.size()), ZORSimExcRegistry::Count());
    EXPECT_TRUE(StartsWith(lines.front(), std::to_string(ZORSimExcRegistry::At(0).code) + "  " +
                                              ZORSimExcRegistry::At(0).name));
}

// ---- exit statuses ---------------------------------------------------------------

TEST(SimexcStatus, NotFoundIsOne) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{"999"},
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
    EXPECT_NE(Simexc({"GridDimension"}).err.find("ZORSimExcTypeGridDimensionException"), std::string::npos)
        << "a miss suggests names holding the word";
}

TEST(SimexcStatus, BadUsageIsTwo) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{},
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
        EXPECT_NE(run.err.find("usage: simexc"), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }
    const Outcome help = Simexc({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--match"), std::string::npos);
    EXPECT_EQ(help.err, "");
}

} // namespace
