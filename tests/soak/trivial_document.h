// A document object that does nothing but stand in a window: what the browser's engine itself keeps of each
// document that it shows.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace quill::soak {

inline constexpr char trivial_type[] = "application/x-quill-trivial";

// While an instance lives, the engine shows content of that type with such objects.
class trivial_documents
{
public:
    trivial_documents();
    ~trivial_documents();
    trivial_documents(const trivial_documents&) = delete;
    trivial_documents& operator=(const trivial_documents&) = delete;

    // What each document from now on does while it has a window, with the address that it was loaded from:
    // made with the window, let go of with it. Null: nothing.
    using work = std::function<std::shared_ptr<void>(const std::wstring& address)>;
    void give_work(work each);

    std::size_t shown() const;
    // The address of the one that was shown last.
    const std::wstring& last_shown() const;
    long living() const;

private:
    DWORD cookie_ = 0;
};

} // namespace quill::soak
