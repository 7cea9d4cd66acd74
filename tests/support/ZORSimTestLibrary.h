// A shared library loaded at run time, for tests that need code mapped after
// the process started. It stays loaded until the process ends, or Unload.
#pragma once

#include <string>

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <dlfcn.h>
#endif

namespace zorsim_test {

class LoadedLibrary {
public:
    // `path` is UTF-8.
    explicit LoadedLibrary(const std::string& path) {
#if defined(_WIN32)
        std::wstring wide(path.size(), L'\0');
        wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, path.data(),
                                                                 static_cast<int>(path.size()), wide.data(),
                                                                 static_cast<int>(wide.size()))));
        m_handle = LoadLibraryW(wide.c_str());
        if (m_handle == nullptr)
            m_error = "LoadLibraryW failed with " + std::to_string(GetLastError());
#else
        m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (m_handle == nullptr)
            m_error = dlerror();
#endif
    }

    bool IsLoaded() const {
        return m_handle != nullptr;
    }
    // Why loading failed.
    const std::string& Error() const {
        return m_error;
    }

    // Drops this use of the library; the last one unloads it.
    bool Unload() {
#if defined(_WIN32)
        return FreeLibrary(m_handle) != 0;
#else
        return dlclose(m_handle) == 0;
#endif
    }

    // The exported function `name`, or null.
    template <class Function> Function* Find(const char* name) const {
#if defined(_WIN32)
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_handle, name)));
#else
        return reinterpret_cast<Function*>(dlsym(m_handle, name));
#endif
    }

private:
#if defined(_WIN32)
    HMODULE m_handle;
#else
    void* m_handle;
#endif
    std::string m_error;
};

} // namespace zorsim_test
