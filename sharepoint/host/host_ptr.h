// Owns references to the host's objects. A system exception in AddRef, QueryInterface or Release is handled
// as in any other call into the host (host_call.h). For code that runs inside a CrashBorder:
//     const host_ptr<IHTMLDocument3> document = query<IHTMLDocument3>(unknown);
//     host_ptr<IHTMLElement> root;
//     if (!document || FAILED(call_host(document, &IHTMLDocument3::get_documentElement, root.out())))
//         return;
#pragma once

#include "sharepoint/host/host_call.h"

#include <unknwn.h>

#include <cstddef>
#include <utility>

namespace quill {

template <class T>
class host_ptr
{
public:
    host_ptr() noexcept = default;
    host_ptr(std::nullptr_t) noexcept {}
    explicit host_ptr(T* object)
    {
        if (object)
            barrier::call_host([&] { return object->AddRef(); });
        object_ = object;
    }
    host_ptr(host_ptr&& other) noexcept : object_(other.detach()) {}
    host_ptr& operator=(host_ptr&& other) noexcept
    {
        host_ptr(std::move(other)).swap(*this);
        return *this;
    }
    ~host_ptr() { release(); }

    T* get() const noexcept { return object_; }
    operator T*() const noexcept { return object_; }

    // Clears the pointer first, because Release may re-enter the owner.
    void release() noexcept { barrier::release_host(detach()); }
    // Releases the current reference; for out parameters of type T**.
    T** out() noexcept
    {
        release();
        return &object_;
    }
    // Takes over the caller's reference.
    void attach(T* object) noexcept
    {
        release();
        object_ = object;
    }
    [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }
    void swap(host_ptr& other) noexcept { std::swap(object_, other.object_); }

private:
    T* object_ = nullptr;
};

// QueryInterface; null if object is null or does not have the interface.
template <class T>
host_ptr<T> query(IUnknown* object)
{
    void* found = nullptr;
    if (!object || FAILED(barrier::call_host([&] { return object->QueryInterface(__uuidof(T), &found); })))
        return {};
    host_ptr<T> result;
    result.attach(static_cast<T*>(found));
    return result;
}

// COM identity: compares the IUnknown of both. True for two null pointers.
bool is_same_object(IUnknown* left, IUnknown* right);

} // namespace quill
