// A document object that only shows a window, to measure what the browser's engine allocates for each
// document.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace quill::soak {

inline constexpr char trivial_type[] = "application/x-quill-trivial";

// In its scope, the engine shows content of that type with such objects.
class trivial_documents
{
public:
    trivial_documents();
    ~trivial_documents();
    trivial_documents(const trivial_documents&) = delete;
    trivial_documents& operator=(const trivial_documents&) = delete;

    // Work of each later document while it has a window, with its URL: created with the window and destroyed
    // with it. nullptr for none.
    using work = std::function<std::shared_ptr<void>(const std::wstring& address)>;
    void give_work(work each);

    std::size_t shown() const;
    // The URL of the last document that was shown.
    const std::wstring& last_shown() const;
    long living() const;

private:
    DWORD cookie_ = 0;
};

} // namespace quill::soak
