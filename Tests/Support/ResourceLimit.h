#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace tallyfoot::testing {

// The process has no more of a resource than this while this lives. Beyond RLIMIT_FSIZE, in bytes, whoever writes
// without care is ended; below RLIMIT_NOFILE it keeps the files that it has.
class ResourceLimit {
public:
    using Resource = decltype(RLIMIT_FSIZE);

    ResourceLimit(Resource resource, rlim_t most) : resource_(resource) {
        EXPECT_EQ(::getrlimit(resource_, &former_), 0);
        const rlimit limit{most, former_.rlim_max};
        EXPECT_EQ(::setrlimit(resource_, &limit), 0);
    }

    ~ResourceLimit() { EXPECT_EQ(::setrlimit(resource_, &former_), 0); }

    ResourceLimit(const ResourceLimit&) = delete;
    ResourceLimit& operator=(const ResourceLimit&) = delete;

private:
    const Resource resource_;
    rlimit former_{};
};

} // namespace tallyfoot::testing
