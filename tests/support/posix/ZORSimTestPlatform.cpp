// The support layer on POSIX systems.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zorsim_test {

std::string Drain(std::FILE* file);

std::vector<std::string> ScenarioArguments(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

void SetEnv(const char* name, const char* value) {
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

struct Process::Impl {
    pid_t pid = -1;
    std::FILE* files[3] = {}; // standard input, output and error
};

Process::Process(const std::string& program, const std::vector<std::string>& args, const std::string& input)
    : m_impl(std::make_unique<Impl>()) {
    std::vector<char*> argv;
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd < 3; ++fd) {
        m_impl->files[fd] = std::tmpfile();
        posix_spawn_file_actions_adddup2(&actions, fileno(m_impl->files[fd]), fd);
    }
    std::fputs(input.c_str(), m_impl->files[0]);
    std::fflush(m_impl->files[0]);
    std::rewind(m_impl->files[0]);
    const int error = posix_spawn(&m_impl->pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << "cannot start " << program << ": " << std::strerror(error);
    if (error != 0)
        m_impl->pid = -1;
}

Process::Process(Process&&) noexcept = default;
Process::~Process() {
    if (m_impl)
        Wait();
}

ProcessResult Process::Wait() {
    ProcessResult result;
    if (m_impl->files[0] == nullptr)
        return result; // waited for already
    int status = 0;
    if (m_impl->pid > 0) {
        while (waitpid(m_impl->pid, &status, 0) < 0 && errno == EINTR) {
        }
        if (WIFEXITED(status))
            result.exitCode = WEXITSTATUS(status);
    }
    std::fclose(m_impl->files[0]);
    m_impl->files[0] = nullptr;
    result.out = Drain(m_impl->files[1]);
    result.err = Drain(m_impl->files[2]);
    return result;
}

std::string SelfPath() {
    char path[PATH_MAX];
    const ssize_t size = readlink("/proc/self/exe", path, sizeof path);
    return size > 0 ? std::string(path, static_cast<std::size_t>(size)) : "/proc/self/exe";
}

std::string FullDiskPath() {
    return access("/dev/full", W_OK) == 0 ? "/dev/full" : "";
}

bool IsWine() {
    return false;
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
