#include "StorageFixture.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

} // namespace

// Counts what the program's own code allocates.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace tallyfoot::testing {
namespace {

using AllocationTest = StorageFixture;

TEST_F(AllocationTest, WritingToAnOpenFileAllocatesNothing) {
    const auto handler = makeFileHandler();
    const std::string record = std::string(400, 'x') + "jsonsplit";
    handler->write(record);
    const auto before = allocations;
    for (int count = 0; count < 100; ++count) handler->write(record);
    EXPECT_EQ(allocations, before);
    handler->close();
    EXPECT_GT(allocations, before) << "the counter does not count";
}

} // namespace
} // namespace tallyfoot::testing
