// Owners of system resources: one type for each function that releases them.
//
//     unique_handle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
//     if (event)
//         SetEvent(event.get());                            // borrowed
//     unique_registry_key key;
//     RegOpenKeyExW(root, path, 0, KEY_READ, key.put());    // out parameter
//     return event.release();                               // transfers ownership to the caller
#pragma once

#include <windows.h>

#include <utility>

namespace quill {

// Owns one value of Traits::type. Traits provides close(value), is_empty(value) and empty(), the value of an
// empty owner.
template <typename Traits>
class unique_resource
{
public:
    using type = typename Traits::type;

    unique_resource() noexcept = default;
    explicit unique_resource(type value) noexcept : value_(value) {}
    ~unique_resource() { reset(); }
    unique_resource(unique_resource&& other) noexcept : value_(other.release()) {}
    unique_resource& operator=(unique_resource&& other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }

    type get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return !Traits::is_empty(value_); }

    // Transfers the value to the caller without closing it.
    [[nodiscard]] type release() noexcept { return std::exchange(value_, Traits::empty()); }

    // Closes the owned value and takes ownership of `value`.
    void reset(type value = Traits::empty()) noexcept
    {
        const type before = std::exchange(value_, value);
        if (!Traits::is_empty(before))
            Traits::close(before);
    }

    // For out parameters. Closes the owned value first.
    [[nodiscard]] type* put() noexcept
    {
        reset();
        return &value_;
    }

private:
    type value_ = Traits::empty();
};

template <typename Type>
struct null_is_empty
{
    using type = Type;
    static constexpr type empty() noexcept { return nullptr; }
    static constexpr bool is_empty(type value) noexcept { return value == nullptr; }
};

// Kernel objects. Depending on the function that creates them, the failure value is null or
// INVALID_HANDLE_VALUE: both are empty.
struct handle_traits
{
    using type = HANDLE;
    static constexpr type empty() noexcept { return nullptr; }
    static bool is_empty(type value) noexcept { return value == nullptr || value == INVALID_HANDLE_VALUE; }
    static void close(type value) noexcept { CloseHandle(value); }
};
using unique_handle = unique_resource<handle_traits>;

// Searches started with FindFirstFileW.
struct find_handle_traits : handle_traits
{
    static void close(type value) noexcept { FindClose(value); }
};
using unique_find_handle = unique_resource<find_handle_traits>;

struct registry_key_traits : null_is_empty<HKEY>
{
    static void close(type value) noexcept { RegCloseKey(value); }
};
using unique_registry_key = unique_resource<registry_key_traits>;

struct library_traits : null_is_empty<HMODULE>
{
    static void close(type value) noexcept { FreeLibrary(value); }
};
using unique_library = unique_resource<library_traits>;

struct menu_traits : null_is_empty<HMENU>
{
    static void close(type value) noexcept { DestroyMenu(value); }
};
using unique_menu = unique_resource<menu_traits>;

// Pens, brushes, fonts, bitmaps and regions. The object must not be selected into a device context when it is
// deleted.
template <typename Type>
struct gdi_object_traits : null_is_empty<Type>
{
    static void close(Type value) noexcept { DeleteObject(value); }
};
template <typename Type>
using unique_gdi_object = unique_resource<gdi_object_traits<Type>>;

// Memory from LocalAlloc.
template <typename Pointer>
struct local_memory_traits : null_is_empty<Pointer>
{
    static void close(Pointer value) noexcept { LocalFree(value); }
};
template <typename Pointer>
using unique_local_memory = unique_resource<local_memory_traits<Pointer>>;

} // namespace quill
