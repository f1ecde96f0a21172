// Out parameters of calls into the host that fail: their values are neither used nor released.
#include "logging/exception_barriers.h"
#include "sharepoint/host/host_call.h"
#include "sharepoint/host/html_reading.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/crashes.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>
#include <ocidl.h>

#include <functional>
#include <stdexcept>

namespace quill::test {
namespace {

// Writes to its out parameters, then runs an action or returns a code.
template <class Interface>
struct writing_host : Interface
{
    std::function<HRESULT()> end;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

struct pointer_host : writing_host<IObjectWithSite>
{
    HRESULT STDMETHODCALLTYPE GetSite(REFIID, void** out) override
    {
        *out = this;
        return end();
    }
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown*) override { return E_NOTIMPL; }
};

struct value_host : writing_host<IPropertyBag>
{
    HRESULT STDMETHODCALLTYPE Read(const wchar_t*, VARIANT* out, IErrorLog*) override
    {
        out->vt = VT_UNKNOWN;
        out->punkVal = this;
        return end();
    }
    HRESULT STDMETHODCALLTYPE Write(const wchar_t*, VARIANT*) override { return E_NOTIMPL; }
};

struct OutParameters : testing::Test
{
    void get_both(std::function<HRESULT()> end)
    {
        pointer_.end = end;
        value_.end = std::move(end);
        pointer_result_ = result_of(
            [&] { return call_host(&pointer_, &IObjectWithSite::GetSite, IID_IUnknown, &pointer_out_); });
        value_result_ =
            result_of([&] { return call_host(&value_, &IPropertyBag::Read, L"x", &value_out_, nullptr); });
    }

    template <class Call>
    static HRESULT result_of(const Call& call)
    {
        return CrashBorder(call, E_UNEXPECTED);
    }

    log_capture log_;
    pointer_host pointer_;
    value_host value_;
    void* pointer_out_ = nullptr;
    VARIANT value_out_{};
    HRESULT pointer_result_ = S_OK;
    HRESULT value_result_ = S_OK;
};

TEST_F(OutParameters, OfACallThatSucceedsAreKept)
{
    get_both([] { return S_FALSE; });
    EXPECT_EQ(pointer_result_, S_FALSE);
    EXPECT_EQ(value_result_, S_FALSE);
    EXPECT_EQ(pointer_out_, &pointer_);
    EXPECT_EQ(value_out_.vt, VT_UNKNOWN);
}

TEST_F(OutParameters, OfACallThatFailsAreForgotten)
{
    get_both([] { return E_ABORT; });
    EXPECT_EQ(pointer_result_, E_ABORT);
    EXPECT_EQ(value_result_, E_ABORT);
    EXPECT_EQ(pointer_out_, nullptr);
    EXPECT_EQ(value_out_.vt, VT_EMPTY);
}

TEST_F(OutParameters, OfACallThatFaultsAreForgotten)
{
    get_both([] {
        read_nowhere();
        return S_OK;
    });
    EXPECT_EQ(pointer_result_, E_UNEXPECTED);
    EXPECT_EQ(value_result_, E_UNEXPECTED);
    EXPECT_EQ(pointer_out_, nullptr);
    EXPECT_EQ(value_out_.vt, VT_EMPTY);
}

// An attribute's value may be an object, whose Release is code of the page.
class AttributeValue : public testing::Test
{
protected:
    struct counted_value : IDispatch
    {
        int references = 0;
        void (*in_release)() = nullptr;

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
        ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
        ULONG STDMETHODCALLTYPE Release() override
        {
            --references;
            if (in_release)
                in_release();
            return static_cast<ULONG>(references);
        }
        HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                         UINT*) override
        {
            return E_NOTIMPL;
        }
    };

    // Reads an attribute inside a barrier; is_unwound_ says whether the frame's destructors ran.
    HRESULT read()
    {
        return CrashBorder(
            [&] {
                struct unwound
                {
                    bool& flag;
                    ~unwound() { flag = true; }
                } const frame{is_unwound_};
                const attribute_value value(element_, CComBSTR(L"href"));
                EXPECT_EQ(value.text(), L"");
                barrier::throw_if_handled();
                return S_OK;
            },
            E_UNEXPECTED);
    }

    log_capture log_;
    fake_tab tab_;
    CComPtr<fake_document> page_ = sharepoint_page(tab_, L"http://h/");
    fake_element* element_ = &page_->add_to_body(list_link(L"x"));
    counted_value object_;
    bool is_unwound_ = false;
};

TEST_F(AttributeValue, ThatIsAnObjectIsReleased)
{
    element_->href_object = &object_;
    EXPECT_EQ(read(), S_OK);
    EXPECT_EQ(object_.references, 0);
}

TEST_F(AttributeValue, WhoseReleaseFaultsFailsTheEntryAndUnwindsIt)
{
    element_->href_object = &object_;
    object_.in_release = [] { read_nowhere(); };
    EXPECT_EQ(read(), E_UNEXPECTED);
    EXPECT_EQ(object_.references, 0);
    EXPECT_TRUE(is_unwound_);
}

TEST_F(AttributeValue, WhoseReleaseThrowsIsLogged)
{
    element_->href_object = &object_;
    object_.in_release = [] { throw std::runtime_error("in Release"); };
    EXPECT_EQ(read(), S_OK);
    EXPECT_EQ(object_.references, 0);
    EXPECT_FALSE(log_.lines().empty());
}

} // namespace
} // namespace quill::test
