#include "tests/retrieval/unabortable_protocol.h"

#include "tests/support/adopt.h"
#include "tests/support/fakes/com_object.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <cstring>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

class handler final : public heap_object<IInternetProtocol>
{
public:
    explicit handler(const std::wstring& path) : path_(path), body_(read_file(path).value_or("")) {}

    // Reports everything at once and ignores the results of the sink.
    STDMETHODIMP Start(LPCWSTR, IInternetProtocolSink* sink, IInternetBindInfo*, DWORD, HANDLE_PTR) override
    {
        const auto size = static_cast<ULONG>(body_.size());
        const ComPtr<IInternetProtocolSink> keep(sink);
        sink->ReportProgress(BINDSTATUS_CONNECTING, L"host");
        sink->ReportProgress(BINDSTATUS_MIMETYPEAVAILABLE, L"application/pdf");
        sink->ReportProgress(BINDSTATUS_CACHEFILENAMEAVAILABLE, path_.c_str());
        sink->ReportData(BSCF_FIRSTDATANOTIFICATION | BSCF_LASTDATANOTIFICATION | BSCF_DATAFULLYAVAILABLE,
                         size, size);
        sink->ReportResult(S_OK, 0, nullptr);
        return S_OK;
    }
    STDMETHODIMP Continue(PROTOCOLDATA*) override { return S_OK; }
    STDMETHODIMP Abort(HRESULT, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Terminate(DWORD) override { return S_OK; }
    STDMETHODIMP Suspend() override { return E_NOTIMPL; }
    STDMETHODIMP Resume() override { return E_NOTIMPL; }

    STDMETHODIMP Read(void* buffer, ULONG size, ULONG* read) override
    {
        const std::size_t count = body_.copy(static_cast<char*>(buffer), size, position_);
        position_ += count;
        *read = static_cast<ULONG>(count);
        return position_ == body_.size() ? S_FALSE : S_OK;
    }
    STDMETHODIMP Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    STDMETHODIMP LockRequest(DWORD) override { return S_OK; }
    STDMETHODIMP UnlockRequest() override { return S_OK; }

private:
    IUnknown* find(REFIID iid) override
    {
        return iid == IID_IInternetProtocolRoot ? unknown() : heap_object::find(iid);
    }

    const std::wstring path_;
    const std::string body_;
    std::size_t position_ = 0;
};

class factory final : public heap_object<IClassFactory>
{
public:
    explicit factory(const std::wstring& path) : path_(path) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        *object = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        const auto made = adopt<IInternetProtocol>(new handler(path_));
        return made->QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    const std::wstring path_;
};

} // namespace

unabortable_protocol::unabortable_protocol(const std::wstring& path)
{
    factory_ = adopt<IClassFactory>(new factory(path));
    EXPECT_EQ(CoInternetGetSession(0, &session_, 0), S_OK);
    EXPECT_EQ(session_->RegisterNameSpace(factory_.Get(), CLSID_NULL, unabortable_scheme, 0, nullptr, 0),
              S_OK);
}

unabortable_protocol::~unabortable_protocol()
{
    session_->UnregisterNameSpace(factory_.Get(), unabortable_scheme);
}

} // namespace quill::test
