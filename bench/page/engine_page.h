// A page read by the stand-in for the HTML engine.
#pragma once

#include "bench/support/loaded_library.h"

#include <atlbase.h>

#include <string>

namespace quill::bench {

// Writes the markup to a file and has the engine read it to its end. Throws std::runtime_error when it fails.
CComPtr<IDispatch> read_page(const loaded_library& engine, const std::string& html);

} // namespace quill::bench
