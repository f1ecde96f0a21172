#include "retrieval/page/pdf_element.h"

#include <gtest/gtest.h>

#include <string>

namespace quill {
namespace {

TEST(PdfElement, RecognisesEmbedAndObjectInAnyCase)
{
    EXPECT_EQ(kind_of_tag(L"EMBED"), element_kind::embed);
    EXPECT_EQ(kind_of_tag(L"embed"), element_kind::embed);
    EXPECT_EQ(kind_of_tag(L"OBJECT"), element_kind::object);
    EXPECT_EQ(kind_of_tag(L"oBjEcT"), element_kind::object);
    for (const wchar_t* other : {L"", L"EMBE", L"EMBEDS", L"OBJECTS", L"IFRAME", L"DIV", L"!"})
        EXPECT_EQ(kind_of_tag(other), element_kind::other);
    EXPECT_STREQ(reference_attribute(element_kind::embed), L"SRC");
    EXPECT_STREQ(reference_attribute(element_kind::object), L"DATA");
    EXPECT_EQ(reference_attribute(element_kind::other), nullptr);
}

TEST(PdfElement, RecognisesTheTypeInAnyCase)
{
    EXPECT_TRUE(is_pdf_type(L"application/pdf"));
    EXPECT_TRUE(is_pdf_type(L"Application/PDF"));
    for (const wchar_t* other :
         {L"", L"application/pdf ", L"application/pdf;x=1", L"application/x-pdf", L"pdf"})
        EXPECT_FALSE(is_pdf_type(other)) << testing::PrintToString(std::wstring(other));
}

TEST(PdfElement, FindsTheTypeInTheSource)
{
    EXPECT_TRUE(source_states_pdf_type(L"<EMBED type=application/pdf src=x>"));
    EXPECT_TRUE(source_states_pdf_type(L"<EMBED type=\"application/pdf\">"));
    EXPECT_TRUE(source_states_pdf_type(L"<EMBED type='application/pdf'>"));
    EXPECT_TRUE(source_states_pdf_type(L"<P>type=application/pdf</P>")) << "anywhere";
    for (const wchar_t* other : {L"", L"<EMBED type=application/PDF>", L"<EMBED TYPE=application/pdf>",
                                 L"<EMBED type = application/pdf>", L"<EMBED type=application/x-pdf>"})
        EXPECT_FALSE(source_states_pdf_type(other)) << testing::PrintToString(std::wstring(other));
}

TEST(PdfElement, RecognisesNamesOfPdfs)
{
    for (const wchar_t* pdf : {L"a.pdf", L"A.PDF", L"/x/y.pDf", L"..pdf"})
        EXPECT_TRUE(names_pdf(pdf)) << testing::PrintToString(std::wstring(pdf));
    for (const wchar_t* other :
         {L"", L".pdf", L"pdf", L"apdf", L"a.pdfx", L"a.pdf#page=2", L"a.pdf?x", L"a.pd"})
        EXPECT_FALSE(names_pdf(other)) << testing::PrintToString(std::wstring(other));
}

} // namespace
} // namespace quill
