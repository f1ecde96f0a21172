// IOleObject::DoVerb, with and without a document site.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <regex>

namespace quill::test {
namespace {

std::string verb_line(document_fixture& fixture, LONG verb, int ui_active, int has_document_site)
{
    return "@ DoVerb {" + std::to_string(verb) + "} {10 20 410 320} {" +
           pointer_text(fixture.host.site.client_site()) + " -1 " + std::to_string(ui_active) + " " +
           std::to_string(has_document_site) + "}";
}

constexpr char activate_me[] = "IOleDocumentSite::ActivateMe";

QUILL_DOCUMENT_TEST(DocumentVerbs, LogsEveryVerbWithItsArguments)
{
    fixture.create();
    fixture.set_site();
    fixture.host.order = activation_order::nothing;
    for (const LONG verb : {-1, -2, -4, -5}) {
        fixture.take_log();
        EXPECT_EQ(fixture.do_verb(verb), S_OK);
        EXPECT_EQ(fixture.take_log(), lines{verb_line(fixture, verb, 0, 1)});
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, AcceptsNullArguments)
{
    fixture.create();
    fixture.set_site();
    fixture.host.order = activation_order::nothing;
    fixture.take_log();
    EXPECT_EQ(fixture.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, -1, nullptr, nullptr), S_OK);
    const auto logged = fixture.take_log();
    ASSERT_EQ(logged.size(), 1u);
    const std::regex expected{R"(@ DoVerb \{-1\} \{-?\d+ -?\d+ -?\d+ -?\d+\} \{0x0 -1 0 1\})"};
    EXPECT_TRUE(std::regex_match(logged[0], expected)) << logged[0];
}

QUILL_DOCUMENT_TEST(DocumentVerbs, DoNothingWithoutASite)
{
    fixture.create();
    for (LONG verb = -8; verb <= 3; ++verb) {
        SCOPED_TRACE(verb);
        fixture.take_log();
        fixture.do_verb(verb);
        const auto logged = fixture.take_log();
        ASSERT_FALSE(logged.empty());
        EXPECT_EQ(logged[0], verb_line(fixture, verb, 0, 0));
        EXPECT_EQ(fixture.window(), nullptr);
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, ActivatingVerbsAskTheDocumentSite)
{
    fixture.create();
    fixture.set_site();
    fixture.host.order = activation_order::nothing;
    for (const LONG verb : {-1, -2, -4, -5}) {
        SCOPED_TRACE(verb);
        fixture.host.calls.forget_calls();
        EXPECT_EQ(fixture.do_verb(verb), S_OK);
        EXPECT_EQ(fixture.host.calls.calls(), lines{"IOleDocumentSite::ActivateMe null"});
        EXPECT_EQ(fixture.window(), nullptr);
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, ReturnTheResultOfTheDocumentSite)
{
    fixture.create();
    fixture.set_site();
    fixture.host.calls.make_fail(activate_me, call_fault::error);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_SHOW), E_FAIL);
    fixture.host.calls.make_fail(activate_me, call_fault::error_untouched);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_OPEN), E_NOTIMPL);
}

QUILL_DOCUMENT_TEST(DocumentVerbs, OtherVerbsNeverAskTheDocumentSite)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.host.calls.forbid(activate_me);
    for (const LONG verb : {0, 1, 2, 100, -3, -6, -7, -8, -100}) {
        SCOPED_TRACE(verb);
        fixture.do_verb(verb);
    }
    EXPECT_EQ(fixture.host.calls.count(activate_me), 0);
}

QUILL_DOCUMENT_TEST(DocumentVerbs, PrimaryActivatesInPlaceByItself)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.host.calls.forbid(activate_me);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_PRIMARY), S_OK);
    EXPECT_NE(fixture.window(), nullptr);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WithoutDocumentSiteTheFrameworkActivates)
{
    for (const LONG verb : {OLEIVERB_SHOW, OLEIVERB_UIACTIVATE, OLEIVERB_INPLACEACTIVATE, OLEIVERB_PRIMARY}) {
        SCOPED_TRACE(verb);
        fixture.host.calls.forget_calls();
        fixture.create();
        fixture.host.site.offered.document_site = false;
        fixture.set_site();
        fixture.load_file(fixture.pdf());
        EXPECT_EQ(fixture.do_verb(verb), S_OK);
        EXPECT_NE(fixture.window(), nullptr);
        EXPECT_EQ(fixture.host.calls.count(activate_me), 0);
        EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
        const bool ui_active = fixture.host.calls.count("IOleInPlaceSite::OnUIActivate") == 1;
        if (verb == OLEIVERB_UIACTIVATE)
            EXPECT_TRUE(ui_active);
        if (verb == OLEIVERB_INPLACEACTIVATE)
            EXPECT_FALSE(ui_active);
        fixture.close_in_order();
        EXPECT_EQ(fixture.window(), nullptr);
        fixture.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WithoutDocumentSiteTheMenuIsNotMerged)
{
    fixture.create();
    fixture.host.site.offered.document_site = false;
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    EXPECT_EQ(fixture.do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
    fixture.close_in_order();
}

// Hosts that hide a document and show it again repeat the verb.
QUILL_DOCUMENT_TEST(DocumentVerbs, ShownAgainAsksAgainButMakesNoSecondView)
{
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    fixture.host.view->Show(FALSE);
    fixture.host.calls.forget_calls();
    fixture.take_log();
    const auto result =
        fixture.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, -1, nullptr, nullptr);
    EXPECT_EQ(result, E_FAIL) << "the site's result: there is only one view";
    EXPECT_EQ(fixture.host.activation_results, std::vector<HRESULT>{E_FAIL});
    EXPECT_EQ(fixture.host.calls.count(activate_me), 1);
    EXPECT_EQ(fixture.window(), window);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, UiActiveDocumentDoesNotAskAgain)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    fixture.host.calls.forget_calls();
    for (const LONG verb : {-1, -4, -5}) {
        SCOPED_TRACE(verb);
        fixture.take_log();
        EXPECT_EQ(fixture.do_verb(verb), S_OK);
        EXPECT_EQ(fixture.take_log(), lines{verb_line(fixture, verb, 1, 1)});
    }
    fixture.do_verb(OLEIVERB_OPEN);
    EXPECT_EQ(fixture.host.calls.count(activate_me), 0);
    fixture.close_in_order();
}

// Deactivation releases the document site, but the object remembers that it had one.
QUILL_DOCUMENT_TEST(DocumentVerbs, AfterDeactivationTheFrameworkActivates)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.window(), nullptr);
    fixture.host.calls.forget_calls();
    fixture.take_log();
    EXPECT_EQ(fixture.do_verb(OLEIVERB_SHOW), S_OK);
    const auto logged = fixture.take_log();
    ASSERT_FALSE(logged.empty());
    EXPECT_EQ(logged[0], verb_line(fixture, OLEIVERB_SHOW, 0, 1));
    EXPECT_EQ(fixture.host.calls.count(activate_me), 0);
    EXPECT_NE(fixture.window(), nullptr);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, HideHidesTheWindow)
{
    fixture.show_file(fixture.pdf());
    EXPECT_NE(GetWindowLongW(fixture.window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_HIDE), S_OK);
    EXPECT_EQ(GetWindowLongW(fixture.window(), GWL_STYLE) & WS_VISIBLE, 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, AValueOfAFailedUserModeCallIsNotReleased)
{
    fixture.host.site.offered.ambient_properties = true;
    fixture.host.site.failed_property_leaves = static_cast<IUnknown*>(&fixture.host.browser);
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.do_verb(OLEIVERB_PRIMARY), S_OK);
    EXPECT_GE(fixture.host.calls.count("IDispatch::Invoke"), 1);
    EXPECT_EQ(fixture.host.browser.references(), 0);
    fixture.close_in_order();
}
} // namespace
} // namespace quill::test
