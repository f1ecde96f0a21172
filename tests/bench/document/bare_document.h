// The indispensable work of opening a downloaded document: its windows, its thread, the messages between the
// two, the download and a check of the file.
#pragma once

#include <windows.h>

#include <string>

namespace quill::bench {

// Opens the document at url in a child window of parent and closes it. folder: gets a new folder for the
// file. Returns the time until a viewer could open the file, in nanoseconds; throws std::runtime_error. The
// calling thread must have initialised OLE; its messages are dispatched.
double open_bare_document(HWND parent, const std::wstring& url, const std::wstring& folder);

} // namespace quill::bench
