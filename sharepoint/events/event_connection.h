// Connects event sinks to the connection points of the host's objects. Used by both sinks.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>

namespace quill {

// Replaces the sink's DispEventAdvise and DispEventUnadvise: calls the host through call_host.
HRESULT advise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events);
// Exceptions of the host are logged.
void unadvise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events) noexcept;

} // namespace quill
