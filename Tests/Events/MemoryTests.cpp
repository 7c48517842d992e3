#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/StoredRecord.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr auto anySize = std::numeric_limits<std::size_t>::max();
thread_local std::size_t largestAllocation = anySize;

} // namespace

// Refuses what is larger than the test allows.
void* operator new(std::size_t size) {
    if (size <= largestAllocation)
        if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace tallyfoot {
namespace {

class MemoryTest : public ::testing::Test {
protected:
    void TearDown() override { largestAllocation = anySize; }

    const Attributes properties{{LogAttribute::custom, R"([{"a":")" + std::string(100'000, 'x') + R"("}])"}};
};

TEST_F(MemoryTest, AnEventThatIsTooLongForItIsNotFormatted) {
    const Event event{EventType::action, properties};
    std::string buffer = "left over";
    largestAllocation = 50'000;
    EXPECT_EQ(FileEventFormatter().format(event), std::nullopt);
    EXPECT_FALSE(FileEventFormatter().format(properties, buffer));
    EXPECT_EQ(buffer, "");
}

TEST_F(MemoryTest, CustomDataThatIsTooLongForItStaysAText) {
    std::string line;
    ASSERT_TRUE(FileEventFormatter().format(properties, line));
    const std::string expected = line + "jsonsplit";
    line.reserve(expected.size());
    largestAllocation = 50'000;
    EXPECT_NO_THROW(makeStoredRecord(line, properties));
    EXPECT_EQ(line, expected);
}

} // namespace
} // namespace tallyfoot
