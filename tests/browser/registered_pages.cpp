#include "tests/browser/registered_pages.h"

#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <ostream>

namespace quill {

void PrintTo(const live_objects& counts, std::ostream* out)
{
    *out << counts.pages << " pages, " << counts.elements << " elements, " << counts.collections
         << " collections, " << counts.events << " events, " << counts.connection_points
         << " connection points, " << counts.downloads << " downloads, " << counts.embedded_sites
         << " embedded sites, " << counts.references << " references";
}

namespace test {

registered_pages::registered_pages()
{
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"QuillPages.dll"), "quill_count_living_objects");
    EXPECT_NE(found, nullptr);
    count_ = reinterpret_cast<count_live_objects_function*>(reinterpret_cast<void*>(found));
}

registered_pages::~registered_pages()
{
    EXPECT_TRUE(all_gone()) << testing::PrintToString(living());
}

live_objects registered_pages::living() const
{
    live_objects counts;
    if (count_ != nullptr)
        count_(&counts);
    return counts;
}

bool registered_pages::all_gone() const
{
    return wait_until([this] { return living() == live_objects{}; });
}

} // namespace test
} // namespace quill
