// Markup to trees and back, what is displayed where, and the class of each element; without a browser.
#include "stand_ins/html_engine/dom/html_reader.h"
#include "stand_ins/html_engine/dom/html_writer.h"
#include "stand_ins/html_engine/embedded_class.h"
#include "stand_ins/html_engine/identifiers.h"
#include "stand_ins/html_engine/page_layout.h"
#include "stand_ins/html_engine/table_columns.h"
#include "tests/support/private_registry.h"
#include "tests/support/scopes.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;

std::wstring body_of(std::wstring_view html)
{
    return inner_html(*find_element(*read_page(html), L"body"));
}

TEST(HtmlReader, RepairsMarkupAsBrowsersDo)
{
    EXPECT_EQ(body_of(L"<p>one<p>two"), L"<p>one</p><p>two</p>");
    EXPECT_EQ(body_of(L"<b><i>x</b>y</i>"), L"<b><i>x</i></b><i>y</i>");
    EXPECT_EQ(body_of(L"<table><tr><td>c</table>"), L"<table><tbody><tr><td>c</td></tr></tbody></table>");
    EXPECT_EQ(body_of(L"<embed type=application/pdf src=a.pdf>text"),
              L"<embed type=\"application/pdf\" src=\"a.pdf\">text");
    EXPECT_EQ(body_of(L"<object data=a.pdf>in</object>out"), L"<object data=\"a.pdf\">in</object>out");
    EXPECT_EQ(body_of(L"<My-Thing Some=1>x</my-thing>"), L"<my-thing some=\"1\">x</my-thing>");
    EXPECT_EQ(body_of(L""), L"");
}

TEST(HtmlReader, AlwaysBuildsACompletePage)
{
    for (const wchar_t* html : {L"", L"text", L"<html>", L"<body>", L"\xFFFD<<<>>"}) {
        const auto page = read_page(html);
        EXPECT_TRUE(find_element(*page, L"html") && find_element(*page, L"head") &&
                    find_element(*page, L"body"));
    }
}

TEST(HtmlReader, KeepsEntitiesQuotesAndScripts)
{
    EXPECT_EQ(body_of(L"a &lt; b &amp;&nbsp;c &eacute;"), L"a &lt; b &amp;&nbsp;c \u00E9");
    EXPECT_EQ(body_of(L"<a title='say \"no\" &amp; go'>x</a>"),
              L"<a title=\"say &quot;no&quot; &amp; go\">x</a>");
    EXPECT_EQ(body_of(L"x<script>if (a < b && c) x('</p>');</script>"),
              L"x<script>if (a < b && c) x('</p>');</script>");
    EXPECT_EQ(body_of(L"x<!-- note -->"), L"x<!-- note -->");
}

TEST(HtmlReader, WritesWhatItReadsTheSameAgain)
{
    const std::wstring once = outer_html(*read_page(
        L"<!doctype html><title>T</title><p class=a>x<br>y<ul><li>1<li>2</ul><a onclick=\"f('&quot;')\">z"));
    EXPECT_EQ(outer_html(*read_page(once)), once);
    EXPECT_THAT(once, testing::StartsWith(L"<!DOCTYPE html><html><head><title>T</title></head><body>"));
}

TEST(HtmlReader, ReadsAFragmentForItsContext)
{
    const auto in_row = read_fragment(L"<td>x</td>", L"tr");
    ASSERT_EQ(in_row.size(), 1u);
    EXPECT_EQ(outer_html(*in_row[0]), L"<td>x</td>");
    const auto in_block = read_fragment(L"<td>x</td>", L"div");
    ASSERT_EQ(in_block.size(), 1u);
    EXPECT_EQ(outer_html(*in_block[0]), L"x");
    EXPECT_TRUE(read_fragment(L"", L"div").empty());
    EXPECT_EQ(read_fragment(L"a<i>b</i>c", L"unheard-of").size(), 3u);
}

TEST(HtmlReader, BoundsTheDepthOfNesting)
{
    std::wstring html;
    for (int i = 0; i < 2'000; ++i)
        html += L"<div>";
    const auto page = read_page(html + L"<p id=deep>");
    int depth = 0;
    for (const dom_node* node = find_element(*page, L"p").get(); node != nullptr; node = node->parent())
        ++depth;
    EXPECT_GT(depth, 400);
    EXPECT_LT(depth, 600);
}

TEST(HtmlReader, DecodesBytesByTheirEncoding)
{
    EXPECT_EQ(decode_page("caf\xC3\xA9"), L"caf\u00E9");
    EXPECT_EQ(decode_page("caf\xE9"), L"caf\u00E9");
    EXPECT_EQ(decode_page("\xEF\xBB\xBFx"), L"x");
    EXPECT_EQ(decode_page(std::string_view("\xFF\xFEx\0", 4)), L"x");
    EXPECT_EQ(decode_page(""), L"");
}

TEST(DomNode, AttributesAreFoundInAnyCase)
{
    dom_node node(node_kind::element, L"a");
    node.set_attribute(L"HREF", L"/X.pdf");
    EXPECT_EQ(node.attribute(L"href"), L"/X.pdf");
    node.set_attribute(L"href", L"/y.pdf");
    EXPECT_EQ(node.attributes.size(), 1u);
    EXPECT_TRUE(node.remove_attribute(L"Href"));
    EXPECT_FALSE(node.remove_attribute(L"Href"));
    EXPECT_FALSE(node.attribute(L"href").has_value());
}

TEST(DomNode, PartsOutliveThePageTheyWereIn)
{
    dom_node::pointer part;
    {
        const auto page = read_page(L"<div><p>x</p></div>");
        part = find_element(*page, L"p");
        EXPECT_TRUE(page->contains(*part));
    }
    EXPECT_EQ(part->parent(), nullptr);
    EXPECT_EQ(outer_html(*part), L"<p>x</p>");
    EXPECT_FALSE(part->replace_with({}));
}

class EmbeddedClass : public testing::Test
{
protected:
    static void set(const std::wstring& key, const wchar_t* name, const std::wstring& text)
    {
        EXPECT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, text.c_str(),
                                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    static std::optional<CLSID> class_of(std::wstring_view html)
    {
        return embedded_class(*read_fragment(html, L"div").at(0));
    }

    private_registry registry;
};

TEST_F(EmbeddedClass, IsThatOfTheTypeOrOfTheExtensionsType)
{
    set(L"MIME\\Database\\Content Type\\application/pdf", L"CLSID",
        L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}");
    set(L"MIME\\Database\\Content Type\\text/html", L"CLSID", L"{5C2E8F71-0B4D-4A36-9DE8-63F127A0C45E}");
    set(L".pdf", L"Content Type", L"application/pdf");
    constexpr CLSID document = {0x5E2C7A90, 0x1B3D, 0x4F6E, {0x8A, 0x21, 0xC4, 0xD9, 0xE0, 0x7B, 0x3F, 0x15}};

    for (const wchar_t* html :
         {L"<embed type='application/pdf'>", L"<embed TYPE=' Application/PDF; charset=binary' src=x>",
          L"<object type=application/pdf></object>", L"<embed src=a.pdf>", L"<object data='b.PDF?x#page=2'>"})
        EXPECT_EQ(class_of(html), document) << html;
    for (const wchar_t* html :
         {L"<embed>", L"<embed src=a.doc>", L"<embed type=video/mp4 src=a.pdf>", L"<object src=a.pdf>",
          L"<embed data=a.pdf>", L"<iframe src=a.pdf>", L"<a href=a.pdf>", L"<embed type=text/html>",
          L"<embed type=''>", L"<embed src='folder.pdf/x'>"})
        EXPECT_EQ(class_of(html), std::nullopt) << html;
}

TEST_F(EmbeddedClass, IsAlsoThatOfATypeThatNamesTheExtension)
{
    set(L"MIME\\Database\\Content Type\\application/other", L"Extension", L".pdf"); // no class
    set(L"MIME\\Database\\Content Type\\application/x-pdf", L"Extension", L".PDF");
    set(L"MIME\\Database\\Content Type\\application/x-pdf", L"CLSID",
        L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}");
    EXPECT_TRUE(class_of(L"<object data=/a/b.Pdf></object>").has_value());
    EXPECT_FALSE(class_of(L"<object data=/a/b.pdfx></object>").has_value());
}

TEST_F(EmbeddedClass, IsNoneWithoutARegistration)
{
    EXPECT_EQ(class_of(L"<embed type='application/pdf' src=a.pdf>"), std::nullopt);
}

TEST(ExtensionOf, LeavesOutWhatFollowsThePath)
{
    EXPECT_EQ(extension_of(L"http://h/a.b/c.pdf?x=1.txt#p.q"), L".pdf");
    EXPECT_EQ(extension_of(L"a.b/c"), L"");
    EXPECT_EQ(extension_of(L"c:x"), L"");
    EXPECT_EQ(extension_of(L""), L"");
}

// Every letter is ten pixels wide and twenty high.
page_layout arrange(std::wstring_view html, int width)
{
    layout_context surroundings;
    surroundings.width = width;
    surroundings.measure = [](std::wstring_view text, const text_style&) {
        return SIZE{static_cast<LONG>(10 * text.size()), 20};
    };
    surroundings.is_box = [](const dom_node& element) { return element.is(L"embed"); };
    return lay_out(*find_element(*read_page(html), L"body"), surroundings);
}

std::vector<std::wstring> texts_of(const page_layout& page)
{
    std::vector<std::wstring> texts;
    for (const auto& text : page.texts)
        texts.push_back(text.text);
    return texts;
}

TEST(PageLayout, BreaksLinesBetweenWords)
{
    const auto page = arrange(L"<p>one two  three\n four", 32 + 100);
    EXPECT_THAT(texts_of(page), ElementsAre(L"one two", L"three four"));
    EXPECT_LT(page.texts[0].place.top, page.texts[1].place.top);
    EXPECT_EQ(page.texts[0].place.left, page.texts[1].place.left);
}

TEST(PageLayout, ShowsLinksApartAndHidesWhatIsNoText)
{
    const auto page = arrange(L"<style>a</style><script>b</script>go <a href=x>there <b>now</b></a>.", 900);
    EXPECT_THAT(texts_of(page), ElementsAre(L"go", L"there", L"now", L"."));
    EXPECT_FALSE(page.texts[0].style.link);
    EXPECT_TRUE(page.texts[1].style.link);
    EXPECT_TRUE(page.texts[2].style.link && page.texts[2].style.bold);
    EXPECT_EQ(page.texts[2].element->name, L"b");
}

TEST(PageLayout, PlacesBoxesAtTheirElements)
{
    const auto page =
        arrange(L"<p>above</p><embed width=200 height=100><p>below</p><embed width=50% height=40>", 432);
    ASSERT_EQ(page.boxes.size(), 2u);
    EXPECT_EQ(page.boxes[0].place.right - page.boxes[0].place.left, 200);
    EXPECT_EQ(page.boxes[0].place.bottom - page.boxes[0].place.top, 100);
    EXPECT_EQ(page.boxes[1].place.right - page.boxes[1].place.left, 200);
    EXPECT_GT(page.boxes[0].place.top, page.texts[0].place.bottom);
    EXPECT_GE(page.texts[1].place.top, page.boxes[0].place.bottom);
    EXPECT_GE(page.height, page.boxes[1].place.bottom);
}

TEST(PageLayout, PlacesTheCellsOfARowSideBySide)
{
    const auto page = arrange(L"<table><tr><td>a<td>b<tr><td>c<td>d</table>", 432);
    ASSERT_EQ(page.texts.size(), 4u);
    EXPECT_EQ(page.texts[0].place.top, page.texts[1].place.top);
    EXPECT_GT(page.texts[1].place.left, page.texts[0].place.right);
    EXPECT_EQ(page.texts[0].place.left, page.texts[2].place.left);
    EXPECT_EQ(page.texts[1].place.left, page.texts[3].place.left);
    EXPECT_GT(page.texts[2].place.top, page.texts[0].place.top);
}

TEST(PageLayout, ColumnsAreAsWideAsTheirWidestCells)
{
    const auto page = arrange(L"<table><tr><td><td>a<td>b<tr><td><td>long words<td>c</table>", 900);
    ASSERT_EQ(texts_of(page), (std::vector<std::wstring>{L"a", L"b", L"long words", L"c"}));
    EXPECT_EQ(page.texts[0].place.left, 16); // the first column is empty
    EXPECT_GT(page.texts[1].place.left, page.texts[2].place.right);
    EXPECT_LT(page.texts[1].place.left, 200);
    const auto wide = arrange(L"<table width='100%'><tr><td>aa<td>bb</table>", 432);
    EXPECT_EQ(wide.texts[1].place.left - wide.texts[0].place.left, 200);
}

TEST(PageLayout, LaysOutTablesInTablesInTime)
{
    std::wstring nested = L"word";
    for (int depth = 0; depth < 40; ++depth)
        nested = L"<table><tr><td>" + nested + L"</td></tr></table>";
    EXPECT_EQ(texts_of(arrange(nested, 900)), std::vector<std::wstring>{L"word"});
}

TEST(PageLayout, ColorsWhatThePageStates)
{
    const auto page = arrange(
        L"<div bgcolor='#0072c6'><font color='#fffefd'>on blue</font></div><p bgcolor=red>plain", 432);
    ASSERT_EQ(page.areas.size(), 1u);
    EXPECT_EQ(page.areas[0].color, RGB(0x00, 0x72, 0xC6));
    EXPECT_EQ(page.texts[0].style.color, RGB(0xFF, 0xFE, 0xFD));
    EXPECT_LT(page.areas[0].place.top, page.texts[0].place.top);
    EXPECT_GT(page.areas[0].place.bottom, page.texts[0].place.bottom);
    EXPECT_GE(page.texts[1].place.top, page.areas[0].place.bottom);
    EXPECT_FALSE(page.texts[1].style.color.has_value());
}

TEST(ShareWidth, FillsTheStatedWidthWithinTheAvailableOne)
{
    using widths = std::vector<int>;
    EXPECT_EQ(share_width({}, 100, 50), widths{});
    EXPECT_EQ(share_width({10, 30}, 100, 0), (widths{10, 30}));
    EXPECT_EQ(share_width({10, 30}, 100, 80), (widths{20, 60}));
    EXPECT_EQ(share_width({10, 30}, 20, 80), (widths{5, 15}));
    EXPECT_EQ(share_width({100, 300}, 40, 0), (widths{10, 30}));
    EXPECT_EQ(share_width({0, 30}, 100, 60), (widths{0, 60}));
    EXPECT_EQ(share_width({0, 0}, 100, 60), (widths{0, 0}));
}

TEST(PageLayout, HandlesAnyWidth)
{
    for (const int width : {0, 1, 40, 100'000})
        EXPECT_GT(arrange(L"<h1>word</h1><table><tr><td>a<td>b</table><embed width=900>", width).height, 0);
}

} // namespace
} // namespace quill::test
