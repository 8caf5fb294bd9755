#include "common/mem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <numeric>
#include <type_traits>
#include <vector>

namespace {
bool g_outOfMemory = false;
} // namespace

// Stands before the standard library's in this executable.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return g_outOfMemory ? nullptr : ::operator new[](size);
}

namespace k740::test {
namespace {

static_assert(std::has_virtual_destructor_v<CQBMem>);
static_assert(!std::is_copy_constructible_v<CQBMem> && !std::is_copy_assignable_v<CQBMem>);

std::vector<int> Contents(const CQBMem& mem) {
    return {mem.GetData(), mem.GetData() + mem.GetSize()};
}

/// Sizes the buffer to 8 bytes that hold 1 to 8.
void FillWithEight(CQBMem& mem) {
    mem.SetSize(8);
    std::iota(mem.GetData(), mem.GetData() + 8, static_cast<unsigned char>(1));
}

TEST(MemTest, StartsEmpty) {
    const CQBMem mem;
    EXPECT_EQ(nullptr, mem.GetData());
    EXPECT_EQ(0U, mem.GetSize());
}

TEST(MemTest, SetSizeReturnsTheDataZeroed) {
    CQBMem mem;
    const unsigned char* data = mem.SetSize(3);
    EXPECT_NE(nullptr, data);
    EXPECT_EQ(mem.GetData(), data);
    EXPECT_EQ((std::vector<int>{0, 0, 0}), Contents(mem));
}

TEST(MemTest, GrowingKeepsTheContentsAndClearsTheRest) {
    CQBMem mem;
    FillWithEight(mem);
    const unsigned char* data = mem.SetSize(16);
    EXPECT_EQ(mem.GetData(), data);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0}), Contents(mem));
}

TEST(MemTest, WithoutMemoryTheContentsAreGone) {
    CQBMem mem;
    FillWithEight(mem);
    g_outOfMemory = true;
    EXPECT_EQ(nullptr, mem.SetSize(16));
    EXPECT_EQ(nullptr, mem.GetData());
    EXPECT_EQ(0U, mem.GetSize());
}

TEST(MemTest, ShrinkingKeepsWhatFits) {
    CQBMem mem;
    FillWithEight(mem);
    mem.SetSize(16);
    mem.SetSize(4);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), Contents(mem));
}

TEST(MemTest, ShrinkingForgetsTheRest) {
    CQBMem mem;
    FillWithEight(mem);
    mem.SetSize(4);
    mem.SetSize(8);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 0, 0, 0, 0}), Contents(mem));
}

TEST(MemTest, TheSameSizeKeepsTheContents) {
    CQBMem mem;
    FillWithEight(mem);
    mem.SetSize(8);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}), Contents(mem));
}

TEST(MemTest, SizeZeroFreesAndReturnsNull) {
    CQBMem mem;
    FillWithEight(mem);
    EXPECT_EQ(nullptr, mem.SetSize(0));
    EXPECT_EQ(nullptr, mem.GetData());
    EXPECT_EQ(0U, mem.GetSize());
}

TEST(MemTest, ReleaseEmptiesAndMayBeRepeated) {
    CQBMem mem;
    FillWithEight(mem);
    mem.Release();
    mem.Release();
    EXPECT_EQ(nullptr, mem.GetData());
    EXPECT_EQ(0U, mem.GetSize());
}

TEST(MemTest, ConstructorSizesTheBufferAndHandsOutItsAddress) {
    void* data = nullptr;
    const CQBMem mem(&data, 5);
    EXPECT_EQ(mem.GetData(), data);
    EXPECT_EQ((std::vector<int>(5)), Contents(mem));
}

TEST(MemTest, ConstructorTakesASizeBelowOneAsEmpty) {
    for (const int size : {0, -1}) {
        int something = 0;
        void* data = &something;
        const CQBMem mem(&data, size);
        EXPECT_EQ(nullptr, data);
        EXPECT_EQ(0U, mem.GetSize());
    }
}

TEST(MemTest, FreeDataFreesAndClearsThePointer) {
    auto* data = new unsigned char[4];
    CQBMem::FreeData(data);
    EXPECT_EQ(nullptr, data);
    CQBMem::FreeData(data);
    EXPECT_EQ(nullptr, data);
}

} // namespace
} // namespace k740::test
