// Downloads without anything around them: what the document's are measured against.
#pragma once

#include <string>

namespace quill::bench {

// Both fetch url into the file at path, on the calling thread. Throw std::runtime_error when that fails.
void download_with_urlmon(const std::wstring& url, const std::wstring& path);
void download_with_wininet(const std::wstring& url, const std::wstring& path);

} // namespace quill::bench
