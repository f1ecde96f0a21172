#include "tests/support/faults/import_table.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string_view>

namespace quill::test {
namespace {

constexpr std::size_t stub_room = 96; // bytes
constexpr std::size_t most_stubs = 512;

// Memory for code. Never freed, since a stub may run at any time.
std::byte* next_room()
{
    static std::byte* const room = static_cast<std::byte*>(
        VirtualAlloc(nullptr, stub_room * most_stubs, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    static std::size_t used = 0;
    if (!room || used == most_stubs)
        throw std::runtime_error("no room for another stub");
    return room + stub_room * used++;
}

// Integer and pointer arguments only: none of the functions takes a floating-point argument in a register.
code_address make_stub(void* context, code_address chooser)
{
    static constexpr std::array<unsigned char, 24> keep_arguments = {
        0x48, 0x83, 0xEC, 0x68,       // sub rsp, 68h: 16-byte alignment, room for the callee
        0x48, 0x89, 0x4C, 0x24, 0x40, // mov [rsp+40h], rcx
        0x48, 0x89, 0x54, 0x24, 0x48, // mov [rsp+48h], rdx
        0x4C, 0x89, 0x44, 0x24, 0x50, // mov [rsp+50h], r8
        0x4C, 0x89, 0x4C, 0x24, 0x58, // mov [rsp+58h], r9
    };
    static constexpr std::array<unsigned char, 2> load_rcx = {0x48, 0xB9};
    static constexpr std::array<unsigned char, 2> load_rax = {0x48, 0xB8};
    static constexpr std::array<unsigned char, 28> go_on = {
        0xFF, 0xD0,                   // call rax
        0x48, 0x8B, 0x4C, 0x24, 0x40, // mov rcx, [rsp+40h]
        0x48, 0x8B, 0x54, 0x24, 0x48, // mov rdx, [rsp+48h]
        0x4C, 0x8B, 0x44, 0x24, 0x50, // mov r8, [rsp+50h]
        0x4C, 0x8B, 0x4C, 0x24, 0x58, // mov r9, [rsp+58h]
        0x48, 0x83, 0xC4, 0x68,       // add rsp, 68h
        0xFF, 0xE0,                   // jmp rax
    };
    std::byte* const begin = next_room();
    std::byte* end = begin;
    const auto put = [&end](const void* bytes, std::size_t size) {
        std::memcpy(end, bytes, size);
        end += size;
    };
    put(keep_arguments.data(), keep_arguments.size());
    put(load_rcx.data(), load_rcx.size());
    put(&context, sizeof context);
    put(load_rax.data(), load_rax.size());
    put(&chooser, sizeof chooser);
    put(go_on.data(), go_on.size());
    FlushInstructionCache(GetCurrentProcess(), begin, stub_room);
    return begin;
}

// Calls action(name, entry) for every function that is imported by name.
template <class Action>
void for_each_import(HMODULE module, const Action& action)
{
    auto* const image = reinterpret_cast<std::byte*>(module);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        image + reinterpret_cast<const IMAGE_DOS_HEADER*>(image)->e_lfanew);
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + imports);
         library->Name; ++library) {
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA64*>(image + library->OriginalFirstThunk);
        auto* entry = reinterpret_cast<IMAGE_THUNK_DATA64*>(image + library->FirstThunk);
        for (; name->u1.AddressOfData; ++name, ++entry) {
            if (!IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal))
                action(reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData)->Name,
                       entry->u1.Function);
        }
    }
}

} // namespace

code_address counting_stub(void* context, code_address chooser)
{
    static std::map<void*, code_address> made;
    code_address& stub = made[context];
    if (!stub)
        stub = make_stub(context, chooser);
    return stub;
}

code_address redirect_import(HMODULE module, const char* name, code_address target)
{
    code_address before = nullptr;
    for_each_import(module, [&](const char* each, ULONGLONG& entry) {
        if (std::string_view(each) != name)
            return;
        before = reinterpret_cast<code_address>(entry);
        DWORD protection = 0;
        if (!VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &protection))
            throw std::runtime_error("the table of imports cannot be written");
        entry = reinterpret_cast<ULONGLONG>(target);
        VirtualProtect(&entry, sizeof entry, protection, &protection);
    });
    return before;
}

std::vector<std::string> imported_names(HMODULE module)
{
    std::vector<std::string> names;
    for_each_import(module, [&](const char* each, ULONGLONG&) { names.emplace_back(each); });
    return names;
}

} // namespace quill::test
