// A strict HTML page around a document, seen through its container alone.
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
    ~page_container(); // the document must hold nothing of the page then

    // Adds an element to the page's body; null for an attribute that it does not have.
    void add(const wchar_t* tag, const wchar_t* type, const wchar_t* reference);

    IOleContainer* container() const { return container_; }

private:
    std::unique_ptr<fake_page> page_;
    IOleContainer* container_ = nullptr;
};

} // namespace quill::test
