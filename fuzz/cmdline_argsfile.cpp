// Random arguments files: the store must hold exactly the pieces fgets cuts
// the file into (line feed removed, at most 1024 arguments).
#include "FuzzCheck.h"
#include "ZORSimCommandLine.h"

#include "ZORBasException.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace {

std::filesystem::path g_path;

// Pieces of at most 1023 bytes ending at a line feed, each cut at its first
// NUL, less a final line feed.
std::vector<std::string> ExpectedArguments(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> args{"prog"};
    for (std::size_t at = 0, end = 0; at < size; at = end) {
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
    }
    return args;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    g_path = std::filesystem::temp_directory_path() / ("zorsim-fuzz-" + std::to_string(getpid()));
    std::atexit([] { std::filesystem::remove(g_path); });
    // The reader's warnings are not under test; keep libFuzzer's output
    // readable (it and the sanitizers write to the descriptor, not here).
    if (std::FILE* quiet = std::fopen("/dev/null", "w"))
        stderr = quiet;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::FILE* file = std::fopen(g_path.c_str(), "wb");
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    std::string args[] = {"prog", "-clargsfile", g_path.string()};
    char* argv[] = {args[0].data(), args[1].data(), args[2].data(), nullptr};
    try {
        ZORSimCommandLine set(3, argv);
    } catch (const ZORBasToUTF8Exception&) {
        return 0; // a line that is no UTF-8 (the C locale's codeset)
    }
    const std::vector<std::string> expected = ExpectedArguments(data, size);
    REQUIRE(ZORSimCommandLine::NumArgs() == static_cast<int>(expected.size()));
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i)
        REQUIRE(expected[i] == ZORSimCommandLine::GetPosition(i).c_str() &&
                !ZORSimCommandLine::GetPosition(i).IsBAD());
    return 0;
}
