// The OS form of a path on POSIX: slashes only, no long-path prefix.
#include "ZORSimTestSupport.h"

#include "ZORSimUttFilePathParser.h"

TEST(FilePathParserPosix, FixPathForOSGivesSlashes) {
    const std::string x300(300, 'x');
    EXPECT_EQ(ZORSimUttFilePathParser::FixPathForOS(ZORString("C:\\" + x300 + "\\f")),
              ZORString("C:/" + x300 + "/f"));
}
