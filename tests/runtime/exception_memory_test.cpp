// The memory of exceptions: its layout and its limits.
#include "runtime/exception_memory.h"
#include "tests/support/child_process.h"

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <string>
#include <typeinfo>

namespace quill {
namespace {

constexpr std::byte untouched{0xA5};

// The distance from the first byte of the exception header to the object.
std::size_t size_of_header()
{
    alignas(std::max_align_t) static std::array<std::byte, 4096> memory;
    memory.fill(untouched);
    std::byte* const object = memory.data() + memory.size() / 2;
    abi::__cxa_init_primary_exception(object, const_cast<std::type_info*>(&typeid(int)), nullptr);
    const auto* const first =
        std::find_if(memory.begin(), memory.end(), [](std::byte byte) { return byte != untouched; });
    return static_cast<std::size_t>(object - first);
}

// The innermost exception that this thread has caught, from the library's state.
const std::byte* caught_exception()
{
    return *reinterpret_cast<const std::byte* const*>(abi::__cxa_get_globals());
}

TEST(ExceptionMemory, HasRoomForTheHeaderOfAnObject)
{
    const std::size_t size = size_of_header();
    EXPECT_GE(size, 64u) << "not a header";
    EXPECT_LE(size, runtime::exception_header_room);
}

// The header of a rethrown exception begins with a pointer to the object and ends with the same part as the
// header of the object.
TEST(ExceptionMemory, HasRoomForARethrownException)
{
    try {
        throw std::runtime_error("text");
    } catch (const std::runtime_error& error) {
        const auto* const object = reinterpret_cast<const std::byte*>(&error);
        const std::ptrdiff_t common_size = object - caught_exception();
        try {
            std::rethrow_exception(std::current_exception());
        } catch (const std::runtime_error& again) {
            ASSERT_EQ(&again, &error);
            const std::byte* const common = caught_exception();
            const std::byte* const end = common + common_size;
            const auto points_to_object = [&](const std::byte* place) {
                return *reinterpret_cast<const std::byte* const*>(place) == object;
            };
            const std::byte* begin = common;
            constexpr std::ptrdiff_t most = 64; // before the common part
            while (!points_to_object(begin) && common - begin < most)
                begin -= sizeof(void*);
            ASSERT_TRUE(points_to_object(begin));
            EXPECT_LE(static_cast<std::size_t>(end - begin), runtime::exception_header_room);
        }
    }
}

TEST(ExceptionMemory, IsAlignedForEveryObject)
{
    for (const std::size_t size : {std::size_t{1}, std::size_t{24}, std::size_t{5000}}) {
        void* const object = abi::__cxa_allocate_exception(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object) % alignof(std::max_align_t), 0u) << size;
        abi::__cxa_free_exception(object);
    }
}

struct ExceptionOfImpossibleSize : testing::TestWithParam<int>
{
};

TEST_P(ExceptionOfImpossibleSize, EndsTheProcess)
{
    const auto result =
        test::run_program(test::beside_this_program(L"runtime_program.exe"), std::to_wstring(GetParam()));
    EXPECT_EQ(result.output, "terminated\r\n");
    EXPECT_EQ(result.exit_code, 3u);
}

// Sizes that overflow with the header, and sizes beyond the memory of any machine.
INSTANTIATE_TEST_SUITE_P(ExceptionMemory, ExceptionOfImpossibleSize,
                         testing::Values(0, 100, static_cast<int>(runtime::exception_header_room) - 1,
                                         static_cast<int>(runtime::exception_header_room)));

} // namespace
} // namespace quill
