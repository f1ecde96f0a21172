// A hosting page as the browser shows it to a document inside: site, container, document, elements and
// their collections as strict COM objects with true reference counts. What the page does not have fails
// the test, and any call of the sequence can be made to fail.
#pragma once

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

struct fake_element
{
    // An attribute's value: text, or a number for values that are no text. Absent ones are VT_NULL.
    struct attribute
    {
        std::optional<std::wstring> text;
        VARTYPE other_type = VT_NULL;
    };

    std::wstring tag;
    std::map<std::wstring, attribute> attributes;
    std::wstring outer_html = L"<no source>";
    std::vector<std::size_t> children; // places in fake_page::elements
};

// How a call goes wrong.
enum class fault
{
    error,               // it fails
    error_leaving_value, // it fails with a value in its out argument, which is not the caller's
    null_result,         // it succeeds and gives nothing
    untouched            // it succeeds and leaves its out argument as it was
};

// What a failed call may leave: fails the test when it is used or released.
IUnknown* untouchable();

// The page outlives what it hands out; live() tells how much of that is still held.
class fake_page
{
public:
    fake_page();
    ~fake_page(); // nothing may be held then
    fake_page(const fake_page&) = delete;
    fake_page& operator=(const fake_page&) = delete;

    // Adds an element to the body, or to the element at parent.
    std::size_t add(fake_element element, std::size_t parent = 0);
    std::size_t add_plain(const wchar_t* tag, std::size_t parent = 0);
    // An element with some of the attributes of an embedded document; null for an absent one.
    std::size_t add_embedded(const wchar_t* tag, const wchar_t* type, const wchar_t* reference,
                             std::size_t parent = 0);

    std::wstring url = L"http://h/page.html";
    std::vector<fake_element> elements; // the first one is the body
    bool has_container = true;
    bool is_html = true;
    bool has_body = true;
    std::optional<long> length; // what every collection says instead of its length

    // The call, counted from 1, that goes wrong; 0 for none.
    std::size_t faulty_call = 0;
    fault how = fault::error;

    // The site of a document in this page, without a reference for the caller.
    IOleClientSite* site();

    // The calls so far, QueryInterface included.
    const std::vector<std::string>& calls() const { return calls_; }
    // References held to the page's objects.
    long live() const { return live_; }
    void forget_calls() { calls_.clear(); }

    // For the page's objects: counts a call. S_OK, S_FALSE for one that succeeds without a result, or the
    // error.
    HRESULT enter(const char* call);
    // The same for a call that hands something out: what is left to do is filling *out when S_OK came back.
    template <typename Out>
    HRESULT enter(const char* call, Out* out)
    {
        EXPECT_EQ(*out, Out{}) << call << " fills a variable that is not cleared";
        const HRESULT result = enter(call);
        if (result == S_FALSE && how == fault::null_result)
            *out = Out{};
        // Texts are left out: they are freed without being asked.
        if constexpr (std::is_pointer_v<Out> && !std::is_same_v<Out, BSTR>)
            if (FAILED(result) && how == fault::error_leaving_value)
                *out = reinterpret_cast<Out>(untouchable());
        return result;
    }
    void count(long change) { live_ += change; }

private:
    struct site_object;

    std::vector<std::string> calls_;
    long live_ = 0;
    site_object* site_;
};

} // namespace quill::test
