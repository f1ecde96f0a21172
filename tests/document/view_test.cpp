// IOleDocument and IOleDocumentView, method by method.
#include "tests/document/document_fixture.h"
#include "tests/support/adopt.h"

#include <docobj.h>
#include <gtest/gtest.h>
#include <ole2.h>
#include <shlwapi.h>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

bool is_document(document_fixture& fixture, IUnknown* object)
{
    ComPtr<IUnknown> identity;
    return object && object->QueryInterface(IID_PPV_ARGS(&identity)) == S_OK &&
           identity.Get() == fixture.document.Get();
}

QUILL_DOCUMENT_TEST(DocumentView, IsTheDocumentItself)
{
    fixture.create();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(fixture.as<IOleDocument>()->CreateView(nullptr, nullptr, 0, &view), S_OK);
    EXPECT_TRUE(is_document(fixture, view.Get()));
    ComPtr<IUnknown> document;
    EXPECT_EQ(view->GetDocument(&document), S_OK);
    EXPECT_TRUE(is_document(fixture, document.Get()));
    EXPECT_EQ(view->GetDocument(nullptr), E_FAIL);
}

QUILL_DOCUMENT_TEST(DocumentView, IsCreatedWithItsSite)
{
    fixture.create();
    fixture.set_site();
    const long before = fixture.host.site.references();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(fixture.as<IOleDocument>()->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &view),
              S_OK);
    EXPECT_EQ(fixture.host.site.references(), before + 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), fixture.host.site.in_place_site());
}

QUILL_DOCUMENT_TEST(DocumentView, ExistsOnce)
{
    fixture.create();
    const auto document = fixture.as<IOleDocument>();
    ComPtr<IOleDocumentView> first;
    EXPECT_EQ(document->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &first), S_OK);
    ComPtr<IOleDocumentView> second;
    EXPECT_EQ(document->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &second), E_FAIL);
    EXPECT_EQ(second.Get(), nullptr);
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &second), E_FAIL);
    EXPECT_EQ(second.Get(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentView, RefusedASecondTimeLeavesTheHostItsView)
{
    fixture.create();
    const auto document = fixture.as<IOleDocument>();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(document->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &view), S_OK);
    IOleDocumentView* kept = view.Get();
    EXPECT_EQ(document->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &kept), E_FAIL);
    EXPECT_EQ(kept, view.Get());
}

// Without a site the document does not know that it has a view already.
QUILL_DOCUMENT_TEST(DocumentView, WithoutASiteCanBeCreatedAgain)
{
    fixture.create();
    const auto document = fixture.as<IOleDocument>();
    ComPtr<IOleDocumentView> first;
    ComPtr<IOleDocumentView> second;
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &first), S_OK);
    EXPECT_EQ(document->CreateView(nullptr, nullptr, 0, &second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
}

QUILL_DOCUMENT_TEST(DocumentView, NullArgumentsAreRefusedAsTheHostExpects)
{
    fixture.create();
    const auto document = fixture.as<IOleDocument>();
    EXPECT_EQ(document->CreateView(fixture.host.site.in_place_site(), nullptr, 0, nullptr), E_POINTER);
    EXPECT_EQ(fixture.host.site.references(), 0) << "refused before anything is stored";
    EXPECT_EQ(document->EnumViews(nullptr, nullptr), E_POINTER);
    const auto view = fixture.as<IOleDocumentView>();
    EXPECT_EQ(view->GetInPlaceSite(nullptr), E_FAIL);
    EXPECT_EQ(view->GetRect(nullptr), E_POINTER);
}

QUILL_DOCUMENT_TEST(DocumentView, IgnoresAStateStream)
{
    fixture.create();
    const auto stream = adopt(SHCreateMemStream(nullptr, 0));
    ASSERT_NE(stream.Get(), nullptr);
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(fixture.as<IOleDocument>()->CreateView(nullptr, stream.Get(), 0, &view), S_OK);
    EXPECT_TRUE(is_document(fixture, view.Get()));
}

QUILL_DOCUMENT_TEST(DocumentView, EnumerationReturnsTheOneView)
{
    fixture.create();
    ComPtr<IOleDocumentView> view;
    EXPECT_EQ(fixture.as<IOleDocument>()->EnumViews(nullptr, &view), S_OK);
    EXPECT_TRUE(is_document(fixture, view.Get()));
    view.Reset();
    ComPtr<IEnumOleDocumentViews> views;
    EXPECT_EQ(fixture.as<IOleDocument>()->EnumViews(&views, &view), S_OK);
    EXPECT_TRUE(is_document(fixture, view.Get()));
    EXPECT_EQ(views.Get(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentView, StatusIsNoFileSupport)
{
    fixture.create();
    DWORD status = 0;
    EXPECT_EQ(fixture.as<IOleDocument>()->GetDocMiscStatus(&status), S_OK);
    EXPECT_EQ(status, DWORD{DOCMISC_NOFILESUPPORT});
    EXPECT_EQ(status, 8u);
}

QUILL_DOCUMENT_TEST(DocumentView, StubMethodsSucceed)
{
    fixture.create();
    const auto view = fixture.as<IOleDocumentView>();
    RECT rect{1, 2, 3, 4};
    EXPECT_EQ(view->SetRectComplex(&rect, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(view->SetRectComplex(nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(view->Open(), S_OK);
    EXPECT_EQ(view->SaveViewState(nullptr), S_OK);
    EXPECT_EQ(view->ApplyViewState(nullptr), S_OK);
    ComPtr<IOleDocumentView> clone;
    EXPECT_EQ(view->Clone(fixture.host.site.in_place_site(), &clone), S_OK);
    EXPECT_EQ(clone.Get(), nullptr);
    EXPECT_EQ(view->Clone(nullptr, nullptr), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentView, RectangleIsKeptWithoutAWindow)
{
    fixture.create();
    const auto view = fixture.as<IOleDocumentView>();
    RECT rect{-5, 7, 300, 400};
    EXPECT_EQ(view->SetRect(&rect), S_OK);
    RECT kept{};
    EXPECT_EQ(view->GetRect(&kept), S_OK);
    EXPECT_TRUE(EqualRect(&kept, &rect));
}

QUILL_DOCUMENT_TEST(DocumentView, NullRectangleDoesNotBlockLaterOnes)
{
    fixture.create();
    const auto view = fixture.as<IOleDocumentView>();
    view->SetRect(nullptr);
    RECT rect{1, 2, 30, 40};
    EXPECT_EQ(view->SetRect(&rect), S_OK);
    RECT kept{};
    view->GetRect(&kept);
    EXPECT_TRUE(EqualRect(&kept, &rect));
}

QUILL_DOCUMENT_TEST(DocumentView, RectangleMovesTheWindow)
{
    fixture.show_file(fixture.pdf());
    RECT rect{30, 40, 330, 240};
    EXPECT_EQ(fixture.host.view->SetRect(&rect), S_OK);
    RECT actual{};
    GetWindowRect(fixture.window(), &actual);
    MapWindowPoints(nullptr, fixture.host.view_window(), reinterpret_cast<POINT*>(&actual), 2);
    EXPECT_TRUE(EqualRect(&actual, &rect));
    fixture.close_in_order();
}

// Moving the window makes some hosts call SetRect re-entrantly: the inner call does nothing, not even for
// another document.
QUILL_DOCUMENT_TEST(DocumentView, RectangleInsideARectangleIsIgnored)
{
    static IOleDocumentView* nested_view;
    static HRESULT nested_result;
    static int nested_calls;
    nested_view = nullptr;
    nested_result = E_UNEXPECTED;
    nested_calls = 0;
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(fixture.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)), S_OK);
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
    nested_view = fixture.host.view.Get();
    EXPECT_EQ(fixture.host.view->SetRect(&outer), S_OK);
    EXPECT_GE(nested_calls, 1);
    EXPECT_EQ(nested_result, S_OK);
    fixture.host.view->GetRect(&kept);
    EXPECT_TRUE(EqualRect(&kept, &outer));

    nested_view = other.Get();
    nested_result = E_UNEXPECTED;
    outer = {0, 0, 200, 200};
    EXPECT_EQ(fixture.host.view->SetRect(&outer), S_OK);
    EXPECT_EQ(nested_result, S_OK);
    RECT untouched{};
    other->GetRect(&untouched);
    EXPECT_NE(untouched.right, 11) << "the guard is one for the whole process";

    nested_view = nullptr;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(old));
    other.Reset();
    factory.Reset();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, UiActivationNeedsASite)
{
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.as<IOleDocumentView>()->UIActivate(TRUE), E_UNEXPECTED);
    EXPECT_EQ(fixture.as<IOleDocumentView>()->UIActivate(FALSE), S_OK);
}

QUILL_DOCUMENT_TEST(DocumentView, ShowActivatesInPlaceOnly)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    ComPtr<IOleDocumentView> view;
    ASSERT_EQ(fixture.as<IOleDocument>()->CreateView(fixture.host.site.in_place_site(), nullptr, 0, &view),
              S_OK);
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_NE(fixture.window(), nullptr);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 0);
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1) << "active already";
    EXPECT_EQ(view->UIActivate(TRUE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1);
    EXPECT_EQ(view->UIActivate(TRUE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1) << "UI-active already";
    EXPECT_EQ(view->Show(TRUE), S_OK);
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(view->UIActivate(FALSE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1) << "not UI-active any more";
    view.Reset();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, HidingDeactivatesTheUserInterface)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.view->Show(FALSE), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(GetWindowLongW(fixture.window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 0);
    EXPECT_EQ(fixture.host.view->Show(FALSE), S_OK);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, ClosingDeactivatesAndKeepsTheSitePointer)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.view->CloseView(0), S_OK);
    EXPECT_EQ(fixture.window(), nullptr);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(fixture.host.view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), fixture.host.site.in_place_site()) << "a null site deactivates and no more";
    EXPECT_EQ(fixture.host.view->CloseView(0), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    site.Reset();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, AnotherSiteReplacesTheOldAndDeactivates)
{
    document_host other;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.view->SetInPlaceSite(other.site.in_place_site()), S_OK);
    EXPECT_EQ(fixture.window(), nullptr);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(fixture.host.view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), other.site.in_place_site());
    site.Reset();
    fixture.as<IOleObject>()->SetClientSite(nullptr);
    EXPECT_EQ(fixture.host.site.references(), 0) << "the old site is released";
    fixture.release();
    EXPECT_EQ(other.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentView, TheSameSiteAgainOnlyDeactivates)
{
    fixture.show_file(fixture.pdf());
    const long before = fixture.host.site.references();
    EXPECT_EQ(fixture.host.view->SetInPlaceSite(fixture.host.site.in_place_site()), S_OK);
    EXPECT_EQ(fixture.window(), nullptr);
    EXPECT_LE(fixture.host.site.references(), before);
    EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    EXPECT_NE(fixture.window(), nullptr) << "and can be activated again";
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentView, ReturnsNoSiteWithoutOne)
{
    fixture.create();
    IOleInPlaceSite* site = fixture.host.site.in_place_site();
    fixture.as<IOleDocumentView>()->GetInPlaceSite(&site);
    EXPECT_EQ(site, nullptr);
}

// The first site was queried from the client site and is released with it; the view's own site is kept.
QUILL_DOCUMENT_TEST(DocumentView, KeepsItsOwnSiteWhenTheClientSiteIsReleased)
{
    document_host other;
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.do_verb(OLEIVERB_PRIMARY), S_OK);
    const auto view = fixture.as<IOleDocumentView>();
    EXPECT_EQ(view->SetInPlaceSite(other.site.in_place_site()), S_OK);
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(view->GetInPlaceSite(&site), S_OK);
    EXPECT_EQ(site.Get(), other.site.in_place_site());
    site.Reset();
    fixture.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    EXPECT_EQ(other.site.references(), 0);
}

} // namespace
} // namespace quill::test
