// Windows: the loader itself calls DllMain. A copy of the DLL under another
// name is a module of its own, with its own use count, over the same base
// library and so the same hook journal.
#include "ModuleJournal.h"
#include "ZORSimTestLibrary.h"

#include <filesystem>

using namespace zorsim_test;

TEST(ZORSimContainersModuleWin32, LoadingStartsEverythingUnloadingStopsIt) {
    const TempDir dir;
    const std::string copy = dir / "ZORSimCopy.dll";
    std::filesystem::copy_file(ZORSIM_LIBRARY_FILE, copy);
    TakeJournal();
    LoadedLibrary library(copy);
    ASSERT_TRUE(library.IsLoaded()) << library.Error();
    EXPECT_EQ(TakeJournal(), kStart);
    EXPECT_TRUE(library.Unload());
    EXPECT_EQ(TakeJournal(), kStop);
}
