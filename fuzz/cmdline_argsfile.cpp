// Random arguments files: the store must hold exactly the pieces fgets cuts
// the file into (line feed removed, at most 1024 arguments) and answer every
// query about them.
#include "ZORSimCommandLine.h"
#include "ZORSimUttAssert.h"

#include "ZORBasException.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::string g_path;

// What the reader must make of `data`: pieces of at most 1023 bytes ending
// at a line feed, each cut at its first NUL, less a final line feed.
std::vector<std::string> ExpectedArguments(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> args{"prog"};
    std::size_t at = 0;
    while (at < size) {
        std::size_t end = at;
        while (end < size && end - at < 1023 && data[end] != '\n')
            ++end;
        if (end < size && end - at < 1023)
            ++end; // the line feed belongs to the piece
        std::string piece(reinterpret_cast<const char*>(data + at), end - at);
        piece.resize(std::strlen(piece.c_str()));
        if (!piece.empty() && piece.back() == '\n')
            piece.pop_back();
        if (args.size() < 1024)
            args.push_back(piece);
        at = end;
    }
    return args;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ZORSimUttAssertDisableExcReport();
    char dir[] = "/tmp/zorsim-fuzz-argsfile-XXXXXX";
    if (mkdtemp(dir) == nullptr)
        std::abort();
    g_path = std::string(dir) + "/args.txt";
    static std::string s_dir = dir;
    std::atexit([] {
        unlink(g_path.c_str());
        rmdir(s_dir.c_str());
    });
    // The reader's warnings are not under test; keep libFuzzer's output
    // readable (it and the sanitizers write to the descriptor, not here).
    if (std::FILE* quiet = std::fopen("/dev/null", "w"))
        stderr = quiet;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::FILE* file = std::fopen(g_path.c_str(), "wb");
    if (file == nullptr)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    std::string prog = "prog";
    std::string option = "-clargsfile";
    std::vector<char*> argv{prog.data(), option.data(), g_path.data(), nullptr};
    try {
        ZORSimCommandLine set(3, argv.data());
    } catch (const ZORBasToUTF8Exception&) {
        return 0; // a line that is no UTF-8 (the C locale's codeset)
    }
    const std::vector<std::string> expected = ExpectedArguments(data, size);
    if (ZORSimCommandLine::NumArgs() != static_cast<int>(expected.size()))
        std::abort();
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        const ZORString& arg = ZORSimCommandLine::GetPosition(i);
        if (expected[i] != arg.c_str() || arg.IsBAD())
            std::abort();
        if (i > 0 && arg.c_str()[0] == '-') {
            const ZORString key(arg.c_str() + 1);
            if (!ZORSimCommandLine::IsMember(key) || !ZORSimCommandLine::IsMember(key, true))
                std::abort();
            ZORSimCommandLine::GetInt(key, 0);
            ZORSimCommandLine::GetFloat(key, 0.0f);
            ZORSimCommandLine::GetString(key, "");
        }
    }
    if (ZORSimCommandLine::NumPairs() > ZORSimCommandLine::NumArgs())
        std::abort();
    return 0;
}
