// The hook journal and use count as the module tests read them.
#pragma once

#include "ZORSimTestSupport.h"

#include "ZORBasModules.h"
#include "ZORSimContainersLoader.h"
#include "ZORSimContainersModule.h"

#include <string>
#include <vector>

using Journal = std::vector<std::string>;

inline const Journal kStart = {"ZORBasXmlParser_initialize", "ZORBasShared_initialize",
                               "ZORBasCoreUtils_initialize", "ZORBasGenericsLib_initialize",
                               "ZORBasAlloc_initialize",     "ZORSimUtt_initialize"};
inline const Journal kStop = {"ZORSimUtt_finalize",         "ZORBasAlloc_finalize",
                              "ZORBasGenericsLib_finalize", "ZORBasCoreUtils_finalize",
                              "ZORBasShared_finalize",      "ZORBasXmlParser_finalize"};

// What a start from nothing adds to the caller's tally: 1 before the hooks,
// 1 from each of the five base libraries and the utility layer, and 1 for
// the specific count.
constexpr int kFullStart = 8;

// The hooks called since the last call.
inline Journal TakeJournal() {
    Journal entries;
    for (int i = 0; i < ZORBasHookJournal::Size(); ++i)
        entries.emplace_back(ZORBasHookJournal::At(i));
    ZORBasHookJournal::Clear();
    return entries;
}

// Takes the use count from the loader's 1 to 0, stopping everything.
inline void StopLoaderUse() {
    TakeJournal();
    EXPECT_EQ(DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr), 1);
    EXPECT_EQ(TakeJournal(), kStop);
}
