// The replaced parts of the C++ runtime: exceptions and static objects, which must not open handles.
#include "platform/unique_handle.h"
#include "tests/support/process_resources.h"

#include <windows.h>

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <stdexcept>
#include <string>

namespace quill {
namespace {

using test::process_resources;

constexpr DWORD deadline_ms = 10'000;

struct on_leaving
{
    int* uncaught;
    ~on_leaving() { *uncaught = std::uncaught_exceptions(); }
};

TEST(CxxRuntime, KeepsTheExceptionsOfAThread)
{
    int uncaught = -1;
    try {
        const on_leaving guard{&uncaught};
        throw std::runtime_error("outer");
    } catch (const std::runtime_error& outer) {
        EXPECT_EQ(uncaught, 1);
        EXPECT_EQ(std::uncaught_exceptions(), 0);
        try {
            throw std::logic_error("inner");
        } catch (const std::logic_error& inner) {
            EXPECT_STREQ(inner.what(), "inner");
        }
        EXPECT_TRUE(std::current_exception());
        EXPECT_STREQ(outer.what(), "outer");
    }
    EXPECT_FALSE(std::current_exception());
}

// Uses a thread's runtime state: a throw, the guard of a static object, a nested rethrow.
int throw_and_guard()
{
    static const std::string text(100, 'x');
    try {
        try {
            throw std::runtime_error(text);
        } catch (...) {
            throw;
        }
    } catch (const std::exception& error) {
        return static_cast<int>(std::string(error.what()).size());
    }
}

struct visiting_thread
{
    unique_handle done{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    unique_handle finish{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    bool throws = false;
    int result = 0;

    static DWORD WINAPI run(void* argument)
    {
        auto& self = *static_cast<visiting_thread*>(argument);
        if (self.throws)
            self.result = throw_and_guard();
        SetEvent(self.done.get());
        return WaitForSingleObject(self.finish.get(), deadline_ms);
    }
};

process_resources while_a_thread_runs(bool throws)
{
    visiting_thread visitor;
    visitor.throws = throws;
    const unique_handle thread(CreateThread(nullptr, 0, visiting_thread::run, &visitor, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(visitor.done.get(), deadline_ms), WAIT_OBJECT_0);
    const auto resources = process_resources::now();
    EXPECT_EQ(visitor.result, throws ? 100 : 0);
    SetEvent(visitor.finish.get());
    EXPECT_EQ(WaitForSingleObject(thread.get(), deadline_ms), WAIT_OBJECT_0);
    return resources;
}

TEST(CxxRuntime, OpensNoHandlesForAThreadThatThrows)
{
    while_a_thread_runs(true);
    const auto without_throw = while_a_thread_runs(false);
    EXPECT_EQ(while_a_thread_runs(true), without_throw);
}

std::atomic<int> initialisations = 0;

struct slow_object
{
    slow_object(HANDLE begun, HANDLE go_on)
    {
        ++initialisations;
        SetEvent(begun);
        WaitForSingleObject(go_on, deadline_ms);
        value = 42;
    }
    int value = 0;
};

int slow_value(HANDLE begun, HANDLE go_on)
{
    static const slow_object object(begun, go_on);
    return object.value;
}

TEST(CxxRuntime, AStaticObjectIsInitialisedOnceWhileOthersWait)
{
    struct shared
    {
        unique_handle begun{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        unique_handle go_on{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        std::atomic<int> sum = 0;
    } state;
    const auto use_static = [](void* argument) -> DWORD {
        auto& s = *static_cast<shared*>(argument);
        s.sum += slow_value(s.begun.get(), s.go_on.get());
        return 0;
    };
    unique_handle threads[4];
    for (auto& thread : threads)
        thread.reset(CreateThread(nullptr, 0, use_static, &state, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(state.begun.get(), deadline_ms), WAIT_OBJECT_0);
    // The other threads are waiting: none has a value yet.
    EXPECT_EQ(state.sum, 0);
    SetEvent(state.go_on.get());
    for (const auto& thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), deadline_ms), WAIT_OBJECT_0);
    EXPECT_EQ(state.sum, 4 * 42);
    EXPECT_EQ(initialisations, 1);
}

TEST(CxxRuntime, AnInitialiserThatThrewIsRepeated)
{
    int attempts = 0;
    const auto value = [&] {
        static const int object = [&] {
            if (++attempts < 3)
                throw std::runtime_error("not yet");
            return 7;
        }();
        return object;
    };
    EXPECT_THROW(value(), std::runtime_error);
    EXPECT_THROW(value(), std::runtime_error);
    EXPECT_EQ(value(), 7);
    EXPECT_EQ(value(), 7);
    EXPECT_EQ(attempts, 3);
}

} // namespace
} // namespace quill
