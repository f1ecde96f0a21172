// The threading models that a class chooses between: how counts change and what its lock is.
#pragma once

#include "atl/atlcore.h"

namespace ATL {

class CComMultiThreadModelNoCS
{
public:
    static ULONG WINAPI Increment(LPLONG p) noexcept { return static_cast<ULONG>(InterlockedIncrement(p)); }
    static ULONG WINAPI Decrement(LPLONG p) noexcept { return static_cast<ULONG>(InterlockedDecrement(p)); }
    using AutoCriticalSection = CComFakeCriticalSection;
    using AutoDeleteCriticalSection = CComFakeCriticalSection;
    using CriticalSection = CComFakeCriticalSection;
    using ThreadModelNoCS = CComMultiThreadModelNoCS;
};

class CComMultiThreadModel
{
public:
    static ULONG WINAPI Increment(LPLONG p) noexcept { return static_cast<ULONG>(InterlockedIncrement(p)); }
    static ULONG WINAPI Decrement(LPLONG p) noexcept { return static_cast<ULONG>(InterlockedDecrement(p)); }
    using AutoCriticalSection = CComAutoCriticalSection;
    using AutoDeleteCriticalSection = CComSafeDeleteCriticalSection;
    using CriticalSection = CComCriticalSection;
    using ThreadModelNoCS = CComMultiThreadModelNoCS;
};

// For objects that live in one apartment with one thread.
class CComSingleThreadModel
{
public:
    static ULONG WINAPI Increment(LPLONG p) noexcept { return static_cast<ULONG>(++*p); }
    static ULONG WINAPI Decrement(LPLONG p) noexcept { return static_cast<ULONG>(--*p); }
    using AutoCriticalSection = CComFakeCriticalSection;
    using AutoDeleteCriticalSection = CComFakeCriticalSection;
    using CriticalSection = CComFakeCriticalSection;
    using ThreadModelNoCS = CComSingleThreadModel;
};

// Objects of the module live in single-threaded apartments, of which there may be several: what they
// share, the module's lock count first of all, is for many threads.
using CComObjectThreadModel = CComSingleThreadModel;
using CComGlobalsThreadModel = CComMultiThreadModel;

} // namespace ATL
