// The OS form of a path on Windows: backslashes, and the long-path prefix
// from 260 characters on.
#include "ZORSimTestSupport.h"

#include "ZORSimUttFilePathParser.h"

TEST(FilePathParserWin32, FixPathForOSGivesBackslashesAndTheLongPrefix) {
    const std::string x300(300, 'x');
    for (const auto& [path, expected] : {std::pair<std::string, std::string>{"a/b/c.txt", "a\\b\\c.txt"},
                                         {"C:\\" + x300 + "/f", "\\\\?\\C:\\" + x300 + "\\f"}})
        EXPECT_STREQ(ZORSimUttFilePathParser::FixPathForOS(ZORString(path)).c_str(), expected.c_str());
}
