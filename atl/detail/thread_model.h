// Threading models: how a class counts references and which lock it uses.
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

// For objects that are used in one single-threaded apartment.
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

// Objects are used in single-threaded apartments, of which the process may have several: shared state, such
// as the module's lock count, must be thread-safe.
using CComObjectThreadModel = CComSingleThreadModel;
using CComGlobalsThreadModel = CComMultiThreadModel;

} // namespace ATL
