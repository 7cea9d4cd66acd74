// Random argument vectors (the input split at NUL bytes): the store must
// keep them as given and answer every query as a plain model of the pairs
// does.
#include "ZORSimCommandLine.h"
#include "ZORSimUttAssert.h"

#include "ZORBasException.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// The pairs as the store defines them, the surplus empty pair of a dashed
// program name included.
Pairs ModelPairs(const std::vector<std::string>& args) {
    Pairs pairs;
    bool expectValue = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (!args[i].empty() && args[i][0] == '-') {
            pairs.emplace_back(args[i].substr(1), "");
            expectValue = true;
        } else if (expectValue) {
            pairs.back().second = args[i];
            expectValue = false;
        }
    }
    if (!args.empty() && !args[0].empty() && args[0][0] == '-')
        pairs.emplace_back("", "");
    return pairs;
}

std::string Lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

const std::pair<std::string, std::string>* Find(const Pairs& pairs, const std::string& key,
                                                bool caseInsensitive) {
    for (const auto& pair : pairs) {
        if (caseInsensitive ? Lower(pair.first) == Lower(key) : pair.first == key)
            return &pair;
    }
    return nullptr;
}

void Check(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ZORSimUttAssertDisableExcReport();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> args;
    const char* text = reinterpret_cast<const char*>(data);
    for (std::size_t at = 0; at <= size && args.size() < 256;) {
        const void* nul = std::memchr(text + at, '\0', size - at);
        const std::size_t end =
            nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - text) : size;
        args.emplace_back(text + at, end - at);
        at = end + 1;
    }
    // An arguments file would be read from wherever the input points.
    if (args.size() >= 2 && args[1] == "-clargsfile")
        return 0;
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    try {
        ZORSimCommandLine set(static_cast<int>(args.size()), argv.data());
    } catch (const ZORBasToUTF8Exception&) {
        return 0; // text that is no UTF-8 (the C locale's codeset)
    }

    const Pairs pairs = ModelPairs(args);
    Check(ZORSimCommandLine::NumArgs() == static_cast<int>(args.size()));
    Check(ZORSimCommandLine::NumPairs() == static_cast<int>(pairs.size()));
    const ZORString fallback("<none>");
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        Check(args[i] == ZORSimCommandLine::GetPosition(i).c_str());
        // Ask for the argument both as it stands and without its dash.
        const bool dashed = !args[i].empty() && args[i][0] == '-';
        for (const std::string& key : {args[i], dashed ? args[i].substr(1) : args[i]}) {
            const ZORString name(key);
            Check(!name.IsBAD()); // the store took the text, and a dash is one byte
            const auto* exact = Find(pairs, name.c_str(), false);
            Check(ZORSimCommandLine::IsMember(name) == (exact != nullptr));
            Check(ZORSimCommandLine::IsMember(name, true) == (Find(pairs, name.c_str(), true) != nullptr));
            const bool hasValue = exact != nullptr && !exact->second.empty();
            Check(ZORSimCommandLine::GetString(name, fallback).c_str() ==
                  (hasValue ? exact->second : std::string("<none>")));
            Check(ZORSimCommandLine::GetInt(name, -7) == (hasValue ? std::atoi(exact->second.c_str()) : -7));
            ZORSimCommandLine::GetFloat(name, 0.5f);
            Check(ZORSimCommandLine::ConstGetValue(key.c_str(), "<none>").str() ==
                  ZORSimCommandLine::GetString(name, fallback).c_str());
        }
    }
    return 0;
}
