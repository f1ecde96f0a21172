// A page read by the stand-in for the HTML engine.
#pragma once

#include "tests/bench/support/loaded_library.h"
#include "tests/support/scopes.h"

#include <atlbase.h>

#include <string>

namespace quill::bench {

// The page's file is there for as long as this lives. engine must outlive it.
class engine_page
{
public:
    engine_page(const loaded_library& engine, const std::string& html);

    // A new page, read to its end. Throws std::runtime_error when that fails.
    CComPtr<IDispatch> read() const;

private:
    const loaded_library& engine_;
    test::scratch_directory folder_;
    std::wstring path_ = folder_ / L"page.html";
};

} // namespace quill::bench
