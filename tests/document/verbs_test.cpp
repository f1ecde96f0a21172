// IOleObject::DoVerb, with and without a document site.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <regex>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

std::string verb_line(document_bench& bench, LONG verb, int ui_active, int has_document_site)
{
    return "@ DoVerb {" + std::to_string(verb) + "} {10 20 410 320} {" +
           pointer_text(bench.host.site.client_site()) + " -1 " + std::to_string(ui_active) + " " +
           std::to_string(has_document_site) + "}";
}

constexpr char activate_me[] = "IOleDocumentSite::ActivateMe";

QUILL_DOCUMENT_TEST(DocumentVerbs, LogsEveryVerbWithItsArguments)
{
    bench.create();
    bench.set_site();
    bench.host.order = activation_order::nothing;
    for (const LONG verb : {-1, -2, -4, -5}) {
        bench.take_log();
        EXPECT_EQ(bench.do_verb(verb), S_OK);
        EXPECT_EQ(bench.take_log(), lines{verb_line(bench, verb, 0, 1)});
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, SurvivesNullArguments)
{
    bench.create();
    bench.set_site();
    bench.host.order = activation_order::nothing;
    bench.take_log();
    EXPECT_EQ(bench.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, -1, nullptr, nullptr), S_OK);
    const auto logged = bench.take_log();
    ASSERT_EQ(logged.size(), 1u);
    const std::regex expected{R"(@ DoVerb \{-1\} \{-?\d+ -?\d+ -?\d+ -?\d+\} \{0x0 -1 0 1\})"};
    EXPECT_TRUE(std::regex_match(logged[0], expected)) << logged[0];
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WithoutAnySiteDoesNothing)
{
    bench.create();
    for (LONG verb = -8; verb <= 3; ++verb) {
        SCOPED_TRACE(verb);
        bench.take_log();
        bench.do_verb(verb);
        const auto logged = bench.take_log();
        ASSERT_FALSE(logged.empty());
        EXPECT_EQ(logged[0], verb_line(bench, verb, 0, 0));
        EXPECT_EQ(bench.window(), nullptr);
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, ActivatingVerbsAskTheDocumentSite)
{
    bench.create();
    bench.set_site();
    bench.host.order = activation_order::nothing;
    for (const LONG verb : {-1, -2, -4, -5}) {
        SCOPED_TRACE(verb);
        bench.host.calls.forget_calls();
        EXPECT_EQ(bench.do_verb(verb), S_OK);
        EXPECT_EQ(bench.host.calls.calls(), lines{"IOleDocumentSite::ActivateMe null"});
        EXPECT_EQ(bench.window(), nullptr);
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, TheDocumentSitesAnswerIsTheResult)
{
    bench.create();
    bench.set_site();
    bench.host.calls.make_fail(activate_me, bad_answer::failure);
    EXPECT_EQ(bench.do_verb(OLEIVERB_SHOW), E_FAIL);
    bench.host.calls.make_fail(activate_me, bad_answer::failure_untouched);
    EXPECT_EQ(bench.do_verb(OLEIVERB_OPEN), E_NOTIMPL);
}

QUILL_DOCUMENT_TEST(DocumentVerbs, OtherVerbsNeverAskTheDocumentSite)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.host.calls.forbid(activate_me);
    for (const LONG verb : {0, 1, 2, 100, -3, -6, -7, -8, -100}) {
        SCOPED_TRACE(verb);
        bench.do_verb(verb);
    }
    EXPECT_EQ(bench.host.calls.count(activate_me), 0);
}

QUILL_DOCUMENT_TEST(DocumentVerbs, PrimaryActivatesInPlaceByItself)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.host.calls.forbid(activate_me);
    EXPECT_EQ(bench.do_verb(OLEIVERB_PRIMARY), S_OK);
    EXPECT_NE(bench.window(), nullptr);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WithoutDocumentSiteTheFrameworkActivates)
{
    for (const LONG verb : {OLEIVERB_SHOW, OLEIVERB_UIACTIVATE, OLEIVERB_INPLACEACTIVATE, OLEIVERB_PRIMARY}) {
        SCOPED_TRACE(verb);
        bench.host.calls.forget_calls();
        bench.create();
        bench.host.site.offered.document_site = false;
        bench.set_site();
        bench.load_file(bench.pdf());
        EXPECT_EQ(bench.do_verb(verb), S_OK);
        EXPECT_NE(bench.window(), nullptr);
        EXPECT_EQ(bench.host.calls.count(activate_me), 0);
        EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
        const bool ui_active = bench.host.calls.count("IOleInPlaceSite::OnUIActivate") == 1;
        if (verb == OLEIVERB_UIACTIVATE)
            EXPECT_TRUE(ui_active);
        if (verb == OLEIVERB_INPLACEACTIVATE)
            EXPECT_FALSE(ui_active);
        bench.close_in_order();
        EXPECT_EQ(bench.window(), nullptr);
        bench.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WithoutDocumentSiteTheMenuIsNotMerged)
{
    bench.create();
    bench.host.site.offered.document_site = false;
    bench.set_site();
    bench.load_file(bench.pdf());
    EXPECT_EQ(bench.do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
    bench.close_in_order();
}

// Hosts that hide a document and show it again repeat the verb.
QUILL_DOCUMENT_TEST(DocumentVerbs, ShownAgainAsksAgainButMakesNoSecondView)
{
    bench.show_file(bench.pdf());
    const HWND window = bench.window();
    bench.host.view->Show(FALSE);
    bench.host.calls.forget_calls();
    bench.take_log();
    const auto result = bench.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, -1, nullptr, nullptr);
    EXPECT_EQ(result, E_FAIL) << "the site's answer: one view only";
    EXPECT_EQ(bench.host.activation_results, std::vector<HRESULT>{E_FAIL});
    EXPECT_EQ(bench.host.calls.count(activate_me), 1);
    EXPECT_EQ(bench.window(), window);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, UiActiveDocumentDoesNotAskAgain)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    bench.host.calls.forget_calls();
    for (const LONG verb : {-1, -4, -5}) {
        SCOPED_TRACE(verb);
        bench.take_log();
        EXPECT_EQ(bench.do_verb(verb), S_OK);
        EXPECT_EQ(bench.take_log(), lines{verb_line(bench, verb, 1, 1)});
    }
    bench.do_verb(OLEIVERB_OPEN);
    EXPECT_EQ(bench.host.calls.count(activate_me), 0);
    bench.close_in_order();
}

// Deactivation lets go of the document site, but the object remembers that there was one.
QUILL_DOCUMENT_TEST(DocumentVerbs, AfterDeactivationTheFrameworkActivates)
{
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.window(), nullptr);
    bench.host.calls.forget_calls();
    bench.take_log();
    EXPECT_EQ(bench.do_verb(OLEIVERB_SHOW), S_OK);
    const auto logged = bench.take_log();
    ASSERT_FALSE(logged.empty());
    EXPECT_EQ(logged[0], verb_line(bench, OLEIVERB_SHOW, 0, 1));
    EXPECT_EQ(bench.host.calls.count(activate_me), 0);
    EXPECT_NE(bench.window(), nullptr);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, HideHidesTheWindow)
{
    bench.show_file(bench.pdf());
    EXPECT_NE(GetWindowLongW(bench.window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(bench.do_verb(OLEIVERB_HIDE), S_OK);
    EXPECT_EQ(GetWindowLongW(bench.window(), GWL_STYLE) & WS_VISIBLE, 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentVerbs, WhatAFailedUserModeLeavesIsNotReleased)
{
    bench.host.site.offered.ambient_properties = true;
    bench.host.site.failed_property_leaves = static_cast<IUnknown*>(&bench.host.browser);
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.do_verb(OLEIVERB_PRIMARY), S_OK);
    EXPECT_GE(bench.host.calls.count("IDispatch::Invoke"), 1);
    EXPECT_EQ(bench.host.browser.references(), 0);
    bench.close_in_order();
}
} // namespace
} // namespace quill::test
