// The page around a document as the browser shows it to the document: site, container, HTML document,
// elements and their collections as strict COM objects. A call that the page does not expect fails the test,
// and each call of a sequence can be made to fail.
#pragma once

#include "tests/support/fakes/call_log.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <oleidl.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace quill::test {

struct page_element
{
    // The value of an attribute: text, or another type without a value. VT_NULL if it is absent.
    struct attribute
    {
        std::optional<std::wstring> text;
        VARTYPE other_type = VT_NULL;
    };

    std::wstring tag;
    std::map<std::wstring, attribute> attributes;
    std::wstring outer_html = L"<no source>";
    std::vector<std::size_t> children; // indexes of fake_page::elements
};

// What a call that fails may leave in its out parameter: fails the test if it is used or released.
IUnknown* untouchable();

// Outlives the objects that it returns; live() is the number of references to them.
class fake_page
{
public:
    fake_page();
    ~fake_page(); // all references must be released then
    fake_page(const fake_page&) = delete;
    fake_page& operator=(const fake_page&) = delete;

    // Adds an element to the body, or to the element at parent.
    std::size_t add(page_element element, std::size_t parent = 0);
    std::size_t add_plain(const wchar_t* tag, std::size_t parent = 0);
    // An element with some of the attributes of an embedded document; nullptr for an absent one.
    std::size_t add_embedded(const wchar_t* tag, const wchar_t* type, const wchar_t* reference,
                             std::size_t parent = 0);

    std::wstring url = L"http://h/page.html";
    std::vector<page_element> elements; // the first one is the body
    bool has_container = true;
    bool is_html = true;
    bool has_body = true;
    std::optional<long> length; // returned by every collection instead of its length

    // The site of a document in this page; borrowed.
    IOleClientSite* site();

    // Every call by its short name, QueryInterface included.
    call_log calls{unlisted_calls::allow};
    // References held to the page's objects.
    long live() const { return live_; }

    // For the page's objects: records a call and fills its out parameter as a fault wants it. S_OK if the
    // caller has to fill it, S_FALSE if the method succeeds without a result, or its error.
    template <typename Out>
    HRESULT enter(const char* call, Out* out)
    {
        EXPECT_EQ(*out, Out{}) << call << ": the out parameter is not initialised";
        const call_fault fault = calls.arrive(call);
        if (fault == call_fault::null_result)
            *out = Out{};
        // Strings are excluded: the caller frees them whatever the result.
        if constexpr (std::is_pointer_v<Out> && !std::is_same_v<Out, BSTR>)
            if (fault == call_fault::error_with_value)
                *out = reinterpret_cast<Out>(untouchable());
        return result_of(fault);
    }
    static HRESULT result_of(call_fault fault)
    {
        return is_error(fault) ? E_FAIL : fault == call_fault::none ? S_OK : S_FALSE;
    }
    void count(long change) { live_ += change; }

private:
    struct site_object;

    long live_ = 0;
    site_object* site_;
};

} // namespace quill::test
