// Tests of the fakes themselves: they detect what they have to detect.
#include "tests/support/host/document_host.h"
#include "tests/support/process_resources.h"
#include "tests/support/task_memory.h"
#include "tests/support/viewer/viewer_class.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

class Fakes : public testing::Test
{
protected:
    static void SetUpTestSuite() { OleInitialize(nullptr); }
};

TEST_F(Fakes, AnUnexpectedCallFails)
{
    call_log calls;
    calls.allow("IKnown::Call");
    calls.arrive("IKnown::Call");
    EXPECT_NONFATAL_FAILURE(calls.arrive("IOther::Call"), "unexpected call: IOther::Call");
}

TEST_F(Fakes, APlannedFaultIsInjectedAtItsCall)
{
    call_log calls;
    calls.allow("I::One");
    calls.allow("I::Two");
    calls.make_fail("I::One", call_fault::error, 2);
    EXPECT_EQ(calls.arrive("I::One"), call_fault::none);
    EXPECT_EQ(calls.arrive("I::One"), call_fault::error);
    EXPECT_EQ(calls.arrive("I::One"), call_fault::none);
    calls.fail_call_number(5, call_fault::null_result);
    EXPECT_EQ(calls.arrive("I::Two"), call_fault::none);
    EXPECT_EQ(calls.arrive("I::Two"), call_fault::null_result);
    EXPECT_EQ(calls.calls().size(), 5u);
}

TEST_F(Fakes, AReferenceLeftOverFails)
{
    static ComPtr<IMoniker> kept;
    EXPECT_NONFATAL_FAILURE(
        {
            call_log calls;
            fake_moniker moniker(calls, "moniker");
            kept = &moniker;
        },
        "moniker is still referenced");
    kept.Detach();
}

TEST_F(Fakes, AReleaseTooManyFails)
{
    call_log calls;
    fake_moniker moniker(calls, "moniker");
    EXPECT_NONFATAL_FAILURE(moniker.Release(), "released once too often");
}

TEST_F(Fakes, TheViewerIsCreatedByItsProgId)
{
    const viewer_registration registration;
    call_log calls;
    viewer_script script(calls);
    viewer_class viewers(script);
    CLSID id{};
    ASSERT_EQ(CLSIDFromProgID(viewer_prog_id, &id), S_OK);
    ComPtr<IUnknown> viewer;
    ASSERT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&viewer)), S_OK);
    EXPECT_EQ(viewers.living_viewers(), 1);
    ComPtr<IDispatch> automation;
    EXPECT_EQ(viewer->QueryInterface(viewer_interface_id, &automation), S_OK);
    DISPPARAMS none{};
    EXPECT_EQ(automation->Invoke(viewer_print, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &none,
                                 nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(script.texts(), std::vector<std::string>{"12()"});
    EXPECT_NONFATAL_FAILURE(automation->Invoke(viewer_print, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                               &none, nullptr, nullptr, nullptr),
                            "LOCALE_SYSTEM_DEFAULT");
    automation.Reset();
    viewer.Reset();
    EXPECT_EQ(viewers.living_viewers(), 0);
    viewers.revoke();
    EXPECT_NE(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&viewer)), S_OK);
}

TEST_F(Fakes, TheRegistrationIsRemoved)
{
    CLSID id{};
    const HRESULT before = CLSIDFromProgID(viewer_prog_id, &id);
    {
        const viewer_registration registration;
        EXPECT_EQ(CLSIDFromProgID(viewer_prog_id, &id), S_OK);
    }
    EXPECT_EQ(CLSIDFromProgID(viewer_prog_id, &id), before);
}

TEST_F(Fakes, TaskMemoryIsCounted)
{
    const long before = outstanding_task_memory();
    void* const block = CoTaskMemAlloc(10);
    const BSTR text = SysAllocString(L"text");
    EXPECT_EQ(outstanding_task_memory(), before + 2);
    CoTaskMemFree(block);
    SysFreeString(text);
    EXPECT_EQ(outstanding_task_memory(), before);
}

TEST_F(Fakes, AHostLeaksNothing)
{
    {
        const document_host warm_up;
    }
    const auto before = process_resources::now();
    {
        const document_host host;
        EXPECT_NE(process_resources::now().windows, before.windows);
    }
    EXPECT_EQ(process_resources::now(), before);
}

} // namespace
} // namespace quill::test
