// Absolute names where only POSIX can put them to the test: the root, links
// in the path, and a working directory whose name is no UTF-8.
#include "ZORSimTestErrors.h"

#include "ZORSimUttAssert.h"
#include "ZORSimUttFileUtils.h"

#include <filesystem>

namespace FU = ZORSimUttFileUtils;
namespace fs = std::filesystem;
using namespace zorsim_test;

TEST(FileUtilsPosix, AbsolutePathByNameAloneFromTheRoot) {
    ZORSimUttAssertDisableExcReport();
    TempDir dir;
    dir.Dir("real/in");
    fs::create_directory_symlink("real/in", dir / "link");
    fs::current_path(dir.Path());
    const std::string here = fs::current_path().string();
    const std::pair<const char*, std::string> cases[] = {
        {"link/..", here}, // links are not followed
        {"/abs/../x", "/x"}, {"/a/../../b", "/b"}, {"/..", "/"}, {"\\", "/"},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_STREQ(FU::AbsolutePath(ZORString(path)).c_str(), expected.c_str()) << "'" << path << "'";

    fs::current_path(dir.Dir("odd\xff")); // a working directory without a UTF-8 name
    const auto raised = Raised<ZORBasToUTF8Exception>([] { FU::AbsolutePath(ZORString("x")); });
    EXPECT_STREQ(raised ? raised->Text() : "", "_wfullpath");
    fs::current_path("/");
}
