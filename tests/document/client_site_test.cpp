// The client site: which interfaces are queried, which are kept, what is logged.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <regex>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

QUILL_DOCUMENT_TEST(DocumentSite, IsKeptWithItsDocumentSite)
{
    fixture.create();
    EXPECT_EQ(fixture.set_site(), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ IOleObject_SetClientSite 0x0"});
    EXPECT_EQ(fixture.host.site.references(), 2) << "the client site and the document site";
    ComPtr<IOleClientSite> kept;
    EXPECT_EQ(fixture.as<IOleObject>()->GetClientSite(&kept), S_OK);
    EXPECT_EQ(kept.Get(), fixture.host.site.client_site());
}

QUILL_DOCUMENT_TEST(DocumentSite, WithoutDocumentSiteIsKeptToo)
{
    fixture.create();
    fixture.host.site.offered.document_site = false;
    EXPECT_EQ(fixture.set_site(), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ IOleObject_SetClientSite 0x-2147467262"});
    EXPECT_EQ(fixture.host.site.references(), 1);
}

QUILL_DOCUMENT_TEST(DocumentSite, ReadsTheAmbientProperties)
{
    fixture.create();
    fixture.host.site.offered.ambient_properties = true;
    EXPECT_EQ(fixture.set_site(), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 3) << "client site, document site, ambient properties";
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentSite, IsReleasedAtOnceWhenSetToNull)
{
    fixture.create();
    fixture.set_site();
    fixture.take_log();
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
    const auto logged = fixture.take_log();
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_TRUE(std::regex_match(logged[0], std::regex{"@ IOleObject_SetClientSite 0x-?[0-9]+"}))
        << logged[0];
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    ComPtr<IOleClientSite> kept;
    fixture.as<IOleObject>()->GetClientSite(&kept);
    EXPECT_EQ(kept.Get(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentSite, IsReplacedByAnother)
{
    document_host other;
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(other.site.client_site()), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
    EXPECT_EQ(other.site.references(), 2);
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(other.site.client_site()), S_OK);
    EXPECT_EQ(other.site.references(), 2) << "set twice, referenced once";
    fixture.release();
    EXPECT_EQ(other.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentSite, LosingTheDocumentSiteClearsTheFlag)
{
    document_host plain;
    plain.site.offered.document_site = false;
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(plain.site.client_site()), S_OK);
    fixture.take_log();
    fixture.as<IOleObject>()->DoVerb(OLEIVERB_HIDE, nullptr, nullptr, 0, nullptr, nullptr);
    const auto logged = fixture.take_log();
    ASSERT_FALSE(logged.empty());
    EXPECT_TRUE(logged[0].ends_with("{0x0 0 0 0}")) << logged[0];
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentSite, NullOutParameterIsRefused)
{
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.as<IOleObject>()->GetClientSite(nullptr), E_POINTER);
}

QUILL_DOCUMENT_TEST(DocumentSite, IsReleasedWithTheDocument)
{
    fixture.create();
    fixture.set_site();
    fixture.release(); // checks the references to the site
}

// The in-place site that was queried from the client site; nullptr without one.
ComPtr<IOleInPlaceSite> in_place_site_of(const document_fixture& fixture)
{
    ComPtr<IOleInPlaceSite> site;
    EXPECT_EQ(fixture.as<IOleDocumentView>()->GetInPlaceSite(&site), S_OK);
    return site;
}

// A document that queried its in-place site itself and is no longer active.
void activate_without_a_view(document_fixture& fixture)
{
    fixture.host.site.offered.document_site = false;
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    EXPECT_EQ(fixture.do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_NE(fixture.window(), nullptr);
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(in_place_site_of(fixture).Get(), fixture.host.site.in_place_site());
}

QUILL_DOCUMENT_TEST(DocumentSite, ItsInPlaceSiteIsReleasedWithIt)
{
    document_host other;
    other.site.offered.document_site = false;
    activate_without_a_view(fixture);
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(other.site.client_site()), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
    EXPECT_EQ(in_place_site_of(fixture), nullptr);
    EXPECT_EQ(fixture.as<IOleObject>()->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(other.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentSite, SetAgainIsQueriedForItsInPlaceSiteAgain)
{
    activate_without_a_view(fixture);
    EXPECT_EQ(fixture.set_site(), S_OK);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 2);
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 0);
}

// Set by the host, it no longer belongs to the client site, even if it is the same object.
QUILL_DOCUMENT_TEST(DocumentSite, TheInPlaceSiteOfAViewIsKept)
{
    activate_without_a_view(fixture);
    EXPECT_EQ(fixture.as<IOleDocumentView>()->SetInPlaceSite(fixture.host.site.in_place_site()), S_OK);
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    EXPECT_EQ(in_place_site_of(fixture).Get(), fixture.host.site.in_place_site());
    fixture.release();
}

} // namespace
} // namespace quill::test
