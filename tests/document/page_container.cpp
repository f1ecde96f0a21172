#include "tests/document/page_container.h"

#include "tests/retrieval/fake_page.h"

#include <gtest/gtest.h>

namespace quill::test {

page_container::page_container(const wchar_t* url) : page_(std::make_unique<fake_page>())
{
    page_->url = url;
    EXPECT_EQ(page_->site()->GetContainer(&container_), S_OK);
}

page_container::~page_container()
{
    container_->Release();
    EXPECT_EQ(page_->live(), 0) << "the page is still referenced";
}

void page_container::add(const wchar_t* tag, const wchar_t* type, const wchar_t* reference)
{
    page_->add_embedded(tag, type, reference);
}

} // namespace quill::test
