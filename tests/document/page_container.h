// A strict HTML page around a document, seen through its container only.
#pragma once

#include <windows.h>

#include <oleidl.h>

#include <memory>

namespace quill::test {

class fake_page;

class page_container
{
public:
    explicit page_container(const wchar_t* url);
    page_container(const page_container&) = delete;
    page_container& operator=(const page_container&) = delete;
    ~page_container(); // the document must hold no reference to the page then

    // Adds an element to the body of the page; nullptr for a missing attribute.
    void add(const wchar_t* tag, const wchar_t* type, const wchar_t* reference);

    IOleContainer* container() const { return container_; }

private:
    std::unique_ptr<fake_page> page_;
    IOleContainer* container_ = nullptr;
};

} // namespace quill::test
