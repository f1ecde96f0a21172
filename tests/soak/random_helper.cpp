#include "tests/soak/random_helper.h"

#include <windows.h>

#include <exdispid.h>
#include <gtest/gtest.h>

namespace quill::soak {
namespace {

using test::make_fake;

constexpr CLSID helper_class_id = {
    0x8d41f0b2, 0x6c7a, 0x4e93, {0xb5, 0xd8, 0x2a, 0x0f, 0x19, 0xc6, 0xe4, 0xd7}};
constexpr DISPID on_click = -600;
constexpr DISPID on_ready_state_change = -609;

// One event of a host that follows no rules.
void invoke(random_source& random, IDispatch* sink, DISPID event, std::vector<VARIANT> arguments)
{
    DISPPARAMS parameters{};
    parameters.rgvarg = arguments.empty() ? nullptr : arguments.data();
    parameters.cArgs = static_cast<UINT>(arguments.size());
    CComVariant result;
    UINT bad = 0;
    sink->Invoke(event, random.chance(6) ? IID_IUnknown : IID_NULL, LOCALE_USER_DEFAULT,
                 random.one_of<WORD>({DISPATCH_METHOD, DISPATCH_METHOD, DISPATCH_PROPERTYGET, 0}),
                 random.chance(12) ? nullptr : &parameters, random.chance(3) ? nullptr : &result, nullptr,
                 random.chance(3) ? nullptr : &bad);
}

} // namespace

random_helper::random_helper(const test::module_under_test& module, random_source& random,
                             test::fake_tab& tab)
    : random_(random), tab_(tab), browser_(make_fake<test::fake_browser>(tab))
{
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(module.get_class_object(helper_class_id, IID_PPV_ARGS(&factory)), S_OK);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&helper_)), S_OK);
    tab_.fail_call(static_cast<int>(1 + random_.below(200)),
                   random_.chance(2) ? test::fake_tab::failure::error : test::fake_tab::failure::empty);
}

random_helper::~random_helper()
{
    helper_->SetSite(nullptr);
}

const char* random_helper::step()
{
    switch (random_.below(8)) {
    case 0:
        return set_site();
    case 1:
    case 2:
        return change_page();
    case 3:
        return change_browser();
    case 4:
    case 5:
        return fire_at_page_sink();
    default:
        return fire_at_browser_sink();
    }
}

const char* random_helper::set_site()
{
    const auto other = make_fake<test::fake_document>(tab_, L"http://other/");
    switch (random_.below(6)) {
    case 0:
        helper_->SetSite(nullptr);
        break;
    case 1:
        helper_->SetSite(other->dispatch()); // no browser
        break;
    case 2:
        helper_->SetSite(helper_); // nothing that a browser would do
        helper_->SetSite(nullptr);
        break;
    default:
        helper_->SetSite(browser_->unknown());
    }
    CComPtr<IUnknown> site;
    helper_->GetSite(random_.chance(3) ? IID_IDispatch : IID_IUnknown, reinterpret_cast<void**>(&site));
    EXPECT_EQ(helper_->GetSite(IID_IUnknown, nullptr), E_POINTER);
    return "SetSite";
}

const char* random_helper::change_browser()
{
    browser_->is_browser = !random_.chance(6);
    browser_->is_top_level = random_.chance(4) ? VARIANT_FALSE : VARIANT_TRUE;
    browser_->document =
        pages_.empty() || random_.chance(4) ? nullptr : pages_[random_.below(pages_.size())]->dispatch();
    return "change the browser";
}

const char* random_helper::change_page()
{
    if (pages_.size() < 6) {
        auto page = random_.chance(3) ? make_fake<test::fake_document>(tab_, L"http://plain/")
                                      : test::sharepoint_page(tab_, L"http://h/list");
        page->add_to_body(test::list_link(
            random_.one_of<std::wstring>({L"http://h/x.pdf", L"/x.pdf", L"x", L"", L"http://h/\xD800.pdf",
                                          std::wstring(5'000, L'/') + L".pdf"})));
        page->add_to_body({.tag = random_.one_of<std::wstring>({L"A", L"a", L"", L"DIV"}),
                           .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">",
                           .href = L"/y.pdf"});
        pages_.push_back(std::move(page));
    }
    auto& page = pages_[random_.below(pages_.size())];
    page->is_html = !random_.chance(8);
    page->has_document3 = !random_.chance(8);
    page->has_root = !random_.chance(8);
    page->has_head = !random_.chance(8);
    page->has_events = !random_.chance(8);
    page->head->has_element2 = !random_.chance(3);
    browser_->document = page->dispatch();
    return "change a page";
}

// Values of any type; by-reference ones point to a member of this object.
std::vector<VARIANT> random_helper::any_arguments(IDispatch* likely)
{
    std::vector<VARIANT> arguments(random_.below(9));
    for (VARIANT& argument : arguments) {
        argument = {};
        CComVariant& target = referred_[random_.below(std::size(referred_))];
        switch (random_.below(8)) {
        case 0:
            target = random_.one_of<const wchar_t*>({L"http://h/x.pdf", L"", L"\xD800", L"/x.pdf"});
            break;
        case 1:
            target = static_cast<IDispatch*>(likely);
            break;
        case 2:
            target = static_cast<long>(random_.number());
            break;
        default:
            break;
        }
        switch (random_.below(6)) {
        case 0:
            argument.vt = VT_DISPATCH;
            argument.pdispVal = random_.chance(3) ? nullptr : likely;
            break;
        case 1:
        case 2:
            argument.vt = VT_BYREF | VT_VARIANT;
            argument.pvarVal = random_.chance(6) ? nullptr : &target;
            break;
        case 3:
            argument.vt = VT_BYREF | VT_BOOL;
            argument.pboolVal = random_.chance(6) ? nullptr : &flag_;
            break;
        case 4:
            argument.vt = random_.one_of<VARTYPE>({VT_EMPTY, VT_NULL, VT_I4, VT_ERROR, VT_R8, VT_BOOL});
            argument.lVal = random_.number();
            break;
        default:
            argument = target; // owned by the target
        }
    }
    return arguments;
}

const char* random_helper::fire_at_browser_sink()
{
    const CComPtr<IDispatch> sink = browser_->events().first_sink();
    if (!sink)
        return "no sink";
    if (random_.chance(2)) {
        invoke(random_, sink,
               random_.one_of<DISPID>(
                   {DISPID_BEFORENAVIGATE2, DISPID_DOCUMENTCOMPLETE, DISPID_ONQUIT, 0, -1, random_.number()}),
               any_arguments(static_cast<IWebBrowser2*>(browser_.p)));
        return "a wild event";
    }
    test::before_navigate_arguments arguments(
        static_cast<IWebBrowser2*>(browser_.p),
        random_.one_of<std::wstring>({L"http://h/x.pdf", L"/x.pdf", L"", L"http://h/other"}));
    if (random_.chance(3))
        arguments.cancel = random_.one_of<VARIANT_BOOL>({VARIANT_TRUE, 1, VARIANT_FALSE});
    if (random_.chance(3))
        arguments.post_data = random_.number();
    arguments.fire_at(sink);
    if (!random_.chance(3) && browser_->events().sinks() == 1)
        browser_->document_complete(L"http://h/list");
    return "events";
}

const char* random_helper::fire_at_page_sink()
{
    if (pages_.empty())
        return "no page";
    auto& page = pages_[random_.below(pages_.size())];
    const CComPtr<IDispatch> sink = page->events().first_sink();
    if (!sink)
        return "no sink";
    page->ready_state = random_.one_of<std::wstring>({L"complete", L"loading", L"", L"Complete"});
    if (random_.chance(2)) {
        invoke(random_, sink, random_.one_of<DISPID>({on_click, on_ready_state_change, 0, random_.number()}),
               any_arguments(page->dispatch()));
        return "a wild page event";
    }
    auto& element = page->add_to_body(test::list_link(L"http://h/x.pdf"));
    element.is_element = !random_.chance(5);
    const auto event = make_fake<test::fake_event>(tab_, random_.chance(6) ? nullptr : &element);
    event->is_event = !random_.chance(6);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    invoke(random_, sink, random_.chance(4) ? on_ready_state_change : on_click, {argument});
    return "a click";
}

} // namespace quill::soak
