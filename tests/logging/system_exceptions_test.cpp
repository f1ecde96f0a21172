// System exceptions inside a barrier: held is released, and each exception is reported once.
#include "logging/exception_barriers.h"
#include "tests/support/crashes.h"
#include "tests/support/log_capture.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace quill {
namespace {

using testing::ElementsAre;

struct SystemExceptions : testing::Test
{
    test::log_capture log;
};

HRESULT read_null()
{
    test::read_nowhere();
    return S_OK;
}

struct counted
{
    static int alive;
    counted() { ++alive; }
    ~counted() { --alive; }
    counted(const counted&) = delete;
    counted& operator=(const counted&) = delete;
};
int counted::alive = 0;

struct released
{
    int count = 0;
    void release() noexcept { ++count; }
};

TEST_F(SystemExceptions, ReleaseHeldOnceHoweverTheCallEnds)
{
    const auto returning = [] { return S_OK; };
    released held;
    EXPECT_EQ(CrashBorder(held, returning, E_FAIL, "name", 7), S_OK);
    EXPECT_EQ(held.count, 1);
    EXPECT_EQ(CrashBorder(held, []() -> HRESULT { throw 5; }, E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(held.count, 2);
    EXPECT_EQ(CrashBorder(held, read_null, E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(held.count, 3);
    EXPECT_THAT(log.lines(),
                ElementsAre("error: name:7 unknown exception", "info: System exception in name"));
}

TEST_F(SystemExceptions, AFaultInACallIntoTheHostUnwindsTheCaller)
{
    const auto calling = [] {
        const counted local;
        return NoThrow(
            [&] {
                const counted inner;
                return barrier::call_host(read_null);
            },
            S_FALSE, "inner", 1);
    };
    EXPECT_EQ(CrashBorder(calling, E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(counted::alive, 0);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in name"));
    EXPECT_EQ(CrashBorder([] { return barrier::call_host([] { return S_FALSE; }); }, E_FAIL), S_FALSE);
}

TEST_F(SystemExceptions, DoNotIncludeCppExceptionsOfTheHost)
{
    const auto calling = [] {
        return barrier::call_host([]() -> HRESULT { throw std::runtime_error("x"); });
    };
    EXPECT_EQ(CrashBorder(calling, E_FAIL, "name", 7), E_FAIL);
    EXPECT_THAT(log.lines(), ElementsAre("error: name:7 runtime error: x"));
}

// An object whose Release counts and then faults.
struct faulting_object : IUnknown
{
    int releases = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        ++releases;
        return static_cast<ULONG>(read_null());
    }
};

TEST_F(SystemExceptions, AFaultInAReleaseIsThrownByTheNextCallIntoTheHost)
{
    faulting_object object;
    bool has_gone_on = false;
    bool has_called = false;
    const auto releasing = [&] {
        barrier::release_host(&object);
        has_gone_on = true;
        return barrier::call_host([&] {
            has_called = true;
            return S_OK;
        });
    };
    EXPECT_EQ(CrashBorder(releasing, E_FAIL, "name", 7), E_FAIL);
    EXPECT_TRUE(has_gone_on);
    EXPECT_FALSE(has_called);
    EXPECT_EQ(object.releases, 1);
    const auto releasing_last = [&] {
        barrier::release_host(&object);
        return S_OK;
    };
    EXPECT_EQ(CrashBorder(releasing_last, E_FAIL, "last", 7), E_FAIL);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in name", "info: System exception in last"));
}

TEST_F(SystemExceptions, AFaultInAReleaseOutsideAGuardedCallIsHandledAndLogged)
{
    faulting_object object;
    barrier::release_host(&object);
    EXPECT_EQ(object.releases, 1);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in quill::CrashBorder"));
}

TEST_F(SystemExceptions, SeparateCallsWorkAfterAFaultAndReportTheirOwn)
{
    faulting_object object;
    const auto ending = [&] {
        const barrier::separate_calls calls;
        EXPECT_EQ(barrier::call_host([] { return S_FALSE; }), S_FALSE);
        barrier::release_host(&object);
        EXPECT_THROW(barrier::throw_if_handled(), barrier::system_exception);
        return S_OK;
    };
    const auto calling = [&] {
        barrier::release_host(&object);
        return ending();
    };
    EXPECT_EQ(CrashBorder(calling, E_FAIL, "name", 7), E_FAIL);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in name"));
    log.clear();
    EXPECT_EQ(ending(), S_OK);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in quill::CrashBorder"));
}

// A handler in the host or in the browser. Returns whether it handled a system exception.
[[gnu::noinline]] bool faults(void (*call)(void*), void* context)
{
    __try {
        call(context);
    } __except (EXCEPTION_EXECUTE_HANDLER) {
        return true;
    }
    return false;
}

// Code of the module that faults.
[[gnu::noinline]] void fault_in_separate_calls(void* object)
{
    const barrier::separate_calls calls;
    barrier::release_host(static_cast<IUnknown*>(object));
    test::read_nowhere();
}

TEST_F(SystemExceptions, AHandlerInTheBrowserThatSkipsTheModuleLeavesTheStateValid)
{
    faulting_object object;
    ASSERT_TRUE(faults(&fault_in_separate_calls, &object));
    EXPECT_NO_THROW(barrier::throw_if_handled());
    EXPECT_EQ(barrier::call_host([] { return S_FALSE; }), S_FALSE);
    barrier::release_host(&object);
    EXPECT_EQ(object.releases, 2);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in quill::CrashBorder"));
    EXPECT_EQ(CrashBorder([] { return S_FALSE; }, E_FAIL, "name", 7), S_FALSE);
}

// The host calls the module, handles the module's fault itself and returns: the outer guarded call must
// continue to work.
TEST_F(SystemExceptions, AHandlerInTheHostThatSkipsANestedCallLeavesTheStateValid)
{
    faulting_object object;
    faulting_object last;
    const auto calling = [&] {
        const counted local;
        EXPECT_TRUE(barrier::call_host([&] { return faults(&fault_in_separate_calls, &object); }));
        EXPECT_EQ(barrier::call_host([] { return S_FALSE; }), S_FALSE);
        barrier::release_host(&last);
        return S_OK;
    };
    EXPECT_EQ(CrashBorder(calling, E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(counted::alive, 0);
    EXPECT_EQ(last.releases, 1);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in name"));
}

} // namespace
} // namespace quill
