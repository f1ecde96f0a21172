// The interfaces of a page that the system's browser engine shows.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/browser/html_page_access.h"
#include "tests/browser/registered_pages.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;

constexpr char page_source[] =
    "<!DOCTYPE html><html><head><title>Shared documents</title>"
    "<meta name=GENERATOR content='Page Works 7'><meta charset=utf-8>"
    "<script src='/js/one.js'></script><script>var x = 1 < 2;</script></head>"
    "<body id=body><div id=list><a id=a1 class='link big' href='/x.pdf' onclick=\"return go(this)\">One</a>"
    "<a id=a2 name=named href='sub/y.pdf'>Two</a><A ID=a3>Three</A></div>"
    "<p id=p1>Text &amp; more<br id=br></p><form id=f></form><img id=i src=p.png></body></html>";

class HtmlDocument : public testing::Test
{
protected:
    HtmlDocument() { server.route("/dir/page.html", http_response::ok(page_source, "text/html")); }

    CComPtr<IHTMLDocument2> page(engine& browser)
    {
        return open_page(browser, server.url(L"/dir/page.html"));
    }

    static CComVariant attribute(IHTMLElement* element, const wchar_t* name, LONG flags)
    {
        CComVariant value;
        EXPECT_EQ(element->getAttribute(CComBSTR(name), flags, &value), S_OK);
        return value;
    }

    ole_apartment apartment;
    cross_process_lock lock{L"registration"};
    registered_pages pages;
    http_server server;
};

TEST_F(HtmlDocument, HasUrlTitleAndState)
{
    engine browser;
    const auto document = page(browser);
    CComBSTR title;
    EXPECT_EQ(document->get_title(&title), S_OK);
    EXPECT_EQ(title, L"Shared documents");
    CComBSTR url;
    EXPECT_EQ(document->get_URL(&url), S_OK);
    EXPECT_EQ(url, server.url(L"/dir/page.html").c_str());
}

TEST_F(HtmlDocument, KeepsTheFragmentOfItsUrl)
{
    engine browser;
    const auto document = open_page(browser, server.url(L"/dir/page.html#page=5#zoom=150"));
    ASSERT_TRUE(document);
    EXPECT_EQ(server.requests().at(0).target, "/dir/page.html");
}

TEST_F(HtmlDocument, FindsElementsInThePagesOrder)
{
    engine browser;
    const auto document = page(browser);
    EXPECT_THAT(ids_of(elements_by_tag(document, L"A")), ElementsAre(L"a1", L"a2", L"a3"));
    EXPECT_EQ(elements_by_tag(document, L"meta").size(), 2u);
    EXPECT_EQ(elements_by_tag(document, L"nothing").size(), 0u);
    EXPECT_EQ(tag_of(element_by_id(document, L"a3")), L"A");
    EXPECT_FALSE(element_by_id(document, L"absent"));

    CComPtr<IHTMLElement> body;
    ASSERT_EQ(document->get_body(&body), S_OK);
    CComPtr<IDispatch> children;
    ASSERT_EQ(body->get_children(&children), S_OK);
    EXPECT_THAT(ids_of(elements_of(CComQIPtr<IHTMLElementCollection>(children))),
                ElementsAre(L"list", L"p1", L"f", L"i"));
    CComPtr<IDispatch> all;
    ASSERT_EQ(body->get_all(&all), S_OK);
    EXPECT_THAT(ids_of(elements_of(CComQIPtr<IHTMLElementCollection>(all))),
                ElementsAre(L"list", L"a1", L"a2", L"a3", L"p1", L"br", L"f", L"i"));
    CComPtr<IHTMLElementCollection> links;
    ASSERT_EQ(document->get_links(&links), S_OK);
    EXPECT_THAT(ids_of(elements_of(links)), ElementsAre(L"a1", L"a2"));
}

TEST_F(HtmlDocument, CollectionsFindByNumberNameAndTag)
{
    engine browser;
    const auto document = page(browser);
    CComPtr<IHTMLElementCollection> all;
    ASSERT_EQ(document->get_all(&all), S_OK);
    CComPtr<IDispatch> item;
    EXPECT_EQ(all->item(CComVariant(L"named"), CComVariant(), &item), S_OK);
    EXPECT_EQ(id_of(CComQIPtr<IHTMLElement>(item)), L"a2");
    item.Release();
    EXPECT_EQ(all->item(CComVariant(9999), CComVariant(0), &item), S_OK);
    EXPECT_FALSE(item);
    EXPECT_EQ(all->item(CComVariant(-1), CComVariant(0), &item), E_INVALIDARG);
    EXPECT_FALSE(item);
    EXPECT_EQ(all->tags(CComVariant(L"a"), &item), S_OK);
    EXPECT_EQ(elements_of(CComQIPtr<IHTMLElementCollection>(item)).size(), 3u);
    EXPECT_EQ(all->get_length(nullptr), E_POINTER);
}

TEST_F(HtmlDocument, ReturnsAttributesAsWrittenInThePage)
{
    engine browser;
    const auto document = page(browser);
    const auto link = element_by_id(document, L"a2");
    for (const LONG flags : {0, 2})
        EXPECT_EQ(attribute(link, L"HREF", flags), CComVariant(L"sub/y.pdf")) << flags;
    EXPECT_EQ(attribute(link, L"href", 4), CComVariant(server.url(L"/dir/sub/y.pdf").c_str()));
    EXPECT_EQ(attribute(link, L"target", 2).vt, VT_NULL);
    EXPECT_EQ(attribute(link, L"HREF", 1).vt, VT_NULL) << "the name is case-sensitive";
    EXPECT_EQ(link->getAttribute(CComBSTR(L"href"), 2, nullptr), E_POINTER);

    const auto first = element_by_id(document, L"a1");
    CComBSTR class_name;
    EXPECT_EQ(first->get_className(&class_name), S_OK);
    EXPECT_EQ(class_name, L"link big");
    EXPECT_EQ(first->setAttribute(CComBSTR(L"Title"), CComVariant(7), 1), S_OK);
    EXPECT_EQ(attribute(first, L"title", 2), CComVariant(L"7"));
    VARIANT_BOOL removed = VARIANT_FALSE;
    EXPECT_EQ(first->removeAttribute(CComBSTR(L"onclick"), 1, &removed), S_OK);
    EXPECT_EQ(removed, VARIANT_TRUE);
    EXPECT_EQ(attribute(first, L"onclick", 2).vt, VT_NULL);
}

TEST_F(HtmlDocument, SpecialElementsHaveTheirInterfaces)
{
    engine browser;
    const auto document = page(browser);
    const auto metas = elements_by_tag(document, L"meta");
    const CComQIPtr<IHTMLMetaElement> meta(metas.at(0));
    ASSERT_TRUE(meta);
    CComBSTR name;
    CComBSTR content;
    EXPECT_EQ(meta->get_name(&name), S_OK);
    EXPECT_EQ(meta->get_content(&content), S_OK);
    EXPECT_EQ(name, L"GENERATOR");
    EXPECT_EQ(content, L"Page Works 7");
    const CComQIPtr<IHTMLMetaElement> second(metas.at(1));
    CComBSTR absent;
    EXPECT_EQ(second->get_name(&absent), S_OK);
    EXPECT_FALSE(absent);

    const auto scripts = elements_by_tag(document, L"script");
    CComBSTR source;
    EXPECT_EQ(CComQIPtr<IHTMLScriptElement>(scripts.at(0))->get_src(&source), S_OK);
    EXPECT_EQ(source, L"/js/one.js");
    CComBSTR text;
    EXPECT_EQ(CComQIPtr<IHTMLScriptElement>(scripts.at(1))->get_text(&text), S_OK);
    EXPECT_EQ(text, L"var x = 1 < 2;");

    CComBSTR address;
    EXPECT_EQ(CComQIPtr<IHTMLAnchorElement>(element_by_id(document, L"a2"))->get_href(&address), S_OK);
    EXPECT_EQ(address, server.url(L"/dir/sub/y.pdf").c_str());
    EXPECT_FALSE(CComQIPtr<IHTMLAnchorElement>(element_by_id(document, L"p1")));
}

TEST_F(HtmlDocument, ReplacingMarkupPutsNewElementsInTheOldPlace)
{
    engine browser;
    const auto document = page(browser);
    const auto old = element_by_id(document, L"a1");
    EXPECT_EQ(outer_html_of(old),
              L"<a id=\"a1\" class=\"link big\" href=\"/x.pdf\" onclick=\"return go(this)\">One</a>");
    EXPECT_EQ(old->put_outerHTML(CComBSTR(L"<a id=a1 href='/x.pdf'>One</a>")), S_OK);

    const auto replaced = element_by_id(document, L"a1");
    EXPECT_FALSE(replaced.IsEqualObject(old));
    EXPECT_EQ(outer_html_of(replaced), L"<a id=\"a1\" href=\"/x.pdf\">One</a>");
    EXPECT_THAT(ids_of(elements_by_tag(document, L"a")), ElementsAre(L"a1", L"a2", L"a3"));

    CComPtr<IHTMLElement> parent;
    EXPECT_EQ(old->get_parentElement(&parent), S_OK);
    EXPECT_FALSE(parent) << "the old element is no part of the page";
    EXPECT_EQ(old->put_outerHTML(CComBSTR(L"<i>")), E_FAIL);
}

TEST_F(HtmlDocument, CollectionsFollowThePage)
{
    engine browser;
    const auto document = page(browser);
    CComPtr<IHTMLElementCollection> links;
    ASSERT_EQ(CComQIPtr<IHTMLDocument3>(document)->getElementsByTagName(CComBSTR(L"a"), &links), S_OK);
    EXPECT_EQ(elements_of(links).size(), 3u);
    EXPECT_EQ(element_by_id(document, L"list")->put_innerHTML(CComBSTR(L"<a id=new>New</a>")), S_OK);
    EXPECT_THAT(ids_of(elements_of(links)), ElementsAre(L"new"));
}

TEST_F(HtmlDocument, ElementsHaveOneIdentity)
{
    engine browser;
    const auto document = page(browser);
    const auto one = element_by_id(document, L"a1");
    const auto same = elements_by_tag(document, L"a").at(0);
    EXPECT_TRUE(one.IsEqualObject(same));
    EXPECT_FALSE(one.IsEqualObject(element_by_id(document, L"a2")));
    const CComQIPtr<IHTMLElement2> element2(one);
    EXPECT_TRUE(one.IsEqualObject(element2));
    CComPtr<IDispatch> owner;
    EXPECT_EQ(one->get_document(&owner), S_OK);
    EXPECT_TRUE(document.IsEqualObject(owner));
}

TEST_F(HtmlDocument, WorksByNamesAsForScripts)
{
    engine browser;
    const auto document = page(browser);
    const CComQIPtr<IDispatch> script(element_by_id(document, L"a1"));
    wchar_t name[] = L"outerHTML";
    LPOLESTR names = name;
    DISPID id = 0;
    ASSERT_EQ(script->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    DISPPARAMS none{};
    CComVariant value;
    EXPECT_EQ(script->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &value, nullptr,
                             nullptr),
              S_OK);
    EXPECT_EQ(value, CComVariant(outer_html_of(element_by_id(document, L"a1")).c_str()));
}

TEST_F(HtmlDocument, WhatNoPageHasIsNotImplemented)
{
    engine browser;
    const auto document = page(browser);
    CComPtr<IHTMLWindow2> window;
    EXPECT_EQ(document->get_parentWindow(&window), E_NOTIMPL);
    CComPtr<IHTMLStyle> style;
    EXPECT_EQ(element_by_id(document, L"a1")->get_style(&style), E_NOTIMPL);
}

TEST_F(HtmlDocument, CountsReferencesToTheLastOne)
{
    engine browser;
    auto document = page(browser);
    ASSERT_TRUE(wait_until([this] { return pages.living().downloads == 0; }));
    const live_objects before = pages.living();
    EXPECT_EQ(before.pages, 1);
    EXPECT_EQ(before.elements, 0);
    {
        const auto links = elements_by_tag(document, L"a");
        EXPECT_EQ(pages.living().elements, 3);
        EXPECT_EQ(pages.living().references, before.references + 3);
    }
    EXPECT_EQ(pages.living(), before);

    // A reference to an element keeps the element, not the page.
    const auto kept = element_by_id(document, L"a1");
    document.Release();
    browser.close();
    EXPECT_TRUE(wait_until([this] { return pages.living().pages == 0; }));
    EXPECT_EQ(pages.living().elements, 1);
    EXPECT_EQ(id_of(kept), L"a1");
    CComPtr<IDispatch> owner;
    EXPECT_EQ(kept->get_document(&owner), E_FAIL);
    EXPECT_EQ(kept->click(), E_FAIL);
}

TEST_F(HtmlDocument, ReadsPagesOfEverySizeAndFraming)
{
    engine browser;
    const std::string large = "<p id=first>" + std::string(200'000, 'x') + "</p><p id=last>";
    int number = 0;
    for (const auto framing : {http_response::framing::content_length, http_response::framing::chunked,
                               http_response::framing::until_close}) {
        http_response response = http_response::ok(large, "text/html");
        response.body_framing = framing;
        response.piece_size = 30'000;
        const std::string target = "/large" + std::to_string(++number) + ".html";
        server.route(target, response);
        const auto document = open_page(browser, server.url(std::wstring(target.begin(), target.end())));
        EXPECT_TRUE(element_by_id(document, L"last")) << target;
    }
    server.route("/empty.html", http_response::ok("", "text/html"));
    server.route("/tiny.html", http_response::ok("<p id=t>", "text/html"));
    EXPECT_TRUE(element_by_id(open_page(browser, server.url(L"/tiny.html")), L"t"));
}

} // namespace
} // namespace quill::test
