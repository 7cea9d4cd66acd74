// POSIX: text in the locale's codeset, as nl_langinfo names it, is converted
// to UTF-8. (The C locale's UTF-8 is the command line's tests.)
#include "ZORSimTestSupport.h"

#include "ZORString.h"

#include <clocale>
#include <langinfo.h>

namespace {

// Sets LC_CTYPE to a locale whose codeset is ISO-8859-1: an installed one, or
// one compiled into `dir` when the system has the sources.
bool UseLatin1(const zorsim_test::TempDir& dir) {
    const auto use = [](const char* name) {
        return std::setlocale(LC_CTYPE, name) != nullptr && std::string(nl_langinfo(CODESET)) == "ISO-8859-1";
    };
    for (const char* name : {"en_US.ISO-8859-1", "en_US.iso88591", "de_DE.ISO-8859-1"})
        if (use(name))
            return true;
    zorsim_test::SetEnv("LOCPATH", dir.Path().c_str());
    const std::string command = "localedef -i en_US -f ISO-8859-1 " + (dir / "latin1") + " >/dev/null 2>&1";
    return std::system(command.c_str()) == 0 && use("latin1");
}

TEST(BaseZORStringPosix, BuildFromLocaleConvertsFromTheLocalesCodeset) {
    const zorsim_test::TempDir dir;
    const bool latin1 = UseLatin1(dir);
    if (latin1) {
        EXPECT_EQ(ZORString::BuildFromLocale("caf\xe9 \xbd"), ZORString("caf\xc3\xa9 \xc2\xbd"));
    }
    std::setlocale(LC_CTYPE, "C");
    zorsim_test::SetEnv("LOCPATH", nullptr);
    if (!latin1)
        GTEST_SKIP() << "no ISO-8859-1 locale on this machine";
}

} // namespace
