// A page in the stand-in for the HTML engine.
#pragma once

#include "tests/bench/support/loaded_library.h"
#include "tests/support/scopes.h"

#include <atlbase.h>

#include <string>

namespace quill::bench {

// The file of the page exists in its scope. engine must outlive it.
class engine_page
{
public:
    engine_page(const loaded_library& engine, const std::string& html);

    // A new page, loaded completely. Throws std::runtime_error on failure.
    CComPtr<IDispatch> read() const;

private:
    const loaded_library& engine_;
    test::scratch_directory folder_;
    std::wstring path_ = folder_ / L"page.html";
};

} // namespace quill::bench
