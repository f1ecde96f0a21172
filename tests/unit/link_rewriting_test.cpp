#include "sharepoint/link_rewriting.h"

#include <gtest/gtest.h>

#include <iterator>
#include <regex>
#include <string>

namespace quill {
namespace {

// What the scanner has to be equal to, for text short enough for the library's matcher.
std::optional<std::wstring> rewritten_by_expression(const std::wstring& markup)
{
    static const std::wregex handler(LR"(onclick="[^"]*PdfFile\.OpenDocuments[^"]*")");
    if (!std::regex_search(markup, handler))
        return std::nullopt;
    return std::regex_replace(markup, handler, L"");
}

struct rewriting_case
{
    const wchar_t* markup;
    const wchar_t* rewritten; // null: nothing to rewrite
};

TEST(LinkRewriting, RemovesTheHandlers)
{
    const rewriting_case cases[] = {
        {L"", nullptr},
        {LR"(<a href="/x.pdf">x</a>)", nullptr},
        {LR"(<a href="/x.pdf" onclick="PdfFile.OpenDocuments(this)" id="1">x</a>)",
         LR"(<a href="/x.pdf"  id="1">x</a>)"},
        {LR"(<a onclick="return a(), PdfFile.OpenDocuments('x'); b();">)", LR"(<a >)"},
        {LR"(<a onclick="PdfFile.OpenDocuments">)", LR"(<a >)"},
        {LR"(<a onclick="PdfFile.OpenDocuments>)", nullptr},
        {LR"(<a onclick="PdfFile.OpenDocument">)", nullptr},
        {LR"(<a onclick="PdfFileXOpenDocuments()">)", nullptr},
        {LR"(<a onclick="pdffile.opendocuments()">)", nullptr},
        {LR"(<a ONCLICK="PdfFile.OpenDocuments()">)", nullptr},
        {LR"(<a onclick='PdfFile.OpenDocuments()'>)", nullptr},
        {LR"(<a onclick = "PdfFile.OpenDocuments()">)", nullptr},
        {LR"(<a onclick="x()" title="PdfFile.OpenDocuments">)", nullptr},
        {LR"(<a onclick="x()" onclick="PdfFile.OpenDocuments()">)", LR"(<a onclick="x()" >)"},
        {LR"(<a data-onclick="PdfFile.OpenDocuments()">)", LR"(<a data->)"},
        {LR"(<a title="onclick="PdfFile.OpenDocuments"">)", LR"(<a title="">)"},
        {LR"(onclick="a onclick="PdfFile.OpenDocuments"b)", LR"(onclick="a b)"},
        {LR"(onclick="onclick="onclick="PdfFile.OpenDocuments")", LR"(onclick="onclick=")"},
        {LR"(1onclick="PdfFile.OpenDocuments"2onclick="PdfFile.OpenDocuments"3)", L"123"},
        {LR"(onclick="PdfFile.OpenDocuments"onclick="PdfFile.OpenDocuments")", L""},
        {LR"(onclick="PdfFile.OpenDocumentsPdfFile.OpenDocuments")", L""},
        {L"<a onclick=\"\nPdfFile.OpenDocuments\r\n()\">", L"<a >"},
        {LR"(<a onclick="öPdfFile.OpenDocuments文">ä</a>)", LR"(<a >ä</a>)"},
        {LR"($& $1 onclick="PdfFile.OpenDocuments" $`)", LR"($& $1  $`)"},
    };
    for (const rewriting_case& expected : cases) {
        SCOPED_TRACE(testing::PrintToString(expected.markup));
        const auto rewritten = without_open_handlers(expected.markup);
        EXPECT_EQ(rewritten.has_value(), expected.rewritten != nullptr);
        EXPECT_EQ(rewritten.value_or(L""), expected.rewritten ? expected.rewritten : L"");
        EXPECT_EQ(rewritten, rewritten_by_expression(expected.markup));
    }
}

// All texts of up to six of the pieces that matter.
TEST(LinkRewriting, EqualsTheExpression)
{
    const wchar_t* const pieces[] = {L"onclick=", L"\"", L"PdfFile.OpenDocuments", L"x", L"onclick=\""};
    constexpr std::size_t longest = 6;
    std::size_t rewritten_texts = 0;
    for (std::size_t length = 0, texts = 1; length <= longest; ++length, texts *= std::size(pieces)) {
        for (std::size_t number = 0; number < texts; ++number) {
            std::wstring markup;
            for (std::size_t rest = number, i = 0; i < length; ++i, rest /= std::size(pieces))
                markup += pieces[rest % std::size(pieces)];
            const auto rewritten = without_open_handlers(markup);
            ASSERT_EQ(rewritten, rewritten_by_expression(markup)) << testing::PrintToString(markup);
            rewritten_texts += rewritten.has_value();
        }
    }
    EXPECT_GT(rewritten_texts, 1'000u);
}

TEST(LinkRewriting, IsSafeForMegabytes)
{
    const std::wstring filling(3'000'000, L'x');
    EXPECT_EQ(without_open_handlers(L"<a onclick=\"" + filling + L"PdfFile.OpenDocuments" + filling + L"\">"),
              L"<a >");
    EXPECT_EQ(without_open_handlers(L"<a onclick=\"" + filling), std::nullopt);

    std::wstring attributes;
    std::wstring kept;
    for (int i = 0; i < 100'000; ++i) {
        attributes += L"onclick=\"x\" onclick=\"PdfFile.OpenDocuments\" ";
        kept += L"onclick=\"x\"  ";
    }
    EXPECT_EQ(without_open_handlers(attributes), kept);
}

// Quotes that never close make every attribute reach for the end of the text: still one pass.
TEST(LinkRewriting, IsLinearForUnclosedAttributes)
{
    std::wstring markup;
    for (int i = 0; i < 300'000; ++i)
        markup += L"onclick=";
    EXPECT_EQ(without_open_handlers(markup), std::nullopt);
    markup += L"\"PdfFile.OpenDocuments";
    EXPECT_EQ(without_open_handlers(markup), std::nullopt);
}

} // namespace
} // namespace quill
