// IOleDocument and IOleDocumentView, method by method.
#include "tests/document/document_fixture.h"

#include <docobj.h>
#include <gtest/gtest.h>
#include <ole2.h>
#include <shlwapi.h>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

bool is_document(document_bench& bench, IUnknown* object)
{
    ComPtr<IUnknown> identity;
    return object && object->QueryInterface(IID_PPV_ARGS(&identity)) == S_OK &&
           identity.Get() == bench.document.Get();
}

QUILL_DOCUMENT_TEST(DocumentView, IsTheDocumentItself)
{
    bench.create();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(bench.as<IOleDocument>()->CreateView(nullptr, nullptr, 0, &view), S_OK);
    EXPECT_TRUE(is_document(bench, view.Get()));
    ComPtr<IUnknown> document;
    EXPECT_EQ(view->GetDocument(&document), S_OK);
    EXPECT_TRUE(is_document(bench, document.Get()));
    EXPECT_EQ(view->GetDocument(nullptr), E_FAIL);
}

QUILL_DOCUMENT_TEST(DocumentView, IsMadeWithItsSite)
{
    bench.create();
    bench.set_site();
    const long before = bench.host.site.references();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(bench.as<IOleDocument>()->CreateView(bench.host.site.in_place_site(), nullptr, 0, &view), S_OK);
    EXPECT_EQ(bench.host.site.references(), before + 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), bench.host.site.in_place_site());
}

QUILL_DOCUMENT_TEST(DocumentView, ExistsOnce)
{
    bench.create();
    const auto document = bench.as<IOleDocument>();
    ComPtr<IOleDocumentView> first;
    EXPECT_EQ(document->CreateView(bench.host.site.in_place_site(), nullptr, 0, &first), S_OK);
    ComPtr<IOleDocumentView> second;
    EXPECT_EQ(document->CreateView(bench.host.site.in_place_site(), nullptr, 0, &second), E_FAIL);
    EXPECT_EQ(second.Get(), nullptr);
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &second), E_FAIL);
    EXPECT_EQ(second.Get(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentView, RefusedASecondTimeLeavesTheHostItsView)
{
    bench.create();
    const auto document = bench.as<IOleDocument>();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(document->CreateView(bench.host.site.in_place_site(), nullptr, 0, &view), S_OK);
    IOleDocumentView* kept = view.Get();
    EXPECT_EQ(document->CreateView(bench.host.site.in_place_site(), nullptr, 0, &kept), E_FAIL);
    EXPECT_EQ(kept, view.Get());
}

// Without a site nothing says that there is a view already.
QUILL_DOCUMENT_TEST(DocumentView, WithoutSiteCanBeAskedForAgain)
{
    bench.create();
    const auto document = bench.as<IOleDocument>();
    ComPtr<IOleDocumentView> first;
    ComPtr<IOleDocumentView> second;
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &first), S_OK);
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
}

QUILL_DOCUMENT_TEST(DocumentView, NullArgumentsAreRefusedAsTheHostExpects)
{
    bench.create();
    const auto document = bench.as<IOleDocument>();
    EXPECT_EQ(document->CreateView(bench.host.site.in_place_site(), nullptr, 0, nullptr), E_POINTER);
    EXPECT_EQ(bench.host.site.references(), 0) << "refused before anything is kept";
    EXPECT_EQ(document->EnumViews(nullptr, nullptr), E_POINTER);
    const auto view = bench.as<IOleDocumentView>();
    EXPECT_EQ(view->GetInPlaceSite(nullptr), E_FAIL);
    EXPECT_EQ(view->GetRect(nullptr), E_POINTER);
}

QUILL_DOCUMENT_TEST(DocumentView, TakesAStateStreamAndIgnoresIt)
{
    bench.create();
    ComPtr<IStream> stream;
    stream.Attach(SHCreateMemStream(nullptr, 0));
    ASSERT_NE(stream.Get(), nullptr);
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(bench.as<IOleDocument>()->CreateView(nullptr, stream.Get(), 0, &view), S_OK);
    EXPECT_TRUE(is_document(bench, view.Get()));
}

QUILL_DOCUMENT_TEST(DocumentView, EnumerationGivesTheOneView)
{
    bench.create();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(bench.as<IOleDocument>()->EnumViews(nullptr, &view), S_OK);
    EXPECT_TRUE(is_document(bench, view.Get()));
    view.Reset();
    ComPtr<IEnumOleDocumentViews> views;
    EXPECT_EQ(bench.as<IOleDocument>()->EnumViews(&views, &view), S_OK);
    EXPECT_TRUE(is_document(bench, view.Get()));
    EXPECT_EQ(views.Get(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentView, StatusSaysNoFileSupport)
{
    bench.create();
    DWORD status = 0;
    EXPECT_EQ(bench.as<IOleDocument>()->GetDocMiscStatus(&status), S_OK);
    EXPECT_EQ(status, DWORD{DOCMISC_NOFILESUPPORT});
    EXPECT_EQ(status, 8u);
}

QUILL_DOCUMENT_TEST(DocumentView, MethodsWithoutWorkSucceed)
{
    bench.create();
    const auto view = bench.as<IOleDocumentView>();
    RECT rect{1, 2, 3, 4};
    EXPECT_EQ(view->SetRectComplex(&rect, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(view->SetRectComplex(nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(view->Open(), S_OK);
    EXPECT_EQ(view->SaveViewState(nullptr), S_OK);
    EXPECT_EQ(view->ApplyViewState(nullptr), S_OK);
    ComPtr<IOleDocumentView> clone;
    EXPECT_EQ(view->Clone(bench.host.site.in_place_site(), &clone), S_OK);
    EXPECT_EQ(clone.Get(), nullptr);
    EXPECT_EQ(view->Clone(nullptr, nullptr), S_OK);
    EXPECT_EQ(bench.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentView, RectangleIsKeptWithoutAWindow)
{
    bench.create();
    const auto view = bench.as<IOleDocumentView>();
    RECT rect{-5, 7, 300, 400};
    EXPECT_EQ(view->SetRect(&rect), S_OK);
    RECT kept{};
    EXPECT_EQ(view->GetRect(&kept), S_OK);
    EXPECT_TRUE(EqualRect(&kept, &rect));
}

QUILL_DOCUMENT_TEST(DocumentView, NullRectangleDoesNotBlockLaterOnes)
{
    bench.create();
    const auto view = bench.as<IOleDocumentView>();
    view->SetRect(nullptr);
    RECT rect{1, 2, 30, 40};
    EXPECT_EQ(view->SetRect(&rect), S_OK);
    RECT kept{};
    view->GetRect(&kept);
    EXPECT_TRUE(EqualRect(&kept, &rect));
}

QUILL_DOCUMENT_TEST(DocumentView, RectangleMovesTheWindow)
{
    bench.show_file(bench.pdf());
    RECT rect{30, 40, 330, 240};
    EXPECT_EQ(bench.host.view->SetRect(&rect), S_OK);
    RECT actual{};
    GetWindowRect(bench.window(), &actual);
    MapWindowPoints(nullptr, bench.host.view_window(), reinterpret_cast<POINT*>(&actual), 2);
    EXPECT_TRUE(EqualRect(&actual, &rect));
    bench.close_in_order();
}

// Moving the window makes some hosts set the rectangle again from inside: the inner call does nothing,
// not even for another document.
QUILL_DOCUMENT_TEST(DocumentView, RectangleInsideARectangleIsIgnored)
{
    static IOleDocumentView* nested_view;
    static HRESULT nested_result;
    static int nested_calls;
    nested_view = nullptr;
    nested_result = E_UNEXPECTED;
    nested_calls = 0;
    bench.show_file(bench.pdf());
    const HWND window = bench.window();
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(bench.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)), S_OK);
    ComPtr<IOleDocumentView> other;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&other)), S_OK);

    static WNDPROC old;
    old = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
        window, GWLP_WNDPROC,
        reinterpret_cast<LONG_PTR>(+[](HWND target, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
            if (message == WM_WINDOWPOSCHANGING && nested_view) {
                RECT inner{1, 1, 11, 11};
                ++nested_calls;
                nested_result = nested_view->SetRect(&inner);
            }
            return CallWindowProcW(old, target, message, wparam, lparam);
        })));

    RECT outer{30, 40, 330, 240};
    RECT kept{};
    nested_view = bench.host.view.Get();
    EXPECT_EQ(bench.host.view->SetRect(&outer), S_OK);
    EXPECT_GE(nested_calls, 1);
    EXPECT_EQ(nested_result, S_OK);
    bench.host.view->GetRect(&kept);
    EXPECT_TRUE(EqualRect(&kept, &outer));

    nested_view = other.Get();
    nested_result = E_UNEXPECTED;
    outer = {0, 0, 200, 200};
    EXPECT_EQ(bench.host.view->SetRect(&outer), S_OK);
    EXPECT_EQ(nested_result, S_OK);
    RECT untouched{};
    other->GetRect(&untouched);
    EXPECT_NE(untouched.right, 11) << "the guard is one for the whole process";

    nested_view = nullptr;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(old));
    other.Reset();
    factory.Reset();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, UiActivationNeedsASite)
{
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.as<IOleDocumentView>()->UIActivate(TRUE), E_UNEXPECTED);
    EXPECT_EQ(bench.as<IOleDocumentView>()->UIActivate(FALSE), S_OK);
}

QUILL_DOCUMENT_TEST(DocumentView, ShowActivatesInPlaceOnly)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    ComPtr<IOleDocumentView> view;
    ASSERT_EQ(bench.as<IOleDocument>()->CreateView(bench.host.site.in_place_site(), nullptr, 0, &view), S_OK);
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_NE(bench.window(), nullptr);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIActivate"), 0);
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1) << "active already";
    EXPECT_EQ(view->UIActivate(TRUE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1);
    EXPECT_EQ(view->UIActivate(TRUE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1) << "UI-active already";
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1) << "not UI-active any more";
    view.Reset();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, HidingDeactivatesTheUserInterface)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.view->Show(FALSE), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(GetWindowLongW(bench.window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 0);
    EXPECT_EQ(bench.host.view->Show(FALSE), S_OK);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, ClosingDeactivatesAndKeepsTheSitePointer)
{
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.view->CloseView(0), S_OK);
    EXPECT_EQ(bench.window(), nullptr);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(bench.host.view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), bench.host.site.in_place_site()) << "a null site deactivates and no more";
    EXPECT_EQ(bench.host.view->CloseView(0), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    site.Reset();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, AnotherSiteReplacesTheOldAndDeactivates)
{
    document_host other;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.view->SetInPlaceSite(other.site.in_place_site()), S_OK);
    EXPECT_EQ(bench.window(), nullptr);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(bench.host.view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), other.site.in_place_site());
    site.Reset();
    bench.as<IOleObject>()->SetClientSite(nullptr);
    EXPECT_EQ(bench.host.site.references(), 0) << "the old site is let go";
    bench.release();
    EXPECT_EQ(other.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentView, TheSameSiteAgainOnlyDeactivates)
{
    bench.show_file(bench.pdf());
    const long before = bench.host.site.references();
    EXPECT_EQ(bench.host.view->SetInPlaceSite(bench.host.site.in_place_site()), S_OK);
    EXPECT_EQ(bench.window(), nullptr);
    EXPECT_LE(bench.host.site.references(), before);
    EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
    EXPECT_NE(bench.window(), nullptr) << "and can be activated again";
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, WithoutASiteGivesNone)
{
    bench.create();
    IOleInPlaceSite* site = bench.host.site.in_place_site();
    bench.as<IOleDocumentView>()->GetInPlaceSite(&site);
    EXPECT_EQ(site, nullptr);
}

// The first site was asked of the client site and goes with it; the view's own stays.
QUILL_DOCUMENT_TEST(DocumentView, KeepsASiteOfItsOwnWhenTheClientSiteGoes)
{
    document_host other;
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.do_verb(OLEIVERB_PRIMARY), S_OK);
    const auto view = bench.as<IOleDocumentView>();
    EXPECT_EQ(view->SetInPlaceSite(other.site.in_place_site()), S_OK);
    EXPECT_EQ(bench.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), other.site.in_place_site());
    site.Reset();
    bench.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    EXPECT_EQ(other.site.references(), 0);
}

} // namespace
} // namespace quill::test
