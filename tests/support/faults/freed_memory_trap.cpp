#include "tests/support/faults/freed_memory_trap.h"

#include "tests/support/faults/import_table.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace quill::test {
namespace {

struct trap_state
{
    std::mutex lock;
    std::size_t smallest = 0;
    std::map<void*, std::size_t> blocks; // each on pages of its own, with its size
    std::vector<void*> freed;
};

trap_state& state()
{
    static trap_state all;
    return all;
}

void* allocate(std::size_t size)
{
    trap_state& all = state();
    if (size < all.smallest)
        return std::malloc(size);
    void* const block = VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    const std::lock_guard guard(all.lock);
    if (block)
        all.blocks.emplace(block, size);
    return block;
}

void release(void* block)
{
    trap_state& all = state();
    {
        const std::lock_guard guard(all.lock);
        const auto found = all.blocks.find(block);
        if (found != all.blocks.end()) {
            DWORD before = 0;
            VirtualProtect(block, found->second, PAGE_NOACCESS, &before);
            all.freed.push_back(block);
            all.blocks.erase(found);
            return;
        }
    }
    std::free(block);
}

void* reallocate(void* block, std::size_t size)
{
    std::size_t before = 0;
    {
        const std::lock_guard guard(state().lock);
        const auto found = state().blocks.find(block);
        before = found == state().blocks.end() ? 0 : found->second;
    }
    if (before == 0)
        return std::realloc(block, size);
    void* const moved = allocate(size);
    if (moved) {
        std::memcpy(moved, block, std::min(before, size));
        release(block);
    }
    return moved;
}

code_address original_malloc;
code_address original_realloc;
code_address original_free;

} // namespace

freed_memory_trap::freed_memory_trap(HMODULE module, std::size_t smallest) : module_(module)
{
    state().smallest = smallest;
    original_malloc = redirect_import(module, "malloc", reinterpret_cast<code_address>(&allocate));
    original_realloc = redirect_import(module, "realloc", reinterpret_cast<code_address>(&reallocate));
    original_free = redirect_import(module, "free", reinterpret_cast<code_address>(&release));
    EXPECT_TRUE(original_malloc && original_realloc && original_free);
}

freed_memory_trap::~freed_memory_trap()
{
    redirect_import(module_, "malloc", original_malloc);
    redirect_import(module_, "realloc", original_realloc);
    redirect_import(module_, "free", original_free);
    EXPECT_TRUE(state().blocks.empty()) << "the module keeps a block that it can no longer free";
    for (void* const block : state().freed)
        VirtualFree(block, 0, MEM_RELEASE);
    state().freed.clear();
}

} // namespace quill::test
