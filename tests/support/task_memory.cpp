#include "tests/support/task_memory.h"

#include <windows.h>

#include <objbase.h>

extern "C" void STDAPICALLTYPE SetOaNoCache();

namespace quill::test {
namespace {

// Never destroyed: the system does not release a spy while blocks that it has seen are allocated.
class allocation_counter final : public IMallocSpy
{
public:
    long outstanding() const { return InterlockedCompareExchange(&outstanding_, 0, 0); }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        *out = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IMallocSpy) ? this : nullptr;
        return *out ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override { return size; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override
    {
        if (block)
            InterlockedIncrement(&outstanding_);
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL) override { return block; }
    STDMETHODIMP_(void) PostFree(BOOL counted) override
    {
        if (counted)
            InterlockedDecrement(&outstanding_);
    }
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T size, void** actual, BOOL) override
    {
        *actual = block;
        return size;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL) override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int actual) override { return actual; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

private:
    mutable LONG outstanding_ = 0;
};

} // namespace

long outstanding_task_memory()
{
    static allocation_counter counter;
    static const bool counting = [] {
        SetOaNoCache(); // frees strings at once instead of caching them
        return CoRegisterMallocSpy(&counter) == S_OK;
    }();
    return counting ? counter.outstanding() : 0;
}

} // namespace quill::test
