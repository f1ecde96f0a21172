#include "retrieval/url/url_resolution.h"

#include <gtest/gtest.h>

#include <ostream>

namespace quill {
namespace {

struct classified
{
    const wchar_t* text;
    int is_url;
    int is_other_scheme;
};

TEST(IsUrl, LooksForSchemesAnywhere)
{
    const classified cases[] = {
        {L"http://h/a.pdf", 1, 0},
        {L"https://h/a.pdf", 1, 0},
        {L"ftp://h/a.pdf", 1, 0},
        {L"x?u=http://h", 1, 0},
        {L"www.h.example/a.pdf", 1, 1},
        {L"file:///c:/a.pdf", 1, 1},
        {L"mailto:a@b", 1, 1},
        {L"https://h/", 1, 0},
        {L"http://www.h/", 1, 0}, // the first group decides alone
        {L"docs/www.pdf", 1, 1},  // "www." is found anywhere, too
        {L"HTTP://h/", 0, 0},
        {L"Www.h/", 0, 0},
        {L"http:/h", 0, 0},
        {L"a.pdf", 0, 0},
        {L"c:\\a.pdf", 0, 0},
        {L"", 0, 0},
        {nullptr, 0, 0},
    };
    for (const auto& [text, is_url, is_other_scheme] : cases) {
        SCOPED_TRACE(testing::PrintToString(text ? std::wstring(text) : L"null"));
        int flag = 77;
        EXPECT_EQ(IsUrl(text, &flag), is_url);
        EXPECT_EQ(flag, is_other_scheme);
        EXPECT_EQ(IsUrl(text, nullptr), is_url);
    }
}

struct combination
{
    const wchar_t* reference;
    const wchar_t* base;
    const wchar_t* url;
};

// Cases in which CombineUrl and resolve_link agree.
const combination common[] = {
    {L"b.pdf", L"http://h/x/y/z.html", L"http://h/x/y/b.pdf"},
    {L"b.pdf", L"https://h/x/y/z.html", L"https://h/x/y/b.pdf"},
    {L"../b.pdf", L"http://h/x/y/z.html", L"http://h/x/b.pdf"},
    {L"../../b.pdf", L"http://h/x/y/z.html", L"http://h/b.pdf"},
    {L"../../../../../b.pdf", L"http://h/x/y/z.html", L"http://h/b.pdf"},
    {L"../", L"http://h/x/y/z.html", L"http://h/x/"},
    {L"./b.pdf", L"http://h/x/y/z.html", L"http://h/x/y/b.pdf"},
    {L"/b.pdf", L"http://h/x/y/z.html", L"http://h/b.pdf"},
    {L"/b.pdf", L"https://h:8443/x/y/z.html", L"https://h:8443/b.pdf"},
    {L"//other/b.pdf", L"http://h/x/z.html", L"http://h//other/b.pdf"},
    {L"", L"http://h/x/z.html", L"http://h/x/"},
    {L"/", L"http://h/x/z.html", L"http://h/"},
    {L"b.pdf", L"http://h", L"http://h/b.pdf"},
    {L"/b.pdf", L"http://h", L"http://h/b.pdf"},
    {L"../b.pdf", L"http://h", L"http://h/b.pdf"},
    {L"b.pdf", L"http://", L"http:///b.pdf"},
    // The query is removed before the file name, so its slashes do not count.
    {L"b.pdf", L"http://h/x/z.aspx?from=/a/b", L"http://h/x/b.pdf"},
    {L"b.pdf", L"http://h?x/y", L"http://h/b.pdf"},
    {L"b.pdf?q=/1", L"http://h/x/z.html", L"http://h/x/b.pdf?q=/1"},
    // The rules do not know fragments: a slash in one counts like any other.
    {L"b.pdf", L"http://h/z.html#a/b", L"http://h/z.html#a/b.pdf"},
    // Steps inside a reference remove characters from its start.
    {L"a/../b.pdf", L"http://h/x/y/z.html", L"http://h/x/./b.pdf"},
    {L"abcd/../b.pdf", L"http://h/x/y/z.html", L"http://h/./b.pdf"},
    {L"a/./b.pdf", L"http://h/x/z.html", L"http://h/x/./b.pdf"},
    {L"name./b.pdf", L"http://h/x/z.html", L"http://h/x/me./b.pdf"},
    {L"b.pdf", L"ftp://h/x/z.html", L"ftp://h/x/b.pdf"},
    {L"/b.pdf", L"ftp://h/x/z.html", L"ftp:/b.pdf"},
    {L"b.pdf", L"z.html", L"z.html/b.pdf"},
    {L"sub/b.pdf#page=2", L"http://h/x/z.html", L"http://h/x/sub/b.pdf#page=2"},
    {L"#page=2", L"http://h/x/z.html", L"http://h/x/#page=2"},
    {L"a b.pdf", L"http://h/x/z.html", L"http://h/x/a b.pdf"},
    {L"/b.pdf", L"http://h/x/z.pdf?x=1?y=2", L"http://h/b.pdf"},
    {L"b.pdf", L"file:///c:/x/z.pdf", L"file:///c:/x/b.pdf"},
};

void expect_combined(const combination& expected)
{
    std::wstring out = L"left over";
    EXPECT_EQ(CombineUrl(expected.reference, expected.base, out), 1);
    EXPECT_EQ(out, expected.url);
}

void expect_resolved(const combination& expected)
{
    std::wstring out = L"left over";
    EXPECT_TRUE(resolve_link(expected.reference, expected.base, out));
    EXPECT_EQ(out, expected.url);
}

TEST(CombineUrl, FollowsItsRules)
{
    for (const combination& expected : common) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.reference)));
        expect_combined(expected);
    }
}

TEST(ResolveLink, FollowsItsRules)
{
    for (const combination& expected : common) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.reference)));
        expect_resolved(expected);
    }
}

TEST(ResolveLink, ResolvesTheLinksOfADocumentInAFolder)
{
    expect_resolved({L"../b.pdf", L"http://h/a/c/d.pdf", L"http://h/a/b.pdf"});
    expect_resolved({L"/x.pdf", L"http://h/a/c/d.pdf", L"http://h/x.pdf"});
    expect_resolved({L"x.pdf", L"http://h/a/c/d.pdf", L"http://h/a/c/x.pdf"});
}

TEST(CombineUrl, ProtectsTheLengthOfASchemeAnywhereInTheBase)
{
    // An "http://" farther on protects the first seven characters: here "ftp://h".
    expect_combined({L"/b.pdf", L"ftp://h/x?u=http://y/z", L"ftp://h/b.pdf"});
    expect_combined({L"b.pdf", L"ftp://ho/x?u=http://y/z", L"ftp://ho/b.pdf"});
    expect_combined({L"b.pdf", L"ab?c/d?u=https://y/z", L"ab?c/d?u=https://y/b.pdf"});
    // "http://" is searched for first.
    expect_combined({L"/b.pdf", L"https://h/x?u=http://y/z", L"https://b.pdf"});
}

TEST(ResolveLink, ProtectsASchemeAtTheStartOnly)
{
    expect_resolved({L"/b.pdf", L"ftp://h/x?u=http://y/z", L"ftp:/b.pdf"});
    expect_resolved({L"b.pdf", L"ab?c/d?u=https://y/z", L"ab/b.pdf"});
    expect_resolved({L"/b.pdf", L"https://h/x?u=http://y/z", L"https://h/b.pdf"});
}

TEST(CombineUrl, RefusesAnEmptyBase)
{
    std::wstring out = L"left over";
    EXPECT_EQ(CombineUrl(L"b.pdf", L"", out), 0);
    EXPECT_EQ(out, L"");
}

TEST(ResolveLink, RefusesAnEmptyDocumentUrl)
{
    std::wstring out = L"left over";
    EXPECT_FALSE(resolve_link(L"b.pdf", L"", out));
    EXPECT_EQ(out, L"");
}

TEST(CombineUrl, MayWriteOverItsArguments)
{
    std::wstring reference = L"../b.pdf";
    std::wstring base = L"http://h/x/y/z.html";
    EXPECT_EQ(CombineUrl(reference, base, reference), 1);
    EXPECT_EQ(reference, L"http://h/x/b.pdf");
    EXPECT_EQ(CombineUrl(L"/c.pdf", base, base), 1);
    EXPECT_EQ(base, L"http://h/c.pdf");
    EXPECT_TRUE(resolve_link(L"d.pdf", base, base));
    EXPECT_EQ(base, L"http://h/d.pdf");
}

// The page controls the length of a reference. A quadratic algorithm exceeds the time limit of the test.
TEST(UrlResolution, AcceptsReferencesOfManyMegabytes)
{
    constexpr std::size_t steps = 4'000'000;
    std::wstring reference;
    std::wstring base = L"http://h/";
    for (std::size_t step = 0; step < steps; ++step) {
        reference += L"../";
        base += L"f/";
    }
    reference += L"b.pdf";
    std::wstring out;
    EXPECT_EQ(CombineUrl(reference, base + L"g/z.html", out), 1);
    EXPECT_EQ(out, L"http://h/f/b.pdf");
    EXPECT_TRUE(resolve_link(reference, L"http://h/x/z.html", out));
    EXPECT_EQ(out, L"http://h/b.pdf");
    // A long name before the folders is not scanned at every step.
    const std::wstring server(steps, L'h');
    EXPECT_EQ(CombineUrl(reference, L"http://" + server + base.substr(8) + L"g/z.html", out), 1);
    EXPECT_EQ(out, L"http://" + server + L"/f/b.pdf");
    const std::wstring far_step = std::wstring(3 * steps, L'a') + L"../b.pdf";
    EXPECT_EQ(CombineUrl(far_step, base, out), 1);
    EXPECT_EQ(out, L"http://h/b.pdf");
}

} // namespace
} // namespace quill
