// Downloads without anything around them: what the document's are measured against.
#pragma once

#include <windows.h>

#include <string>

namespace quill::bench {

// Both fetch url into the file at path, on the calling thread. Throw std::runtime_error when that fails.
void download_with_urlmon(const std::wstring& url, const std::wstring& path);
// report_to: told of each read by WM_USER_PROGRESS, and before each an event is looked at, as a download has
// to that can be stopped; neither when it is null.
void download_with_wininet(const std::wstring& url, const std::wstring& path, HWND report_to);

} // namespace quill::bench
