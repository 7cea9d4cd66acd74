// The OS form of a path on POSIX: slashes only, no long-path prefix.
#include "ZORSimTestSupport.h"

#include "ZORSimUttFilePathParser.h"

TEST(FilePathParserPosix, FixPathForOSGivesSlashes) {
    const std::string x300(300, 'x');
    for (const auto& [path, expected] : {std::pair<std::string, std::string>{"a\\b\\c.txt", "a/b/c.txt"},
                                         {"\\\\host\\share", "//host/share"},
                                         {"C:\\" + x300 + "/f", "C:/" + x300 + "/f"}})
        EXPECT_STREQ(ZORSimUttFilePathParser::FixPathForOS(ZORString(path)).c_str(), expected.c_str());
}
