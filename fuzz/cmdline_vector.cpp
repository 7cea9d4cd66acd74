// Random argument vectors (the input split at NUL bytes): the store must
// keep them as given and answer every query as a plain model of the pairs
// does.
#include "FuzzCheck.h"
#include "ZORSimCommandLine.h"

#include "ZORBasException.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// A key takes the next argument unless that is a key too; a dashed program
// name adds an empty pair.
std::vector<std::pair<std::string, std::string>> ModelPairs(const std::vector<std::string>& args) {
    std::vector<std::pair<std::string, std::string>> pairs;
    bool expectValue = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (!args[i].empty() && args[i][0] == '-')
            pairs.emplace_back(args[i].substr(1), ""), expectValue = true;
        else if (expectValue)
            pairs.back().second = args[i], expectValue = false;
    }
    if (!args[0].empty() && args[0][0] == '-')
        pairs.emplace_back("", "");
    return pairs;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> args;
    const char* text = reinterpret_cast<const char*>(data);
    for (std::size_t at = 0; at <= size && args.size() < 256;) {
        const std::size_t end = std::find(text + at, text + size, '\0') - text;
        args.emplace_back(text + at, end - at);
        at = end + 1;
    }
    if (args.size() >= 2 && args[1] == "-clargsfile")
        return 0; // an arguments file would be read from wherever the input points
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    try {
        ZORSimCommandLine set(static_cast<int>(args.size()), argv.data());
    } catch (const ZORBasToUTF8Exception&) {
        return 0; // text that is no UTF-8 (the C locale's codeset)
    }
    const auto pairs = ModelPairs(args);
    REQUIRE(ZORSimCommandLine::NumArgs() == static_cast<int>(args.size()));
    REQUIRE(ZORSimCommandLine::NumPairs() == static_cast<int>(pairs.size()));
    const ZORString fallback("<none>");
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        REQUIRE(args[i] == ZORSimCommandLine::GetPosition(i).c_str());
        // Ask for the argument both as it stands and without its dash.
        for (const std::string& key : {args[i], args[i].substr(args[i].starts_with('-') ? 1 : 0)}) {
            const ZORString name(key);
            const auto exact =
                std::find_if(pairs.begin(), pairs.end(), [&](auto& p) { return p.first == key; });
            const bool any = std::any_of(pairs.begin(), pairs.end(),
                                         [&](auto& p) { return Lower(p.first) == Lower(key); });
            const bool hasValue = exact != pairs.end() && !exact->second.empty();
            REQUIRE(ZORSimCommandLine::IsMember(name) == (exact != pairs.end()));
            REQUIRE(ZORSimCommandLine::IsMember(name, true) == any);
            REQUIRE(ZORSimCommandLine::GetString(name, fallback).c_str() ==
                    (hasValue ? exact->second : "<none>"));
            REQUIRE(ZORSimCommandLine::GetInt(name, -7) ==
                    (hasValue ? std::atoi(exact->second.c_str()) : -7));
            ZORSimCommandLine::GetFloat(name, 0.5f);
            REQUIRE(ZORSimCommandLine::ConstGetValue(key.c_str(), "<none>").str() ==
                    ZORSimCommandLine::GetString(name, fallback).c_str());
        }
    }
    return 0;
}
