// References to the host's objects in guarded code. A system exception in an object's AddRef, QueryInterface
// or Release is handled like one in any other call into the host.
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

    // The pointer is cleared first: releasing may lead back to its owner.
    void release() noexcept { barrier::release_host(detach()); }
    // For an out parameter of type T**.
    T** out() noexcept
    {
        release();
        return &object_;
    }
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

// The object's interface T; empty when it has none, or when there is no object.
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

// Whether both are interfaces of one object. Two null pointers are equal.
bool is_same_object(IUnknown* left, IUnknown* right);

} // namespace quill
