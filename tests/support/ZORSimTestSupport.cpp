// The portable part of the support layer, and the main of every test
// program: it runs a scenario when started by RunScenario, else the tests.
#include "ZORSimTestSupport.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <unistd.h> // MinGW has one too, for dup and dup2

namespace fs = std::filesystem;

namespace zorsim_test {

// From the platform file: a scenario child's arguments in UTF-8 (its
// standard streams made ready for the parent); a child started with these
// standard streams (0: it could not be, a test failure), and its exit code
// once it ends (-1: it did not end by itself).
std::vector<std::string> ScenarioArguments(int argc, char** argv);
std::string SelfPath();
std::intptr_t Spawn(const std::string& program, const std::vector<std::string>& args,
                    std::FILE* const files[3]);
int Reap(std::intptr_t child);

namespace {

constexpr const char* kScenarioVariable = "ZORSIM_TEST_SCENARIO";

std::map<std::string, Scenario>& Scenarios() {
    static std::map<std::string, Scenario> scenarios;
    return scenarios;
}

// Paths are UTF-8 strings in the tests, whatever the platform's own form.
fs::path Native(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

void MakeReadOnly(const std::string& path) {
    fs::permissions(Native(path), fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

// Writable again, so that even read-only entries can be removed.
void RemoveTree(const std::string& path) {
    std::error_code ignored;
    for (fs::recursive_directory_iterator it(Native(path), ignored), end; it != end; it.increment(ignored))
        fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(Native(path), ignored);
}

std::string Drain(std::FILE* file) {
    std::string text;
    std::fflush(file);
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

} // namespace

Process::Process(const std::string& program, const std::vector<std::string>& args, const std::string& input) {
    std::FILE* const files[3] = {std::tmpfile(), std::tmpfile(), std::tmpfile()}; // input, output, error
    std::fputs(input.c_str(), files[0]);
    std::fflush(files[0]);
    std::rewind(files[0]);
    if (const std::intptr_t child = Spawn(program, args, files))
        m_result.exitCode = Reap(child);
    std::fclose(files[0]);
    // Line ends as the tests write them: on Windows, programs other than the
    // scenario children write their standard streams in text mode, with CR LF.
    const std::regex crlf("\r\n");
    m_result.out = std::regex_replace(Drain(files[1]), crlf, "\n");
    m_result.err = std::regex_replace(Drain(files[2]), crlf, "\n");
}

bool RegisterScenario(const char* name, Scenario scenario) {
    return Scenarios().emplace(name, scenario).second;
}

ProcessResult RunScenario(const std::string& name, const std::vector<std::string>& args) {
    const ScopedEnv scenario(kScenarioVariable, name.c_str());
    return Process(SelfPath(), args).Wait();
}

TempDir::TempDir(bool atExit) : m_atExit(atExit) {
    std::random_device random;
    for (int attempt = 0; m_path.empty() && attempt < 100; ++attempt) {
        const fs::path path = fs::temp_directory_path() / ("zorsim-test-" + std::to_string(random()));
        std::error_code error;
        if (fs::create_directory(path, error)) {
            const std::u8string text = path.generic_u8string();
            m_path.assign(text.begin(), text.end());
        }
    }
    EXPECT_FALSE(m_path.empty()) << "no temporary directory";
    static std::vector<std::string> removedAtExit;
    if (atExit && removedAtExit.empty())
        std::atexit([] { std::for_each(removedAtExit.begin(), removedAtExit.end(), RemoveTree); });
    if (atExit)
        removedAtExit.push_back(m_path);
}

TempDir::~TempDir() {
    if (!m_atExit && !m_path.empty())
        RemoveTree(m_path);
}

std::string TempDir::File(const std::string& relative, const std::string& bytes, bool readOnly) const {
    const std::string path = *this / relative;
    fs::create_directories(Native(path).parent_path());
    std::ofstream(Native(path), std::ios::binary) << bytes;
    if (readOnly)
        MakeReadOnly(path);
    return path;
}

std::string TempDir::Dir(const std::string& relative, bool readOnly) const {
    const std::string path = *this / relative;
    fs::create_directories(Native(path));
    if (readOnly)
        MakeReadOnly(path);
    return path;
}

std::string ReadBytes(const std::string& path) {
    std::ifstream in(Native(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Exists(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(Native(path), ignored));
}

std::string GenericPath(const std::string& path) {
    const std::u8string text = fs::absolute(Native(path)).generic_u8string();
    return std::string(text.begin(), text.end());
}

StderrCapture::StderrCapture() : m_file(std::tmpfile()) {
    std::fflush(stderr);
    m_saved = dup(2);
    dup2(fileno(m_file), 2);
}

std::string StderrCapture::Finish() {
    if (m_saved >= 0) {
        std::fflush(stderr);
        dup2(m_saved, 2);
        close(m_saved);
        m_saved = -1;
        m_text = Drain(m_file);
    }
    return m_text;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

} // namespace zorsim_test

int main(int argc, char** argv) {
    if (const char* name = std::getenv(zorsim_test::kScenarioVariable)) {
        const int code = zorsim_test::Scenarios().at(name)(zorsim_test::ScenarioArguments(argc, argv));
        std::fflush(stdout);
        std::fflush(stderr);
        return code;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
