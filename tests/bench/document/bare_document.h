// What the opening of a fetched document cannot do without, made bare: its windows, its thread, the messages
// between the two, the download and a look at the file.
#pragma once

#include <windows.h>

#include <string>

namespace quill::bench {

// Opens the document at url in a child window of parent and closes it. folder: where its file goes, in a
// folder of its own. Returns the time up to the moment when a viewer could open the file, in nanoseconds;
// throws std::runtime_error. The calling thread must have started OLE; its messages are pumped.
double open_bare_document(HWND parent, const std::wstring& url, const std::wstring& folder);

} // namespace quill::bench
