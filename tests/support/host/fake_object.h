// Base of the COM objects that tests hand to the module: real reference counts, strict at both ends.
#pragma once

#include "tests/support/host/call_log.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <string>

namespace quill::test {

// The fake is a member of its test's host and not deleted by its last Release; a Release too many, or a
// reference still held when the fake goes, fails the test.
template <class First, class... Rest>
class fake_object : public First, public Rest...
{
public:
    fake_object(call_log& calls, const char* name) : calls_(&calls), name_(name) {}
    fake_object(const fake_object&) = delete;
    fake_object& operator=(const fake_object&) = delete;
    virtual ~fake_object() { EXPECT_EQ(references_, 0) << name_ << " is still referenced"; }

    // References held by others.
    long references() const { return references_; }
    const std::string& name() const { return name_; }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        if (!out) {
            ADD_FAILURE() << name_ << " queried without an out argument";
            return E_POINTER;
        }
        *out = nullptr;
        IUnknown* const found = IsEqualIID(iid, __uuidof(IUnknown)) ? static_cast<First*>(this) : find(iid);
        if (!found)
            return E_NOINTERFACE;
        switch (queries_can_fail() ? calls_->arrive_query(name_ + "::QueryInterface") : bad_answer::none) {
        case bad_answer::failure:
        case bad_answer::failure_untouched:
            return E_NOINTERFACE;
        case bad_answer::success_null:
        case bad_answer::success_untouched:
            return S_OK;
        case bad_answer::none:
            break;
        }
        found->AddRef();
        *out = found;
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references_); }

    STDMETHODIMP_(ULONG) Release() override
    {
        if (references_ == 0) {
            ADD_FAILURE() << name_ << " released once too often";
            return 0;
        }
        if (--references_ == 0)
            on_last_release();
        return static_cast<ULONG>(references_);
    }

protected:
    // The object's interface of that identifier, without a reference; null when it has none.
    virtual IUnknown* find(REFIID iid) = 0;
    virtual void on_last_release() {}
    // False for an object that the system itself queries, which does not bear a query that gives nothing.
    virtual bool queries_can_fail() const { return true; }

    call_log& calls() const { return *calls_; }

    bad_answer arrive(const char* method, const std::string& arguments = {}) const
    {
        return calls_->arrive(method, arguments);
    }

private:
    call_log* calls_;
    std::string name_;
    long references_ = 0;
};

// Answers a call whose out argument is an interface pointer; `value` is what a good host gives.
template <class Interface>
HRESULT answer_interface(bad_answer kind, Interface** out, Interface* value)
{
    if (!out) {
        ADD_FAILURE() << "called without an out argument";
        return E_POINTER;
    }
    EXPECT_EQ(*out, nullptr) << "the out variable was not initialised";
    switch (kind) {
    case bad_answer::failure:
        *out = nullptr;
        return E_FAIL;
    case bad_answer::failure_untouched:
        return E_NOTIMPL;
    case bad_answer::success_null:
        *out = nullptr;
        return S_OK;
    case bad_answer::success_untouched:
        return S_OK;
    case bad_answer::none:
        break;
    }
    *out = value;
    if (!value)
        return E_NOTIMPL;
    value->AddRef();
    return S_OK;
}

// The answer of a call without an out argument.
inline HRESULT answer_plain(bad_answer kind, HRESULT usual = S_OK)
{
    switch (kind) {
    case bad_answer::failure:
        return E_FAIL;
    case bad_answer::failure_untouched:
        return E_NOTIMPL;
    default:
        return usual;
    }
}

} // namespace quill::test
