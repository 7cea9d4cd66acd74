// Header comparison for unit tests.
#include "ZORSimFileHeaderDiff.h"

#include "ZORBasShared.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

// Assertions are located by this component's name and fixed lines, so that
// the reports stay the same whatever the build.
constexpr const char* kSource = "ZORSimFileHeaderDiff";

// Closes the file on every way out.
class FileCloser {
public:
    explicit FileCloser(std::FILE* fp) : m_fp(fp) {}
    ~FileCloser() { Close(); }
    FileCloser(const FileCloser&) = delete;
    FileCloser& operator=(const FileCloser&) = delete;
    void Close() {
        if (m_fp != nullptr)
            std::fclose(m_fp);
        m_fp = nullptr;
    }

private:
    std::FILE* m_fp;
};

} // namespace

ZORSimFileHeaderDiff::BufferHolder::BufferHolder(int size)
    : m_data(new unsigned char[size > 0 ? static_cast<std::size_t>(size) : 1]) {}

ZORSimFileHeaderDiff::BufferHolder::~BufferHolder() {
    delete[] m_data;
}

ZORSimFileHeaderDiff::ZORSimFileHeaderDiff(uts_UnitTestMonitor& monitor) : uts_UnitTest(monitor) {}

ZORSimFileHeaderDiff::~ZORSimFileHeaderDiff() = default;

void ZORSimFileHeaderDiff::ValidateHeader(const char* fileName, const char* label,
                                          const unsigned char* expected, int expectedLength) {
    std::FILE* fp = ZORBasFileOps::Fopen(ZORString(fileName), "rb");
    FileCloser closer(fp);
    // Nothing to measure or read without the file.
    if (!utsAssert(fp != nullptr, kSource, 27, "fp != 0"))
        return;

    // Header files are small: a 32-bit length is all this was made for. A
    // position that does not fit, or a failed seek, reads nothing and fails
    // the next assertion.
    long file_length = -1;
    if (std::fseek(fp, 0, SEEK_END) == 0)
        file_length = static_cast<int>(std::ftell(fp));
    std::fseek(fp, 0, SEEK_SET);

    const int length = file_length > 0 ? static_cast<int>(file_length) : 0;
    BufferHolder buffer(length);
    const std::size_t size_read =
        length > 0 ? std::fread(buffer.Data(), 1, static_cast<std::size_t>(length), fp) : 0;
    utsAssert(static_cast<long>(size_read) == file_length, kSource, 35,
              "size_read == file_length && \"Header read failed.\"");
    closer.Close();

    const int actualLength = static_cast<int>(size_read);
    const bool passedLength = actualLength == expectedLength;
    utsAssert(passedLength, kSource, 39, "passedLength && \"Header validation failed length.\"");
    if (passedLength) {
        const bool passed = actualLength == 0 || std::memcmp(buffer.Data(), expected, size_read) == 0;
        utsAssert(passed, kSource, 45, "passed && \"Header validation failed match.\"");
        if (passed)
            return;
    }

    // The dump is one line that pastes straight in as the new expected image.
    std::string dump = label != nullptr ? label : "";
    dump += "\nActual length: " + std::to_string(actualLength) + "\n";
    for (int i = 0; i < actualLength; ++i) {
        if (i > 0)
            dump += ',';
        dump += std::to_string(static_cast<unsigned>(buffer.Data()[i]));
    }
    dump += '\n';
    std::fwrite(dump.data(), 1, dump.size(), stderr);
    std::fflush(stderr);
}
