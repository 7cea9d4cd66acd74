// Byte-for-byte check of a file written by the database against an expected
// image, for unit tests. Outcomes are recorded as unit-test assertions; a
// mismatch also prints the file's actual bytes as an initialiser list.
#pragma once

#include "ZORSimContainersExport.h"
#include "uts_UnitTest.h"

class ZORSIM_API ZORSimFileHeaderDiff : public uts_UnitTest {
public:
    explicit ZORSimFileHeaderDiff(uts_UnitTestMonitor& monitor);
    ~ZORSimFileHeaderDiff() override;

    // Owns one heap block, so the file image is freed on every way out.
    class ZORSIM_API BufferHolder {
    public:
        // Raises std::bad_alloc when the block cannot be had.
        explicit BufferHolder(int size);
        ~BufferHolder();
        BufferHolder(const BufferHolder&) = delete;
        BufferHolder& operator=(const BufferHolder&) = delete;
        unsigned char* Data() const { return m_data; }

    private:
        unsigned char* m_data;
    };

protected:
    // Compares the whole of `fileName` with `expected`; on a mismatch writes
    // `label`, the actual length and the actual bytes to standard error.
    void ValidateHeader(const char* fileName, const char* label, const unsigned char* expected,
                        int expectedLength);
};
