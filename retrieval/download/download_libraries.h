// The system's libraries that fetch a document.
#pragma once

namespace quill {

// Keeps them in the process until it ends. A download that is broken off leaves threads of theirs behind,
// which wait for the server and then go on; in a host that uses them for nothing else they would be unmapped
// together with this module, under those threads. A browser has them loaded all the time. Any thread, any
// number of times.
void KeepDownloadLibraries() noexcept;

} // namespace quill
