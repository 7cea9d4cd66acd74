// The support layer on POSIX systems.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zorsim_test {

std::vector<std::string> ScenarioArguments(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

void SetEnv(const char* name, const char* value) {
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

std::intptr_t Spawn(const std::string& program, const std::vector<std::string>& args,
                    std::FILE* const files[3]) {
    std::vector<char*> argv;
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd < 3; ++fd)
        posix_spawn_file_actions_adddup2(&actions, fileno(files[fd]), fd);
    pid_t pid = 0;
    const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << "cannot start " << program << ": " << std::strerror(error);
    return error == 0 ? pid : 0;
}

int Reap(std::intptr_t child) {
    int status = 0;
    while (waitpid(static_cast<pid_t>(child), &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string SelfPath() {
    return "/proc/self/exe";
}

std::string FullDiskPath() {
    return access("/dev/full", W_OK) == 0 ? "/dev/full" : "";
}

LoadedLibrary::LoadedLibrary(const std::string& path)
    : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr)
        m_error = dlerror();
}
bool LoadedLibrary::Unload() {
    return dlclose(m_handle) == 0;
}
void* LoadedLibrary::Symbol(const char* name) const {
    return dlsym(m_handle, name);
}

} // namespace zorsim_test
