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

// In the C locale narrow arguments are UTF-8; other bytes (given, or read
// from a file the same way) end the fill with the conversion error and leave
// it undone. They reach a POSIX program as they are: the store of its own
// arguments keeps them, as a BAD string in its escaped form.
TEST(CmdLinePosix, UndecodableBytesRefusedInAVectorKeptFromTheProcess) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    try {
        Fill({"prog", "-k", "caf\xe9"});
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
    EXPECT_EQ(RunScenario("CmdLineStore", {"prog", "bad\xff"}).out,
              "args 2 pairs 0\narg 0 [prog]\narg 1 BAD [bad\xed\xb3\xbf]\nn=-1 empty-key=0\n");
}
