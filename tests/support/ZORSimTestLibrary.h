// A shared library loaded at run time, for tests that need code mapped after
// the process started. It stays loaded until the process ends, or Unload.
#pragma once

#include <string>

namespace zorsim_test {

class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::string& path); // UTF-8
    bool IsLoaded() const { return m_handle != nullptr; }
    // Why loading failed.
    const std::string& Error() const { return m_error; }
    // Drops this use of the library; the last one unloads it.
    bool Unload();
    // The exported function `name`, or null.
    template <class Function> Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(Symbol(name));
    }

private:
    void* Symbol(const char* name) const;
    void* m_handle;
    std::string m_error;
};

} // namespace zorsim_test
