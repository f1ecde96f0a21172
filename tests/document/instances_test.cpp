// The numbers of the documents in one browser window.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <memory>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

// Another document of the same module, in a host of its own with any browser window.
class further_document
{
public:
    further_document(document_fixture& fixture, HWND browser_window)
    {
        static int number = 0;
        const std::wstring path = fixture.pdf(L"document" + std::to_wstring(++number) + L".pdf");
        host_.shell.window = browser_window;
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(fixture.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)), S_OK);
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object_)), S_OK);
        host_.document = object_.Get();
        object_->SetClientSite(host_.site.client_site());
        ComPtr<IPersistFile> file;
        EXPECT_EQ(object_.As(&file), S_OK);
        file->Load(path.c_str(), STGM_READ);
        EXPECT_EQ(object_->DoVerb(OLEIVERB_SHOW, nullptr, host_.site.client_site(), -1, host_.view_window(),
                                  &host_.position),
                  S_OK);
    }
    further_document(const further_document&) = delete;
    further_document& operator=(const further_document&) = delete;
    ~further_document()
    {
        deactivate();
        object_->SetClientSite(nullptr);
        host_.view.Reset();
        EXPECT_EQ(object_.Detach()->Release(), 0u);
    }

    document_host& host() { return host_; }

    void deactivate()
    {
        ComPtr<IOleInPlaceObject> in_place;
        EXPECT_EQ(object_.As(&in_place), S_OK);
        in_place->InPlaceDeactivate();
    }

    std::uint32_t number() const
    {
        ComPtr<IOleWindow> ole_window;
        EXPECT_EQ(object_.As(&ole_window), S_OK);
        HWND window = nullptr;
        ole_window->GetWindow(&window);
        EXPECT_NE(window, nullptr);
        return instance_number(window);
    }

private:
    document_host host_;
    ComPtr<IOleObject> object_;
};

QUILL_DOCUMENT_TEST(DocumentInstances, AreNumberedFromZero)
{
    const HWND browser = fixture.host.frame_window();
    further_document first(fixture, browser);
    further_document second(fixture, browser);
    further_document third(fixture, browser);
    EXPECT_EQ(first.number(), 0u);
    EXPECT_EQ(second.number(), 1u);
    EXPECT_EQ(third.number(), 2u);
}

QUILL_DOCUMENT_TEST(DocumentInstances, AreNumberedPerBrowserWindow)
{
    document_host other;
    further_document first(fixture, fixture.host.frame_window());
    further_document elsewhere(fixture, other.frame_window());
    further_document second(fixture, fixture.host.frame_window());
    EXPECT_EQ(first.number(), 0u);
    EXPECT_EQ(elsewhere.number(), 0u);
    EXPECT_EQ(second.number(), 1u);
}

// The entry is removed with the first document that is destroyed, whatever its count.
QUILL_DOCUMENT_TEST(DocumentInstances, StartAgainWhenOneIsDestroyed)
{
    const HWND browser = fixture.host.frame_window();
    auto first = std::make_unique<further_document>(fixture, browser);
    further_document second(fixture, browser);
    EXPECT_EQ(second.number(), 1u);
    first.reset();
    EXPECT_EQ(second.number(), 1u) << "a document keeps its number";
    further_document third(fixture, browser);
    EXPECT_EQ(third.number(), 0u);
    further_document fourth(fixture, browser);
    EXPECT_EQ(fourth.number(), 1u);
}

QUILL_DOCUMENT_TEST(DocumentInstances, StartAgainWithANewWindowOfTheDocument)
{
    const HWND browser = fixture.host.frame_window();
    further_document first(fixture, browser);
    further_document second(fixture, browser);
    second.deactivate();
    further_document third(fixture, browser);
    EXPECT_EQ(third.number(), 0u);
}

QUILL_DOCUMENT_TEST(DocumentInstances, AreNumberedWithoutABrowserWindowToo)
{
    further_document first(fixture, nullptr);
    further_document second(fixture, nullptr);
    EXPECT_EQ(first.number(), 0u);
    EXPECT_EQ(second.number(), 1u);
}

// The window is requested once; later changes do not matter.
QUILL_DOCUMENT_TEST(DocumentInstances, BelongToTheWindowOfTheCreation)
{
    document_host other;
    const HWND browser = fixture.host.frame_window();
    {
        further_document first(fixture, browser);
        first.host().shell.window = other.frame_window();
    }
    further_document second(fixture, browser);
    EXPECT_EQ(second.number(), 0u);
}

QUILL_DOCUMENT_TEST(DocumentInstances, ADocumentClosedBeforeItIsCountedDoesNotCount)
{
    const further_document first(fixture, fixture.host.frame_window());
    EXPECT_EQ(first.number(), 0u);
    fixture.host.calls.when("IShellBrowser::GetWindow",
                            [&] { fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(); });
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.do_verb(OLEIVERB_SHOW);
    EXPECT_EQ(fixture.window(), nullptr);
    const further_document second(fixture, fixture.host.frame_window());
    EXPECT_EQ(second.number(), 1u);
}

} // namespace
} // namespace quill::test
