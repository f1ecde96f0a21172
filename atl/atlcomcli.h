// For clients of COM: smart pointers, strings, variants, connection points.
#pragma once

#include "atl/atldef.h"
#include "atl/detail/com_bstr.h"
#include "atl/detail/com_ptr.h"
#include "atl/detail/com_variant.h"

namespace ATL {

// Advises `sink` on the connection point `iid` of `source`. The cookie is 0 on failure.
ATLAPI AtlAdvise(IUnknown* source, IUnknown* sink, const IID& iid, LPDWORD cookie);
ATLAPI AtlUnadvise(IUnknown* source, const IID& iid, DWORD cookie);

inline bool InlineIsEqualUnknown(REFGUID guid) noexcept
{
    return IsEqualGUID(guid, IID_IUnknown);
}

} // namespace ATL

#ifndef _ATL_NO_AUTOMATIC_NAMESPACE
using namespace ATL;
#endif
