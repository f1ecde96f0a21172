// Event sinks: connections, and handlers called through the type libraries of the browser and of its
// documents.
#include "tests/framework/event_source.h"
#include "tests/framework/framework_module.h"

#include <exdisp.h>
#include <exdispid.h>
#include <gtest/gtest.h>
#include <mshtmdid.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quill::test {
namespace {

constexpr GUID browser_library = {
    0xEAB22AC0, 0x30C1, 0x11CF, {0xA7, 0xEB, 0x00, 0x00, 0xC0, 0x5B, 0xAE, 0x0B}};
constexpr GUID page_library = {0x3050F1C5, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};
constexpr IID browser_events = {0x34A715A0, 0x6587, 0x11D0, {0x92, 0x4A, 0x00, 0x20, 0xAF, 0xC7, 0xAC, 0x4D}};
constexpr IID page_events = {0x3050F613, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};

int living = 0;

// Two sinks in one object, as for a page and its browser.
class watcher : public CComObjectRootEx<CComSingleThreadModel>,
                public IUnknown,
                public IDispEventImpl<1, watcher, &browser_events, &browser_library, 1, 1>,
                public IDispEventImpl<2, watcher, &page_events, &page_library, 4, 0>
{
public:
    using browser_sink = IDispEventImpl<1, watcher, &browser_events, &browser_library, 1, 1>;
    using page_sink = IDispEventImpl<2, watcher, &page_events, &page_library, 4, 0>;

    watcher() { ++living; }
    ~watcher() { --living; }
    watcher(const watcher&) = delete;
    watcher& operator=(const watcher&) = delete;

    BEGIN_COM_MAP(watcher)
    COM_INTERFACE_ENTRY(IUnknown)
    END_COM_MAP()

    BEGIN_SINK_MAP(watcher)
    SINK_ENTRY_EX(1, browser_events, DISPID_BEFORENAVIGATE2, &watcher::on_before_navigate)
    SINK_ENTRY_EX(1, browser_events, DISPID_DOCUMENTCOMPLETE, &watcher::on_document_complete)
    SINK_ENTRY_EX(1, browser_events, DISPID_ONQUIT, &watcher::on_quit)
    SINK_ENTRY_EX(1, browser_events, DISPID_TITLECHANGE, &watcher::on_wrong_count)
    SINK_ENTRY_EX(1, browser_events, DISPID_PROGRESSCHANGE, &watcher::on_progress)
    SINK_ENTRY_EX(1, browser_events, 31999, &watcher::on_quit)
    SINK_ENTRY_EX(2, page_events, DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, &watcher::on_click)
    SINK_ENTRY_EX(2, page_events, DISPID_HTMLDOCUMENTEVENTS2_ONREADYSTATECHANGE,
                  &watcher::on_ready_state_change)
    SINK_ENTRY_INFO(2, page_events, 5000, &watcher::on_described, &description)
    END_SINK_MAP()

    HRESULT __stdcall on_before_navigate(IDispatch* browser, VARIANT* url, VARIANT* flags, VARIANT* frame,
                                         VARIANT* post_data, VARIANT* headers, VARIANT_BOOL* cancel)
    {
        seen_browser = browser;
        seen = std::wstring(url && V_VT(url) == VT_BSTR ? V_BSTR(url) : L"no text") +
               (flags ? L" flags" : L"") + (frame ? L" frame" : L"") + (post_data ? L" post" : L"") +
               (headers ? L" headers" : L"");
        if (cancel)
            *cancel = VARIANT_TRUE;
        return answer;
    }
    void __stdcall on_document_complete(IDispatch* browser, VARIANT* url)
    {
        seen_browser = browser;
        seen = url && V_VT(url) == VT_BSTR ? V_BSTR(url) : L"no text";
        throw_if_asked();
    }
    void __stdcall on_quit()
    {
        seen = L"quit";
        if (source_to_leave)
            browser_sink::DispEventUnadvise(source_to_leave);
        seen += std::to_wstring(m_dwRef); // the object must still exist
    }
    void __stdcall on_wrong_count() { seen = L"never"; }
    void __stdcall on_progress(long progress, long maximum) noexcept
    {
        seen = std::to_wstring(progress) + L"/" + std::to_wstring(maximum);
    }
    VARIANT_BOOL __stdcall on_click(IDispatch* event)
    {
        seen_browser = event;
        seen = L"click";
        throw_if_asked();
        return VARIANT_TRUE;
    }
    void __stdcall on_ready_state_change(IDispatch* event)
    {
        seen_browser = event;
        seen = L"ready";
    }
    double __stdcall on_described(double value, BSTR text)
    {
        seen = text;
        return value * 2;
    }

    static inline const _ATL_FUNC_INFO description = {CC_STDCALL, VT_R8, 2, {VT_R8, VT_BSTR}};

    HRESULT answer = S_OK;
    int throw_what = 0;
    IUnknown* source_to_leave = nullptr;
    std::wstring seen;
    IDispatch* seen_browser = nullptr;

private:
    void throw_if_asked() const
    {
        if (throw_what == 1)
            throw std::runtime_error("handler");
        if (throw_what == 2)
            throw CAtlException(E_ACCESSDENIED);
        if (throw_what == 3)
            throw 5;
    }
};

struct DispEvent : testing::Test
{
    DispEvent()
    {
        EXPECT_EQ(CComObject<watcher>::CreateInstance(&object), S_OK);
        object->AddRef();
    }
    ~DispEvent() override
    {
        if (object)
            EXPECT_EQ(object->Release(), 0u);
        EXPECT_EQ(living, 0);
        EXPECT_EQ(the_module().GetLockCount(), 0);
        the_module().Term(); // releases the type information
    }

    CComObject<watcher>* object = nullptr;
};

// The arguments of a real BeforeNavigate2.
struct before_navigate
{
    CComVariant url{L"http://h/x.pdf"};
    CComVariant flags{64};
    CComVariant frame{L""};
    CComVariant post_data;
    CComVariant headers{L""};
    VARIANT_BOOL cancel = VARIANT_FALSE;

    static VARIANT reference(VARIANT* to)
    {
        VARIANT value;
        V_VT(&value) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(&value) = to;
        return value;
    }
    static VARIANT dispatch(IDispatch* pointer)
    {
        VARIANT value;
        V_VT(&value) = VT_DISPATCH;
        V_DISPATCH(&value) = pointer;
        return value;
    }
    std::vector<VARIANT> arguments(IDispatch* browser)
    {
        VARIANT cancel_reference;
        V_VT(&cancel_reference) = VT_BYREF | VT_BOOL;
        V_BOOLREF(&cancel_reference) = &cancel;
        return {dispatch(browser),     reference(&url),     reference(&flags), reference(&frame),
                reference(&post_data), reference(&headers), cancel_reference};
    }
};

TEST_F(DispEvent, SourceHoldsTheObjectWhileItIsAdvised)
{
    event_source source(browser_events);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    EXPECT_EQ(source.connections(), 1u);
    EXPECT_EQ(object->m_dwRef, 2);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), CONNECT_E_ADVISELIMIT);
    EXPECT_EQ(source.connections(), 1u);
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
    EXPECT_EQ(object->m_dwRef, 1);
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, AdviseFailsWithoutItsConnectionPoint)
{
    event_source pages(page_events);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(pages.unknown()), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(object->GetUnknown()), E_NOINTERFACE);
    EXPECT_EQ(object->m_dwRef, 1);
    event_source source(browser_events);
    EXPECT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK); // still connectable
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, EachSinkIsADispatchOfItsOwn)
{
    auto* const sink = reinterpret_cast<IUnknown*>(
        static_cast<ATL::_IDispEvent*>(static_cast<watcher::browser_sink*>(object)));
    void* out = nullptr;
    for (const IID& iid : {IID_IUnknown, IID_IDispatch, browser_events}) {
        EXPECT_EQ(sink->QueryInterface(iid, &out), S_OK);
        EXPECT_EQ(out, sink);
        sink->Release();
    }
    for (const IID& iid : {page_events, IID_IStream}) {
        EXPECT_EQ(sink->QueryInterface(iid, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(sink->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(object->m_dwRef, 1);
}

TEST_F(DispEvent, BrowserEventsArriveWithTheirArguments)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    auto* const browser = reinterpret_cast<IDispatch*>(source.unknown()); // only passed through
    before_navigate event;
    EXPECT_EQ(source.fire(DISPID_BEFORENAVIGATE2, event.arguments(browser)), S_OK);
    EXPECT_EQ(object->seen, L"http://h/x.pdf flags frame post headers");
    EXPECT_EQ(object->seen_browser, browser);
    EXPECT_EQ(event.cancel, VARIANT_TRUE);

    EXPECT_EQ(source.fire(DISPID_DOCUMENTCOMPLETE,
                          {before_navigate::dispatch(browser), before_navigate::reference(&event.url)}),
              S_OK);
    EXPECT_EQ(object->seen, L"http://h/x.pdf");
    EXPECT_EQ(source.fire(DISPID_PROGRESSCHANGE, {CComVariant(3), CComVariant(7)}), S_OK);
    EXPECT_EQ(object->seen, L"3/7");
    EXPECT_EQ(source.fire(DISPID_ONQUIT, {}), S_OK);
    EXPECT_EQ(object->seen, L"quit3"); // its own reference, the source's and the call's
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, NullPointersPassThrough)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    EXPECT_EQ(source.fire(DISPID_DOCUMENTCOMPLETE,
                          {before_navigate::dispatch(nullptr), before_navigate::reference(nullptr)}),
              S_OK);
    EXPECT_EQ(object->seen, L"no text");
    EXPECT_EQ(object->seen_browser, nullptr);
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, ArgumentsOfOtherTypesAreConverted)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    // The URL itself where a pointer to it is declared; numbers as strings; the browser as an IUnknown.
    const CComVariant url(L"http://h/y");
    EXPECT_EQ(source.fire(DISPID_DOCUMENTCOMPLETE, {before_navigate::dispatch(nullptr), url}), S_OK);
    EXPECT_EQ(object->seen, L"http://h/y");
    const CComVariant number(L"12");
    EXPECT_EQ(source.fire(DISPID_PROGRESSCHANGE, {number, CComVariant(7ll)}), S_OK);
    EXPECT_EQ(object->seen, L"12/7");
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, ArgumentsThatDoNotFitAreRefusedWithoutACall)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    const CComVariant text(L"not a number");
    EXPECT_EQ(source.fire(DISPID_PROGRESSCHANGE, {text, text}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(source.fire(DISPID_DOCUMENTCOMPLETE, {CComVariant(5), text}), DISP_E_TYPEMISMATCH);
    before_navigate event;
    auto arguments = event.arguments(nullptr);
    arguments[6] = CComVariant(true); // a value where the handler writes
    EXPECT_EQ(source.fire(DISPID_BEFORENAVIGATE2, arguments), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(source.fire(DISPID_PROGRESSCHANGE, {CComVariant(1)}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(source.fire(DISPID_ONQUIT, {CComVariant(1)}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(source.fire(DISPID_TITLECHANGE, {text}), DISP_E_BADPARAMCOUNT); // the handler takes none
    EXPECT_EQ(object->seen, L"");
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, NamedArgumentsAreRefused)
{
    VARIANT values[2] = {CComVariant(1), CComVariant(2)};
    DISPID names[2] = {0, 1};
    DISPPARAMS parameters{values, names, 2, 2};
    EXPECT_EQ(object->watcher::browser_sink::Invoke(DISPID_PROGRESSCHANGE, IID_NULL, LOCALE_NEUTRAL,
                                                    DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              DISP_E_NONAMEDARGS);
    EXPECT_EQ(object->watcher::browser_sink::Invoke(DISPID_PROGRESSCHANGE, IID_NULL, LOCALE_NEUTRAL,
                                                    DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              E_INVALIDARG);
}

TEST_F(DispEvent, OtherEventsAreIgnored)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    EXPECT_EQ(source.fire(DISPID_DOWNLOADBEGIN, {}), S_OK);
    EXPECT_EQ(source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {CComVariant()}), S_OK); // the other sink's
    EXPECT_EQ(object->seen, L"");
    // Listed, but unknown to the type library.
    EXPECT_TRUE(FAILED(source.fire(31999, {})));
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, ResultOfAHandlerReachesTheSource)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    before_navigate event;
    object->answer = E_FAIL;
    CComVariant result;
    EXPECT_EQ(source.fire(DISPID_BEFORENAVIGATE2, event.arguments(nullptr), &result), E_FAIL);
    EXPECT_EQ(result.vt, VT_EMPTY);
    EXPECT_EQ(object->watcher::browser_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, PageEventsReturnAValue)
{
    event_source source(page_events);
    ASSERT_EQ(object->watcher::page_sink::DispEventAdvise(source.unknown()), S_OK);
    auto* const event = reinterpret_cast<IDispatch*>(source.unknown());
    CComVariant result;
    EXPECT_EQ(source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {before_navigate::dispatch(event)}, &result),
              S_OK);
    EXPECT_EQ(object->seen, L"click");
    EXPECT_EQ(object->seen_browser, event);
    EXPECT_EQ(result.vt, VT_BOOL);
    EXPECT_EQ(result.boolVal, VARIANT_TRUE);
    // A source that does not request the result.
    EXPECT_EQ(source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {before_navigate::dispatch(event)}), S_OK);

    // A source whose result variable is not initialised.
    VARIANT garbage;
    garbage.vt = VT_DISPATCH;
    garbage.pdispVal = reinterpret_cast<IDispatch*>(std::uintptr_t{64});
    EXPECT_EQ(source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {before_navigate::dispatch(event)}, &garbage),
              S_OK);
    EXPECT_EQ(garbage.vt, VT_BOOL);

    result.Clear();
    EXPECT_EQ(source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONREADYSTATECHANGE, {before_navigate::dispatch(event)},
                          &result),
              S_OK);
    EXPECT_EQ(object->seen, L"ready");
    EXPECT_EQ(result.vt, VT_EMPTY);
    EXPECT_EQ(object->watcher::page_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, HandlersCanBeDescribedInTheMap)
{
    event_source source(page_events);
    ASSERT_EQ(object->watcher::page_sink::DispEventAdvise(source.unknown()), S_OK);
    CComVariant result;
    const CComVariant text(L"text");
    EXPECT_EQ(source.fire(5000, {CComVariant(1.25), text}, &result), S_OK);
    EXPECT_EQ(object->seen, L"text");
    EXPECT_TRUE(result == CComVariant(2.5));
    EXPECT_EQ(object->watcher::page_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, ExceptionsEndInTheSink)
{
    event_source source(page_events);
    ASSERT_EQ(object->watcher::page_sink::DispEventAdvise(source.unknown()), S_OK);
    const HRESULT expected[] = {S_OK, E_FAIL, E_ACCESSDENIED, E_FAIL};
    for (int what = 0; what < 4; ++what) {
        object->throw_what = what;
        CComVariant result;
        EXPECT_EQ(
            source.fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {before_navigate::dispatch(nullptr)}, &result),
            expected[what]);
        EXPECT_EQ(result.vt, what == 0 ? VT_BOOL : VT_EMPTY);
    }
    EXPECT_EQ(object->watcher::page_sink::DispEventUnadvise(source.unknown()), S_OK);
}

TEST_F(DispEvent, ObjectOutlivesTheCallInWhichItUnadvises)
{
    event_source source(browser_events);
    ASSERT_EQ(object->watcher::browser_sink::DispEventAdvise(source.unknown()), S_OK);
    object->source_to_leave = source.unknown();
    // From here on only the source holds the object.
    object->Release();
    object = nullptr;
    EXPECT_EQ(source.fire(DISPID_ONQUIT, {}), S_OK);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(source.connections(), 0u);
}

TEST_F(DispEvent, TypeInformationIsTheEventInterfaces)
{
    UINT count = 0;
    EXPECT_EQ(object->watcher::browser_sink::GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    CComPtr<ITypeInfo> info;
    ASSERT_EQ(object->watcher::browser_sink::GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, browser_events);
    info->ReleaseTypeAttr(attributes);
}

_ATL_FUNC_INFO description_of(SHORT parameters)
{
    _ATL_FUNC_INFO info{};
    info.nParams = parameters;
    return info;
}

TEST(KeptDescriptions, AreFoundByTheirNumber)
{
    _AtlFuncInfos kept;
    _ATL_FUNC_INFO found{};
    EXPECT_FALSE(kept.Find(DISPID_BEFORENAVIGATE2, found));
    kept.Keep(DISPID_BEFORENAVIGATE2, description_of(7));
    kept.Keep(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, description_of(1));
    kept.Keep(DISPID_BEFORENAVIGATE2, description_of(3)); // the first one stays
    EXPECT_TRUE(kept.Find(DISPID_BEFORENAVIGATE2, found));
    EXPECT_EQ(found.nParams, 7);
    EXPECT_TRUE(kept.Find(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, found));
    EXPECT_EQ(found.nParams, 1);
    EXPECT_FALSE(kept.Find(DISPID_ONQUIT, found));
}

TEST(KeptDescriptions, AreKeptWhileThereIsRoom)
{
    _AtlFuncInfos kept;
    _ATL_FUNC_INFO found{};
    for (SHORT id = 1; id <= 100; ++id)
        kept.Keep(id, description_of(id));
    EXPECT_TRUE(kept.Find(8, found));
    EXPECT_EQ(found.nParams, 8);
    EXPECT_FALSE(kept.Find(9, found));
}

} // namespace
} // namespace quill::test
