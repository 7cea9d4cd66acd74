// Narrow arguments on POSIX: bytes the locale's codeset does not decode
// (every byte decodes in a Windows code page).
#include "ZORSimTestSupport.h"

#include "ZORSimCommandLine.h"

#include "ZORBasException.h"

#include <clocale>

using namespace zorsim_test;
using Strings = std::vector<std::string>;
using Singleton = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

Strings Fill(Strings args); // from CommandLineTest.cpp
Strings Stored();

// In the C locale narrow arguments are UTF-8; other bytes, given or read
// from a file, end the fill with the conversion error and leave it undone.
TEST(CmdLineStore, UndecodableNarrowArgumentLeavesTheStoreEmpty) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    TempDir dir;
    for (const Strings& args :
         {Strings{"prog", "-k", "caf\xe9"}, Strings{"prog", "-clargsfile", dir.File("a", "-k\ncaf\xe9\n")}}) {
        try {
            Fill(args);
            ADD_FAILURE() << "undecodable argument accepted";
        } catch (const ZORBasToUTF8Exception& e) {
            EXPECT_STREQ(e.Text(), "caf\xe9");
            EXPECT_STREQ(e.ThrowFile(), "ZORSimCommandLine");
            EXPECT_EQ(e.ThrowLine(), 258);
        }
        char prog[] = "good";
        char* good[] = {prog, nullptr};
        Singleton::Instance()->InitFromArgs(1, good);
        EXPECT_EQ(Stored(), Strings{"good"});
    }
}

// Such bytes reach a POSIX program as they are: the store keeps them, as a
// BAD string, and shows their escaped form.
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
