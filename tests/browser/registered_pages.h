// The page object of the stand-in HTML engine, registered for text/html in a scope.
#pragma once

#include "stand_ins/html_engine/live_objects.h"
#include "tests/browser/registered_module.h"

#include <iosfwd>

namespace quill {

void PrintTo(const live_objects& counts, std::ostream* out);

namespace test {

// For use under the registration lock. At its end every object and reference must be released.
class registered_pages
{
public:
    registered_pages();
    ~registered_pages();
    registered_pages(const registered_pages&) = delete;
    registered_pages& operator=(const registered_pages&) = delete;

    live_objects living() const;
    // Waits until all pages are destroyed.
    bool all_gone() const;

private:
    registered_library library_{L"QuillPages.dll"};
    count_live_objects_function* count_ = nullptr;
};

} // namespace test
} // namespace quill
