#include "sharepoint/decisions/links.h"

#include <gtest/gtest.h>

#include <iterator>
#include <regex>
#include <string>

namespace quill {
namespace {

// The reference for the scanner, for text that is short enough for the library's recursive matcher.
std::optional<std::wstring> rewritten_by_expression(const std::wstring& markup)
{
    static const std::wregex handler(LR"m(onclick="[^"]*PdfFile\.OpenDocuments[^"]*")m");
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
        {LR"m(<a href="/x.pdf">x</a>)m", nullptr},
        {LR"m(<a href="/x.pdf" onclick="PdfFile.OpenDocuments(this)" id="1">x</a>)m",
         LR"m(<a href="/x.pdf"  id="1">x</a>)m"},
        {LR"m(<a onclick="return a(), PdfFile.OpenDocuments('x'); b();">)m", LR"m(<a >)m"},
        {LR"m(<a onclick="PdfFile.OpenDocuments">)m", LR"m(<a >)m"},
        {LR"m(<a onclick="PdfFile.OpenDocuments>)m", nullptr},
        {LR"m(<a onclick="PdfFile.OpenDocument">)m", nullptr},
        {LR"m(<a onclick="PdfFileXOpenDocuments()">)m", nullptr},
        {LR"m(<a onclick="pdffile.opendocuments()">)m", nullptr},
        {LR"m(<a ONCLICK="PdfFile.OpenDocuments()">)m", nullptr},
        {LR"m(<a onclick='PdfFile.OpenDocuments()'>)m", nullptr},
        {LR"m(<a onclick = "PdfFile.OpenDocuments()">)m", nullptr},
        {LR"m(<a onclick="x()" title="PdfFile.OpenDocuments">)m", nullptr},
        {LR"m(<a onclick="x()" onclick="PdfFile.OpenDocuments()">)m", LR"m(<a onclick="x()" >)m"},
        {LR"m(<a data-onclick="PdfFile.OpenDocuments()">)m", LR"m(<a data->)m"},
        {LR"m(<a title="onclick="PdfFile.OpenDocuments"">)m", LR"m(<a title="">)m"},
        {LR"m(onclick="a onclick="PdfFile.OpenDocuments"b)m", LR"m(onclick="a b)m"},
        {LR"m(onclick="onclick="onclick="PdfFile.OpenDocuments")m", LR"m(onclick="onclick=")m"},
        {LR"m(1onclick="PdfFile.OpenDocuments"2onclick="PdfFile.OpenDocuments"3)m", L"123"},
        {LR"m(onclick="PdfFile.OpenDocuments"onclick="PdfFile.OpenDocuments")m", L""},
        {LR"m(onclick="PdfFile.OpenDocumentsPdfFile.OpenDocuments")m", L""},
        {L"<a onclick=\"\nPdfFile.OpenDocuments\r\n()\">", L"<a >"},
        {LR"m(<a onclick="öPdfFile.OpenDocuments文">ä</a>)m", LR"m(<a >ä</a>)m"},
        {LR"m($& $1 onclick="PdfFile.OpenDocuments" $`)m", LR"m($& $1  $`)m"},
    };
    for (const rewriting_case& expected : cases) {
        SCOPED_TRACE(testing::PrintToString(expected.markup));
        const auto rewritten = without_open_handlers(expected.markup);
        EXPECT_EQ(rewritten.has_value(), expected.rewritten != nullptr);
        EXPECT_EQ(rewritten.value_or(L""), expected.rewritten ? expected.rewritten : L"");
        EXPECT_EQ(rewritten, rewritten_by_expression(expected.markup));
    }
}

// All texts of up to six of the relevant pieces.
TEST(LinkRewriting, EqualsTheRegularExpression)
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

// Without a closing quotation mark every attribute extends to the end of the text.
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
