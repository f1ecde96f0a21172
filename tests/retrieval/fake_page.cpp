#include "tests/retrieval/fake_page.h"

#include "tests/support/fakes/com_object.h"

#include <docobj.h>
#include <exdisp.h>
#include <gtest/gtest.h>
#include <mshtml.h>
#include <ocidl.h>
#include <oleidl.h>
#include <unimplemented_interfaces.h>

#include <algorithm>
#include <utility>

namespace quill::test {
namespace {

// An object of the page. Others: further interfaces, the bases of the interfaces that it implements.
template <typename Base, typename... Others>
class page_object : public heap_object<Base>
{
public:
    explicit page_object(fake_page& page) : page_(page) { page_.count(1); }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        if (const HRESULT result = page_.enter("QueryInterface", out); result != S_OK)
            return result == S_FALSE ? S_OK : result;
        return heap_object<Base>::QueryInterface(iid, out);
    }
    STDMETHODIMP_(ULONG) AddRef() override
    {
        page_.count(1);
        return heap_object<Base>::AddRef();
    }
    STDMETHODIMP_(ULONG) Release() override
    {
        page_.count(-1);
        return heap_object<Base>::Release();
    }

protected:
    IUnknown* find(REFIID iid) override
    {
        const bool is_other = ((iid == __uuidof(Others)) || ...);
        return is_other ? this->unknown() : heap_object<Base>::find(iid);
    }
    // Runs give(), which returns the value of *out, unless this call fails.
    template <typename Out, typename Give>
    HRESULT answer(const char* call, Out* out, const Give& give)
    {
        const HRESULT result = page_.enter(call, out);
        if (result == S_OK)
            *out = give();
        return result == S_FALSE ? S_OK : result;
    }

    fake_page& page_;
};

class element_object : public page_object<without_IHTMLElement<IHTMLElement>, IDispatch>
{
public:
    element_object(fake_page& page, std::size_t place) : page_object(page), place_(place) {}

    STDMETHODIMP get_tagName(BSTR* out) override
    {
        return answer("tagName", out, [&] { return SysAllocString(self().tag.c_str()); });
    }
    STDMETHODIMP get_outerHTML(BSTR* out) override
    {
        return answer("outerHTML", out, [&] { return SysAllocString(self().outer_html.c_str()); });
    }
    STDMETHODIMP getAttribute(BSTR name, LONG flags, VARIANT* out) override
    {
        EXPECT_EQ(flags, 2);
        EXPECT_EQ(V_VT(out), VT_EMPTY);
        const std::wstring wanted(name, SysStringLen(name));
        EXPECT_TRUE(wanted == L"TYPE" || wanted == (self().tag[0] == L'E' ? L"SRC" : L"DATA"));
        const call_fault fault = page_.calls.arrive(wanted == L"TYPE" ? "TYPE" : "reference");
        if (fault == call_fault::null_result)
            V_VT(out) = VT_NULL;
        if (fault == call_fault::error_with_value) {
            V_VT(out) = VT_UNKNOWN;
            V_UNKNOWN(out) = untouchable();
        }
        const HRESULT result = fake_page::result_of(fault);
        if (result != S_OK)
            return result == S_FALSE ? S_OK : result;
        const auto found = self().attributes.find(wanted);
        const page_element::attribute value =
            found == self().attributes.end() ? page_element::attribute{} : found->second;
        V_VT(out) = value.text ? static_cast<VARTYPE>(VT_BSTR) : value.other_type;
        if (value.text)
            V_BSTR(out) = SysAllocString(value.text->c_str());
        return S_OK;
    }
    STDMETHODIMP get_children(IDispatch** out) override;

private:
    const page_element& self() const { return page_.elements[place_]; }

    std::size_t place_;
};

class collection_object
    : public page_object<without_IHTMLElementCollection<IHTMLElementCollection>, IDispatch>
{
public:
    collection_object(fake_page& page, std::size_t place) : page_object(page), place_(place) {}

    STDMETHODIMP get_length(LONG* out) override
    {
        return answer("length", out,
                      [&] { return page_.length.value_or(static_cast<LONG>(children().size())); });
    }
    STDMETHODIMP item(VARIANT name, VARIANT index, IDispatch** out) override
    {
        EXPECT_EQ(V_VT(&name), VT_I4);
        EXPECT_EQ(V_VT(&index), VT_I4);
        EXPECT_EQ(V_I4(&name), V_I4(&index));
        const auto place = static_cast<std::size_t>(V_I4(&index));
        EXPECT_LT(place, children().size());
        return answer("item", out,
                      [&]() -> IDispatch* { return new element_object(page_, children()[place]); });
    }

private:
    const std::vector<std::size_t>& children() const { return page_.elements[place_].children; }

    std::size_t place_;
};

HRESULT element_object::get_children(IDispatch** out)
{
    return answer("children", out, [&]() -> IDispatch* { return new collection_object(page_, place_); });
}

class document_object : public page_object<without_IHTMLDocument2<IHTMLDocument2>, IDispatch, IHTMLDocument>
{
public:
    using page_object::page_object;

    STDMETHODIMP get_body(IHTMLElement** out) override
    {
        return answer("body", out, [&]() -> IHTMLElement* {
            return page_.has_body ? new element_object(page_, 0) : nullptr;
        });
    }
    STDMETHODIMP get_URL(BSTR* out) override
    {
        return answer("URL", out, [&] { return SysAllocString(page_.url.c_str()); });
    }
};

// The document is a separate object, which is found through its container.
class container_object : public page_object<without_IOleContainer<IOleContainer>, IParseDisplayName>
{
public:
    using page_object::page_object;

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        if (iid != IID_IHTMLDocument2)
            return page_object::QueryInterface(iid, out);
        const HRESULT result = page_.enter("QueryInterface", out);
        if (result != S_OK)
            return result == S_FALSE ? S_OK : result;
        if (!page_.is_html)
            return E_NOINTERFACE;
        *out = static_cast<IHTMLDocument2*>(new document_object(page_));
        return S_OK;
    }
};

} // namespace

struct fake_page::site_object : page_object<without_IOleClientSite<IOleClientSite>>
{
    using page_object::page_object;

    STDMETHODIMP GetContainer(IOleContainer** out) override
    {
        EXPECT_EQ(*out, nullptr);
        if (!page_.has_container) {
            page_.calls.arrive("GetContainer");
            return E_NOTIMPL; // leaves *out untouched, as real hosts do
        }
        return answer("GetContainer", out, [&]() -> IOleContainer* { return new container_object(page_); });
    }
};

fake_page::fake_page() : elements(1), site_(new site_object(*this))
{
    elements.front().tag = L"BODY";
    live_ = 0; // without the reference of the page itself
}

fake_page::~fake_page()
{
    EXPECT_EQ(live_, 0) << "references are still held";
    site_->Release();
}

std::size_t fake_page::add(page_element element, std::size_t parent)
{
    elements.push_back(std::move(element));
    elements[parent].children.push_back(elements.size() - 1);
    return elements.size() - 1;
}

std::size_t fake_page::add_plain(const wchar_t* tag, std::size_t parent)
{
    page_element element;
    element.tag = tag;
    return add(std::move(element), parent);
}

std::size_t fake_page::add_embedded(const wchar_t* tag, const wchar_t* type, const wchar_t* reference,
                                    std::size_t parent)
{
    page_element element;
    element.tag = tag;
    if (type)
        element.attributes[L"TYPE"].text = type;
    if (reference)
        element.attributes[element.tag[0] == L'E' ? L"SRC" : L"DATA"].text = reference;
    return add(std::move(element), parent);
}

IOleClientSite* fake_page::site()
{
    return site_;
}

IUnknown* untouchable()
{
    struct object final : IUnknown
    {
        STDMETHODIMP QueryInterface(REFIID, void** out) override
        {
            ADD_FAILURE() << "a failed call's value is queried for an interface";
            *out = nullptr;
            return E_NOINTERFACE;
        }
        STDMETHODIMP_(ULONG) AddRef() override
        {
            ADD_FAILURE() << "a failed call's value is referenced";
            return 2;
        }
        STDMETHODIMP_(ULONG) Release() override
        {
            ADD_FAILURE() << "a failed call's value is released";
            return 1;
        }
    };
    static object instance;
    return &instance;
}

} // namespace quill::test
