#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace tallyfoot::testing {

// No file of the process grows beyond so many bytes while this lives. Whoever tries without care is ended.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &former_), 0);
        const rlimit limit{bytes, former_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }

    ~FileSizeLimit() { EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &former_), 0); }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit former_{};
};

} // namespace tallyfoot::testing
