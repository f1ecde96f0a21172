#include "retrieval/download/bind_status_callback.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <cstring>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(BindStatusCallback, CountsReferencesAndIsNotDeleted)
{
    CBindStatusCallbackImpl callback(nullptr, nullptr);
    EXPECT_EQ(callback.AddRef(), 1u);
    EXPECT_EQ(callback.AddRef(), 2u);
    EXPECT_EQ(callback.Release(), 1u);
    EXPECT_EQ(callback.Release(), 0u);
    EXPECT_EQ(callback.AddRef(), 1u);
}

TEST(BindStatusCallback, IsTwoInterfaces)
{
    CBindStatusCallbackImpl callback(nullptr, nullptr);
    for (const IID& iid : {IID_IUnknown, IID_IBindStatusCallback}) {
        void* object = nullptr;
        EXPECT_EQ(callback.QueryInterface(iid, &object), S_OK);
        EXPECT_EQ(object, static_cast<IBindStatusCallback*>(&callback));
    }
    EXPECT_EQ(callback.Release(), 1u);
    void* object = &callback;
    EXPECT_EQ(callback.QueryInterface(IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(callback.QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(callback.Release(), 0u);
}

TEST(BindStatusCallback, ReturnsNotImplementedForOtherMethods)
{
    CBindStatusCallbackImpl callback(nullptr, nullptr);
    EXPECT_EQ(callback.OnStartBinding(0, nullptr), S_OK);
    LONG priority = 7;
    EXPECT_EQ(callback.GetPriority(&priority), E_NOTIMPL);
    EXPECT_EQ(priority, 7);
    EXPECT_EQ(callback.OnLowResource(0), S_OK);
    EXPECT_EQ(callback.OnStopBinding(E_FAIL, L"error"), S_OK);
    EXPECT_EQ(callback.OnDataAvailable(0, 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(callback.OnObjectAvailable(IID_IUnknown, nullptr), S_OK);

    BINDINFO info, untouched;
    std::memset(&info, 0x55, sizeof info);
    untouched = info;
    DWORD flags = 7;
    EXPECT_EQ(callback.GetBindInfo(&flags, &info), S_OK);
    EXPECT_EQ(flags, 7u);
    EXPECT_EQ(std::memcmp(&info, &untouched, sizeof info), 0);
}

TEST(BindStatusCallback, ReportsTheDownloadOfDataOnly)
{
    fake_document_window window({});
    CBindStatusCallbackImpl callback(window.handle(), nullptr);
    for (ULONG status = 0; status < 60; ++status)
        EXPECT_EQ(callback.OnProgress(10 + status, 100, status, L"text"), S_OK);
    EXPECT_EQ(callback.OnProgress(1, 0, BINDSTATUS_DOWNLOADINGDATA, nullptr), S_OK);
    const auto seen = window.progress();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].progress, 15u);
    EXPECT_EQ(seen[0].progress_max, 100u);
    EXPECT_EQ(seen[0].status_code, 5u);
    EXPECT_EQ(seen[1].progress, 1u);
    EXPECT_EQ(seen[1].progress_max, 0u);
    EXPECT_THAT(window.violations(), IsEmpty());
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_PROGRESS));
}

TEST(BindStatusCallback, AbortsOnceTheDocumentCloses)
{
    const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CBindStatusCallbackImpl callback(nullptr, cancel);
    EXPECT_EQ(callback.OnProgress(0, 0, BINDSTATUS_DOWNLOADINGDATA, nullptr), S_OK);
    SetEvent(cancel);
    EXPECT_EQ(callback.OnProgress(0, 0, BINDSTATUS_DOWNLOADINGDATA, nullptr), E_ABORT);
    EXPECT_EQ(callback.OnProgress(0, 0, BINDSTATUS_CONNECTING, nullptr), E_ABORT);
    CloseHandle(cancel);
}

TEST(BindStatusCallback, ReportsBeforeItAborts)
{
    fake_document_window window({});
    const HANDLE cancel = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    CBindStatusCallbackImpl callback(window.handle(), cancel);
    EXPECT_EQ(callback.OnProgress(3, 9, BINDSTATUS_DOWNLOADINGDATA, nullptr), E_ABORT);
    EXPECT_EQ(window.progress().size(), 1u);
    CloseHandle(cancel);
}

TEST(BindStatusCallback, ContinuesWhenTheWindowHangs)
{
    fake_document_window window({.to_progress = reply::hang});
    CBindStatusCallbackImpl callback(window.handle(), nullptr);
    EXPECT_EQ(callback.OnProgress(3, 9, BINDSTATUS_DOWNLOADINGDATA, L"text"), S_OK);
    EXPECT_EQ(window.handled(), 0u);
    window.stop_hanging();
    EXPECT_TRUE(wait_until([&] { return window.handled() == 1; }));
    ASSERT_EQ(window.progress().size(), 1u);
    EXPECT_EQ(window.progress()[0].progress, 3u);
    EXPECT_EQ(window.progress()[0].progress_max, 9u);
}

} // namespace
} // namespace quill::test
