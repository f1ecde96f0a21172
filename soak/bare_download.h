// A download without the module, through the same service: what the system itself keeps of each.
#pragma once

#include "soak/document_world.h"

#include <string>

namespace quill::soak {

// Fetches the URL into the file on a thread of its own and waits for the thread's end; the calling thread's
// messages are delivered meanwhile.
void download_barely(download_path path, const std::wstring& url, const std::wstring& file);

} // namespace quill::soak
