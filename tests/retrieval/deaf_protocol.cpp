#include "tests/retrieval/deaf_protocol.h"

#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

template <class Interface>
class counted : public Interface
{
public:
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    virtual ~counted() = default;

    HRESULT give(REFIID iid, std::initializer_list<IID> known, void** object)
    {
        *object = nullptr;
        for (const IID& each : known) {
            if (iid != each)
                continue;
            *object = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        }
        return E_NOINTERFACE;
    }

private:
    std::atomic<ULONG> references_ = 1;
};

class handler final : public counted<IInternetProtocol>
{
public:
    explicit handler(const std::wstring& path) : path_(path), body_(read_file(path).value_or("")) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        return give(iid, {IID_IUnknown, IID_IInternetProtocolRoot, IID_IInternetProtocol}, object);
    }

    // Everything at once. What the sink answers is what this protocol is deaf to.
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
    ~handler() override = default;

    const std::wstring path_;
    const std::string body_;
    std::size_t position_ = 0;
};

class factory final : public counted<IClassFactory>
{
public:
    explicit factory(const std::wstring& path) : path_(path) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        return give(iid, {IID_IUnknown, IID_IClassFactory}, object);
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        *object = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        ComPtr<IInternetProtocol> made;
        made.Attach(new handler(path_));
        return made->QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    ~factory() override = default;

    const std::wstring path_;
};

} // namespace

deaf_protocol::deaf_protocol(const std::wstring& path)
{
    factory_.Attach(new factory(path));
    EXPECT_EQ(CoInternetGetSession(0, &session_, 0), S_OK);
    EXPECT_EQ(session_->RegisterNameSpace(factory_.Get(), CLSID_NULL, deaf_scheme, 0, nullptr, 0), S_OK);
}

deaf_protocol::~deaf_protocol()
{
    session_->UnregisterNameSpace(factory_.Get(), deaf_scheme);
}

} // namespace quill::test
