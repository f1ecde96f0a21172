// Downloads without a document, the baselines of the document's downloads.
#pragma once

#include <windows.h>

#include <string>

namespace quill::bench {

// Both fetch url into the file at path, on the calling thread. Throw std::runtime_error on failure.
void download_with_urlmon(const std::wstring& url, const std::wstring& path);
// report_to: gets WM_USER_PROGRESS for each read, and an event is polled before each read, as a cancellable
// download requires; neither if it is nullptr.
void download_with_wininet(const std::wstring& url, const std::wstring& path, HWND report_to);

} // namespace quill::bench
