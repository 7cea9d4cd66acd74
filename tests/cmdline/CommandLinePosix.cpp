// Argument bytes that no codeset decodes reach a POSIX program as they are:
// the store keeps them, as a BAD string, and shows their escaped form.
#include "ZORSimTestSupport.h"

using namespace zorsim_test;

TEST(CmdLinePosix, UndecodableBytesOfTheProcessArgumentsAreKept) {
    const std::vector<std::string> args = {"prog", "bad\xff"};
    EXPECT_EQ(RunScenario("CmdLineStore", args).out,
              "args 2 pairs 0\narg 0 [prog]\narg 1 BAD [bad\xed\xb3\xbf]\nn=-1 empty-key=0\n");
    const ScopedEnv displayOn("SIM_CMD_DISPLAY_BYTES", "1");
    EXPECT_EQ(RunScenario("CmdLineStore", args).err,
              "=== Arg 0: \"prog\"\n===   Wide: 70 00 72 00 6f 00 67 00\n===   UTF8: 70 72 6f 67\n"
              "=== Arg 1: \"bad\xed\xb3\xbf\"\n===   Wide: 62 00 61 00 64 00 ff dc\n===   UTF8: 62 61 64 ed "
              "b3 bf\n");
}
