// A document object that does nothing but stand in a window: what the browser's engine itself keeps of each
// document that it shows.
#pragma once

#include <windows.h>

#include <cstddef>

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

    std::size_t shown() const;
    long living() const;

private:
    DWORD cookie_ = 0;
};

} // namespace quill::soak
