/* The plain entry points as a C client calls them, with null pointers and
 * small or missing error buffers. Argument: the folder holding this file. */
#include <ZORSimContainersC.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures;

static void check(int ok, int line) {
    if (!ok) {
        fprintf(stderr, "capi_client.c:%d: check failed\n", line);
        ++failures;
    }
}
#define CHECK(condition) check((condition) != 0, __LINE__)
/* A null pointer to read or write through: 0 and a text naming it. */
#define CHECK_REFUSED(function, pointer, args)                                                               \
    CHECK(function args == 0 && strcmp(error, #function ": " pointer " is a null pointer.") == 0)

enum { kCapacity = 128 };

/* An 'X' shows where a buffer was left alone. */
static char* Fresh(char* buffer) {
    memset(buffer, 'X', kCapacity);
    return buffer;
}

int main(int argc, char** argv) {
    char error[kCapacity], pattern[1024];
    unsigned char empty = 2;
    void* glob = NULL;
    const char* front = NULL;
    char* copy = NULL;
    int found = 0;

    if (argc != 2)
        return 2;
    snprintf(pattern, sizeof pattern, "%s/*.C", argv[1]);
    CHECK(ZORSimUttFileUtils_GlobInit(pattern, &glob, kCapacity, error) == 1);

    CHECK_REFUSED(ZORSimUttFileUtils_GlobInit, "pattern", (NULL, &glob, kCapacity, Fresh(error)));
    CHECK_REFUSED(ZORSimUttFileUtils_GlobInit, "handle", (pattern, NULL, kCapacity, Fresh(error)));
    CHECK_REFUSED(ZORSimUttFileUtils_GlobEmpty, "empty", (glob, NULL, kCapacity, Fresh(error)));
    CHECK_REFUSED(ZORSimUttFileUtils_GlobFront, "front", (glob, NULL, kCapacity, Fresh(error)));
    CHECK_REFUSED(ZORSimUttPythonGlueTest_CheckString, "input", (NULL, &copy, Fresh(error), kCapacity));
    CHECK_REFUSED(ZORSimUttPythonGlueTest_CheckString, "output", ("x", NULL, Fresh(error), kCapacity));
    CHECK(copy == NULL);

    /* The text is cut to the capacity; no buffer or no room: nothing written. */
    CHECK(ZORSimUttFileUtils_GlobInit(NULL, &glob, 8, Fresh(error)) == 0 && strcmp(error, "ZORSimU") == 0 &&
          error[8] == 'X');
    CHECK(ZORSimUttFileUtils_GlobFront(glob, NULL, 0, Fresh(error)) == 0 && error[0] == 'X');
    CHECK(ZORSimUttPythonGlueTest_CheckString(NULL, &copy, Fresh(error), 0) == 0 && error[0] == 'X');
    CHECK(ZORSimUttFileUtils_GlobEmpty(glob, NULL, kCapacity, NULL) == 0);
    CHECK(ZORSimUttPythonGlueTest_CheckString("Bad string.", &copy, NULL, kCapacity) == 0 && copy == NULL);

    /* The handle still works after all that. */
    while (ZORSimUttFileUtils_GlobEmpty(glob, &empty, kCapacity, error) && !empty) {
        CHECK(ZORSimUttFileUtils_GlobFront(glob, &front, kCapacity, error) == 1);
        found += strstr(front, "/capi_client.c") != NULL;
        CHECK(ZORSimUttFileUtils_GlobNext(glob, kCapacity, error) == 1);
    }
    CHECK(empty == 1 && found == 1);
    CHECK(ZORSimUttFileUtils_GlobFree(glob, kCapacity, error) == 0 &&
          strcmp(error, "Glob Error: unknown error") == 0);

    CHECK(ZORSimUttPythonGlueTest_CheckString("x", &copy, error, kCapacity) == 1 && strcmp(copy, "x") == 0);
    free(copy);

    /* No label or text is an empty one. */
    ZORSimUttResourceMonitorIniTimer(9, NULL);
    ZORSimUttResourceMonitorMark(NULL);
    if (failures == 0)
        puts("capi ok");
    return failures != 0;
}
