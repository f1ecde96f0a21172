// The connection of an event sink to a host object's connection point.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>

namespace quill {

// As the sink's DispEventAdvise and DispEventUnadvise, with each call into the host as guarded code makes it.
HRESULT advise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events);
// Lets no exception out; what the host throws is logged.
void unadvise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events) noexcept;

} // namespace quill
